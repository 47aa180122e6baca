#include "platform/sim/text_units.h"

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/utext.h>

namespace orvantis::sim::text_units {
namespace {

// UTF-16 units of the code point that starts at `byte`.
std::size_t utf16UnitsAt(std::string_view utf8, std::size_t byte) {
    return codePointLength(utf8, byte) == 4 ? 2 : 1;
}

// One character break iterator per thread: creating one costs far more than resetting its text.
icu::BreakIterator* characterBreaks() {
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(made) : nullptr;
    }();
    return iterator.get();
}

// Code point boundaries, for when ICU cannot give grapheme boundaries.
std::vector<std::size_t> codePointBoundaries(std::string_view utf8) {
    std::vector<std::size_t> result{0};
    for (std::size_t byte = 0; byte < utf8.size();) {
        byte += codePointLength(utf8, byte);
        result.push_back(byte);
    }
    return result;
}

}  // namespace

std::size_t codePointLength(std::string_view utf8, std::size_t byte) {
    const auto lead = static_cast<unsigned char>(utf8[byte]);
    std::size_t length = 1;
    if ((lead & 0xE0) == 0xC0) length = 2;
    else if ((lead & 0xF0) == 0xE0) length = 3;
    else if ((lead & 0xF8) == 0xF0) length = 4;
    if (byte + length > utf8.size()) return 1;
    for (std::size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(utf8[byte + i]) & 0xC0) != 0x80) return 1;
    return length;
}

std::vector<std::size_t> graphemeBoundaries(std::string_view utf8) {
    icu::BreakIterator* iterator = characterBreaks();
    if (utf8.empty() || iterator == nullptr) return codePointBoundaries(utf8);
    UErrorCode status = U_ZERO_ERROR;
    UText* text = utext_openUTF8(nullptr, utf8.data(), static_cast<int64_t>(utf8.size()), &status);
    if (U_FAILURE(status)) return codePointBoundaries(utf8);
    iterator->setText(text, status);
    std::vector<std::size_t> result;
    if (U_SUCCESS(status)) {
        // The native index of UTF-8 text is the byte offset.
        for (int32_t at = iterator->first(); at != icu::BreakIterator::DONE; at = iterator->next())
            result.push_back(static_cast<std::size_t>(at));
    }
    // The iterator keeps a shallow clone of `text` that points into `utf8`; it reads it again
    // only after the next setText() has replaced it.
    utext_close(text);
    if (result.empty() || result.front() != 0 || result.back() != utf8.size()) return codePointBoundaries(utf8);
    return result;
}

std::vector<std::string> graphemes(std::string_view utf8) {
    const auto boundaries = graphemeBoundaries(utf8);
    std::vector<std::string> result;
    for (std::size_t i = 1; i < boundaries.size(); ++i)
        result.emplace_back(utf8.substr(boundaries[i - 1], boundaries[i] - boundaries[i - 1]));
    return result;
}

std::size_t utf16Length(std::string_view utf8) {
    std::size_t units = 0;
    for (std::size_t byte = 0; byte < utf8.size(); byte += codePointLength(utf8, byte))
        units += utf16UnitsAt(utf8, byte);
    return units;
}

BytePosition byteOffsetOfUtf16(std::string_view utf8, std::size_t utf16Offset) {
    std::size_t units = 0;
    std::size_t byte = 0;
    while (byte < utf8.size()) {
        if (units == utf16Offset) return {byte, false};
        const std::size_t next = units + utf16UnitsAt(utf8, byte);
        if (next > utf16Offset) return {byte, true};
        units = next;
        byte += codePointLength(utf8, byte);
    }
    return {utf8.size(), false};
}

}  // namespace orvantis::sim::text_units
