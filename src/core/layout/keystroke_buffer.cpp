#include "core/layout/keystroke_buffer.h"

#include <utility>

#include "core/text/graphemes.h"
#include "core/text/utf.h"

namespace orvantis {

std::string KeystrokeBuffer::string() const {
    std::string joined;
    for (const auto& c : characters_) joined += c;
    return joined;
}

void KeystrokeBuffer::append(std::string_view character) {
    if (character.empty()) return;
    if (text::isSingleGrapheme(character)) {
        appendOne(text::repairUtf8(character));
        return;
    }
    for (auto& cluster : text::graphemes(character)) appendOne(std::move(cluster));
}

void KeystrokeBuffer::appendOne(std::string character) {
    if (characters_.size() >= kLimit) {
        characters_.clear();
        return;
    }
    characters_.push_back(std::move(character));
}

void KeystrokeBuffer::removeLastCharacter() {
    if (!characters_.empty()) characters_.pop_back();
}

void KeystrokeBuffer::replaceAll(std::vector<std::string> characters) {
    if (characters.size() > kLimit) characters.resize(kLimit);
    characters_ = std::move(characters);
}

void KeystrokeBuffer::replaceAll(std::string_view text) {
    replaceAll(text::graphemes(text));
}

}  // namespace orvantis
