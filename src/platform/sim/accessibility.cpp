#include "platform/sim/accessibility.h"

#include <utility>

#include "platform/sim/text_field.h"

namespace orvantis::sim {

Accessibility::Accessibility(std::function<TextField*()> focusedField) : focusedField_(std::move(focusedField)) {}

std::unique_ptr<platform::TextElement> Accessibility::focusedTextElement() {
    ++lookupCount_;
    TextField* field = focusedField_ ? focusedField_() : nullptr;
    return field != nullptr ? field->makeElement() : nullptr;
}

}  // namespace orvantis::sim
