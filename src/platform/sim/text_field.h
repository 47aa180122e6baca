#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text_element.h"

namespace orvantis::sim {

class Pasteboard;

/// How a field's application answers writes through the accessibility layer.
enum class AccessibilityWrites {
    applied,  ///< writes change the field and answer true
    refused,  ///< writes answer false and change nothing
    ignored,  ///< writes answer true and change nothing, as some text engines do
};

/// One key press as a field received it.
struct KeyStroke {
    std::uint16_t code = 0;
    std::uint64_t flags = 0;
    bool operator==(const KeyStroke&) const = default;
};

/// A simulated single-line text field of some application: UTF-8 text, a caret and a
/// selection that always stand on grapheme cluster boundaries, and the editing keys of the
/// desktop. The accessibility layer sees it through elements made by makeElement(), which
/// count in UTF-16 units and obey the field's secure, readable and writable switches.
/// Copy, cut and paste go through the pasteboard given at construction, which must outlive
/// the field. Main thread only.
class TextField {
public:
    TextField(std::string name, std::string application, Pasteboard& pasteboard, std::string_view text = {});
    ~TextField();
    TextField(const TextField&) = delete;
    TextField& operator=(const TextField&) = delete;

    const std::string& name() const { return name_; }
    /// The application that shows the field, as an application identifier.
    const std::string& application() const { return application_; }

    // What the user sees, whatever the switches say.
    const std::string& text() const { return text_; }
    /// Replaces the whole text; the caret goes to the end.
    void setText(std::string_view utf8);
    /// The selection in UTF-16 units; length 0 is a caret.
    platform::TextRange selectedRange() const;
    std::string selectedText() const;
    /// Selects `range`, given in UTF-16 units. An end that falls inside a grapheme cluster
    /// widens the selection to the whole cluster. False, and no change, when the range runs
    /// past the end of the text.
    bool select(platform::TextRange range);
    void selectAll();

    /// Text typed at the caret: replaces the selection, and the caret ends after it.
    void insertText(std::string_view utf8);
    /// One key press with exactly `flags`. `characters` is what the active keyboard layout
    /// makes of the key; it is typed when no shortcut or editing key applies. Understood:
    /// Backspace and Forward Delete (a selection, else one grapheme cluster), Left and Right
    /// (collapse the selection, else move by one cluster), Up and Down (to the start, to the
    /// end), Shift with any arrow (extend the selection), Command with A, C, X and V.
    /// Answers false for a key that the field has no use for, which ignoredKeys() then
    /// records: Command+Z (the field keeps no undo history), copy or cut of an empty
    /// selection or of a secure field, paste with no text on the pasteboard, and any other
    /// key. Backspace at the start and arrows at an end are used, and change nothing.
    bool pressKey(std::uint16_t code, std::uint64_t flags, std::string_view characters = {});
    /// Keys the field had no use for, oldest first.
    const std::vector<KeyStroke>& ignoredKeys() const { return ignoredKeys_; }

    // How the application behaves.
    /// A password field: accessibility shows an empty value and no selected text, refuses
    /// writes, and copy and cut do nothing.
    void setSecure(bool secure) { secure_ = secure; }
    bool isSecure() const { return secure_; }
    /// False: the application's accessibility answers nothing, every read fails.
    void setReadable(bool readable) { readable_ = readable; }
    bool isReadable() const { return readable_; }
    void setAccessibilityWrites(AccessibilityWrites writes) { writes_ = writes; }
    AccessibilityWrites accessibilityWrites() const { return writes_; }
    /// Shorthand for AccessibilityWrites::applied or ::refused.
    void setWritable(bool writable) {
        writes_ = writable ? AccessibilityWrites::applied : AccessibilityWrites::refused;
    }
    /// Accessibility writes that changed the field.
    std::size_t accessibilityWriteCount() const { return accessibilityWriteCount_; }

    /// An accessibility element for this field. It works while the field exists and until
    /// the next invalidateElements(); after that every call fails.
    std::unique_ptr<platform::TextElement> makeElement();
    /// The application rebuilt its view: the elements handed out so far vanish. Elements
    /// made afterwards work again.
    void invalidateElements();

private:
    struct Link;
    class Element;

    std::size_t selectionStart() const { return std::min(anchor_, caret_); }
    std::size_t selectionEnd() const { return std::max(anchor_, caret_); }
    bool hasSelection() const { return anchor_ != caret_; }
    void replaceBytes(std::size_t start, std::size_t end, std::string_view utf8);
    std::size_t previousBoundary(std::size_t byte) const;
    std::size_t nextBoundary(std::size_t byte) const;
    std::size_t boundaryAtOrBefore(std::size_t byte) const;
    std::size_t boundaryAtOrAfter(std::size_t byte) const;
    void deleteBackward();
    void deleteForward();
    void moveLeft(bool extend);
    void moveRight(bool extend);
    void moveTo(std::size_t byte, bool extend);
    bool copySelection();
    bool cutSelection();
    bool pasteText();

    std::string name_;
    std::string application_;
    Pasteboard& pasteboard_;
    std::string text_;
    std::vector<std::size_t> boundaries_;  ///< grapheme cluster boundaries of text_, in bytes
    std::size_t anchor_ = 0;               ///< the fixed end of the selection, in bytes
    std::size_t caret_ = 0;                ///< the end that arrows move, in bytes
    bool secure_ = false;
    bool readable_ = true;
    AccessibilityWrites writes_ = AccessibilityWrites::applied;
    std::size_t accessibilityWriteCount_ = 0;
    std::vector<KeyStroke> ignoredKeys_;
    std::shared_ptr<Link> link_;
};

}  // namespace orvantis::sim
