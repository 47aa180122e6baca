#include "platform/sim/text_field.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/sim/pasteboard.h"
#include "core/text/graphemes.h"
#include "core/text/utf.h"

#include "platform/key_output.h"
#include "platform/pasteboard.h"

namespace orvantis::sim {

// Shared between a field and its elements, so that an element can outlive the field.
struct TextField::Link {
    TextField* field = nullptr;
    std::uint64_t generation = 0;
};

/// The accessibility view of one field. Fails every call once the field is gone or its
/// elements were invalidated; otherwise obeys the field's switches.
class TextField::Element final : public platform::TextElement {
public:
    explicit Element(std::shared_ptr<Link> link) : link_(std::move(link)), generation_(link_->generation) {}

    bool isSecure() const override {
        const TextField* field = readableField();
        return field != nullptr && field->secure_;
    }
    std::optional<std::string> value() const override {
        const TextField* field = readableField();
        if (field == nullptr) return std::nullopt;
        if (field->secure_) return std::string();
        return field->text_;
    }
    std::optional<platform::TextRange> selectedRange() const override {
        const TextField* field = readableField();
        if (field == nullptr) return std::nullopt;
        // A password field shows no text, so its caret stands at the start of nothing.
        if (field->secure_) return platform::TextRange{};
        return field->selectedRange();
    }
    std::optional<std::string> selectedText() const override {
        const TextField* field = readableField();
        if (field == nullptr || field->secure_) return std::nullopt;
        return field->selectedText();
    }
    bool setSelectedRange(platform::TextRange range) override {
        TextField* field = writableField();
        if (field == nullptr) return false;
        if (field->writes_ == AccessibilityWrites::ignored) return true;
        if (!field->select(range)) return false;
        ++field->accessibilityWriteCount_;
        return true;
    }
    bool replaceSelectedText(std::string_view utf8) override {
        TextField* field = writableField();
        if (field == nullptr) return false;
        if (field->writes_ == AccessibilityWrites::ignored) return true;
        field->insertText(utf8);
        ++field->accessibilityWriteCount_;
        return true;
    }

private:
    TextField* liveField() const { return link_->generation == generation_ ? link_->field : nullptr; }
    TextField* readableField() const {
        TextField* field = liveField();
        return field != nullptr && field->readable_ ? field : nullptr;
    }
    TextField* writableField() const {
        TextField* field = liveField();
        if (field == nullptr || field->secure_ || field->writes_ == AccessibilityWrites::refused) return nullptr;
        return field;
    }

    std::shared_ptr<Link> link_;
    std::uint64_t generation_;
};

TextField::TextField(std::string name, std::string application, Pasteboard& pasteboard, std::string_view text)
    : name_(std::move(name)), application_(std::move(application)), pasteboard_(pasteboard),
      link_(std::make_shared<Link>()) {
    link_->field = this;
    setText(text);
}

TextField::~TextField() { link_->field = nullptr; }

void TextField::setText(std::string_view utf8) {
    text_.assign(utf8);
    boundaries_ = text::graphemeBoundaries(text_);
    anchor_ = caret_ = text_.size();
}

platform::TextRange TextField::selectedRange() const {
    const std::string_view text(text_);
    const std::size_t location = text::utf16Length(text.substr(0, selectionStart()));
    const std::size_t length =
        text::utf16Length(text.substr(selectionStart(), selectionEnd() - selectionStart()));
    return {location, length};
}

std::string TextField::selectedText() const {
    return text_.substr(selectionStart(), selectionEnd() - selectionStart());
}

bool TextField::select(platform::TextRange range) {
    const std::size_t total = text::utf16Length(text_);
    if (range.location > total || range.length > total - range.location) return false;
    const std::size_t startByte = text::byteOffsetFromUtf16Offset(text_, range.location);
    // An end inside a surrogate pair takes in the whole code point.
    const std::size_t endOffset = range.location + range.length;
    std::size_t endByte = text::byteOffsetFromUtf16Offset(text_, endOffset);
    if (text::utf16OffsetFromByteOffset(text_, endByte) < endOffset) endByte += text::decodeCodePoint(text_, endByte).length;
    anchor_ = boundaryAtOrBefore(startByte);
    caret_ = boundaryAtOrAfter(endByte);
    return true;
}

void TextField::selectAll() {
    anchor_ = 0;
    caret_ = text_.size();
}

void TextField::insertText(std::string_view utf8) {
    const std::size_t start = selectionStart();
    replaceBytes(start, selectionEnd(), utf8);
    // A combining mark typed after the insertion may join it to the text that follows;
    // the caret then stands after the joined cluster.
    anchor_ = caret_ = boundaryAtOrAfter(start + utf8.size());
}

bool TextField::pressKey(std::uint16_t code, std::uint64_t flags, std::string_view characters) {
    namespace keys = platform::key_code;
    const std::uint64_t modifiers = flags & platform::key_flags::kModifierMask;
    const bool shift = (modifiers & platform::key_flags::kShift) != 0;
    const bool plain = (modifiers & ~platform::key_flags::kShift) == 0;  // Shift alone may be held
    bool handled = false;
    if (modifiers == platform::key_flags::kCommand) {
        switch (code) {
        case keys::kA: selectAll(); handled = true; break;
        case keys::kC: handled = copySelection(); break;
        case keys::kX: handled = cutSelection(); break;
        case keys::kV: handled = pasteText(); break;
        default: break;  // Command+Z among them: the field keeps no undo history.
        }
    } else if (plain) {
        switch (code) {
        case keys::kDelete: deleteBackward(); handled = true; break;
        case keys::kForwardDelete: deleteForward(); handled = true; break;
        case keys::kLeftArrow: moveLeft(shift); handled = true; break;
        case keys::kRightArrow: moveRight(shift); handled = true; break;
        case keys::kUpArrow: moveTo(0, shift); handled = true; break;
        case keys::kDownArrow: moveTo(text_.size(), shift); handled = true; break;
        default:
            if (!characters.empty()) {
                insertText(characters);
                handled = true;
            }
            break;
        }
    }
    if (!handled) ignoredKeys_.push_back({code, flags});
    return handled;
}

std::unique_ptr<platform::TextElement> TextField::makeElement() { return std::make_unique<Element>(link_); }

void TextField::invalidateElements() { ++link_->generation; }

void TextField::replaceBytes(std::size_t start, std::size_t end, std::string_view utf8) {
    text_.replace(start, end - start, utf8);
    boundaries_ = text::graphemeBoundaries(text_);
}

std::size_t TextField::previousBoundary(std::size_t byte) const {
    auto it = std::lower_bound(boundaries_.begin(), boundaries_.end(), byte);
    return it == boundaries_.begin() ? 0 : *std::prev(it);
}

std::size_t TextField::nextBoundary(std::size_t byte) const {
    auto it = std::upper_bound(boundaries_.begin(), boundaries_.end(), byte);
    return it == boundaries_.end() ? text_.size() : *it;
}

std::size_t TextField::boundaryAtOrBefore(std::size_t byte) const {
    auto it = std::upper_bound(boundaries_.begin(), boundaries_.end(), byte);
    return it == boundaries_.begin() ? 0 : *std::prev(it);
}

std::size_t TextField::boundaryAtOrAfter(std::size_t byte) const {
    auto it = std::lower_bound(boundaries_.begin(), boundaries_.end(), byte);
    return it == boundaries_.end() ? text_.size() : *it;
}

void TextField::deleteBackward() {
    if (hasSelection()) {
        insertText({});
        return;
    }
    if (caret_ == 0) return;
    const std::size_t start = previousBoundary(caret_);
    replaceBytes(start, caret_, {});
    anchor_ = caret_ = boundaryAtOrAfter(start);
}

void TextField::deleteForward() {
    if (hasSelection()) {
        insertText({});
        return;
    }
    if (caret_ == text_.size()) return;
    replaceBytes(caret_, nextBoundary(caret_), {});
    anchor_ = caret_ = boundaryAtOrAfter(caret_);
}

void TextField::moveLeft(bool extend) {
    if (!extend && hasSelection()) {
        anchor_ = caret_ = selectionStart();
        return;
    }
    moveTo(previousBoundary(caret_), extend);
}

void TextField::moveRight(bool extend) {
    if (!extend && hasSelection()) {
        anchor_ = caret_ = selectionEnd();
        return;
    }
    moveTo(nextBoundary(caret_), extend);
}

void TextField::moveTo(std::size_t byte, bool extend) {
    caret_ = byte;
    if (!extend) anchor_ = caret_;
}

bool TextField::copySelection() {
    if (secure_ || !hasSelection()) return false;
    pasteboard_.writeFromOtherApp(platform::PasteboardItem::text(selectedText()), application_);
    return true;
}

bool TextField::cutSelection() {
    if (!copySelection()) return false;
    insertText({});
    return true;
}

bool TextField::pasteText() {
    const std::optional<std::string> text = pasteboard_.text();
    if (!text || text->empty()) return false;
    insertText(*text);
    return true;
}

}  // namespace orvantis::sim
