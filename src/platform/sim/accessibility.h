#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "platform/text_element.h"

namespace orvantis::sim {

class TextField;

/// The simulated accessibility layer: answers an element for the text field that has the
/// focus, as `focusedField` names it (nullptr when nothing or something other than a text
/// field has the focus). The elements are the field's own (TextField::makeElement()).
/// Main thread only.
class Accessibility final : public platform::Accessibility {
public:
    explicit Accessibility(std::function<TextField*()> focusedField);

    std::unique_ptr<platform::TextElement> focusedTextElement() override;

    /// Number of times the program asked for the focused element.
    std::size_t lookupCount() const { return lookupCount_; }

private:
    std::function<TextField*()> focusedField_;
    std::size_t lookupCount_ = 0;
};

}  // namespace orvantis::sim
