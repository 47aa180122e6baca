#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvantis::platform {

/// A range of text in UTF-16 code units, as the accessibility interfaces of the desktop
/// count them.
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;
    bool operator==(const TextRange&) const = default;
};

/// The focused text element of the frontmost application, as the accessibility layer shows
/// it. Every call may fail (the element vanished, the application does not answer): reads
/// answer nullopt, writes answer false.
class TextElement {
public:
    virtual ~TextElement() = default;
    /// A password field: nothing may be read from it or written to it.
    virtual bool isSecure() const = 0;
    virtual std::optional<std::string> value() const = 0;
    virtual std::optional<TextRange> selectedRange() const = 0;
    virtual std::optional<std::string> selectedText() const = 0;
    virtual bool setSelectedRange(TextRange range) = 0;
    /// Replaces the selection with `utf8`; the caret ends after it.
    virtual bool replaceSelectedText(std::string_view utf8) = 0;
};

/// Finds the focused text element.
class Accessibility {
public:
    virtual ~Accessibility() = default;
    /// The focused element when it is a text element, else nullptr.
    virtual std::unique_ptr<TextElement> focusedTextElement() = 0;
};

}  // namespace orvantis::platform
