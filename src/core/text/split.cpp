#include "core/text/split.h"

#include <string>

#include "core/text/icu_support.h"

namespace orvantis::text {

std::vector<std::string_view> splitAt(std::string_view text, WhitespaceSet set,
                                      EmptyPieces empty) {
    return splitWhere(text, [set](char32_t c) { return isIn(set, c); }, empty);
}

std::vector<std::string_view> splitLines(std::string_view text, CrLf crlf) {
    if (crlf == CrLf::twoBreaks) return splitAt(text, WhitespaceSet::newlines);
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    std::size_t position = 0;
    while (position < text.size()) {
        const CodePoint c = decodeCodePoint(text, position);
        std::size_t next = position + c.length;
        if (isIn(WhitespaceSet::newlines, c.value)) {
            if (c.value == U'\r' && next < text.size() && text[next] == '\n') ++next;
            lines.push_back(text.substr(start, position - start));
            start = next;
        }
        position = next;
    }
    lines.push_back(text.substr(start));
    return lines;
}

std::vector<std::string_view> splitAtCharacters(
    std::string_view text, const std::function<bool(std::string_view character)>& isSeparator,
    EmptyPieces empty) {
    const detail::ValidUtf8 valid(text);
    std::vector<std::string_view> pieces;
    std::size_t pieceStart = 0;  // in the original text
    auto add = [&](std::size_t end) {
        if (end > pieceStart || empty == EmptyPieces::keep) {
            pieces.push_back(text.substr(pieceStart, end - pieceStart));
        }
    };
    detail::Segmenter segmenter(UBRK_CHARACTER, valid.view());
    std::size_t clusterStart = 0;  // in the repaired text
    while (auto boundary = segmenter.next()) {
        const std::string_view cluster =
            valid.view().substr(clusterStart, *boundary - clusterStart);
        if (isSeparator && isSeparator(cluster)) {
            add(valid.toOriginal(clusterStart));
            pieceStart = valid.toOriginal(*boundary);
        }
        clusterStart = *boundary;
    }
    add(text.size());
    return pieces;
}

}  // namespace orvantis::text
