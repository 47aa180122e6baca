#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "core/text/utf.h"
#include "core/text/whitespace.h"

// Cutting text into pieces at separator characters. The pieces are views of the text that
// was given, so they are well-formed whenever it is; an ill-formed sequence is offered to a
// code point test as U+FFFD.

namespace orvantis::text {

/// Whether empty pieces (between adjacent separators, or at either end) stay in the result.
enum class EmptyPieces { keep, omit };

/// How a CR directly followed by LF counts when text is split into lines.
enum class CrLf {
    /// Two separators with an empty piece between them: every code point counts alone.
    twoBreaks,
    /// One separator, as CR LF is one character.
    oneBreak,
};

/// Pieces of `text` between the code points for which `isSeparator(char32_t)` is true; the
/// separators themselves are dropped. With `EmptyPieces::keep` the result has one piece more
/// than there are separators (so {""} for the empty text); with `omit`, empty pieces are left
/// out.
template <typename Predicate>
std::vector<std::string_view> splitWhere(std::string_view text, Predicate isSeparator,
                                         EmptyPieces empty = EmptyPieces::keep) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    auto add = [&](std::size_t end) {
        if (end > start || empty == EmptyPieces::keep) {
            pieces.push_back(text.substr(start, end - start));
        }
    };
    for (const CodePoint& c : codePoints(text)) {
        if (isSeparator(c.value)) {
            add(c.offset);
            start = c.offset + c.length;
        }
    }
    add(text.size());
    return pieces;
}

/// Pieces of `text` between the characters of `set`, as `splitWhere` cuts them.
std::vector<std::string_view> splitAt(std::string_view text, WhitespaceSet set,
                                      EmptyPieces empty = EmptyPieces::keep);

/// Lines of `text`, cut at every code point of `WhitespaceSet::newlines`, empty lines kept: a
/// text with n line breaks has n + 1 lines, the empty text one.
std::vector<std::string_view> splitLines(std::string_view text, CrLf crlf = CrLf::twoBreaks);

/// Pieces of `text` between the clusters (user-perceived characters) for which
/// `isSeparator` is true; a cluster such as CR LF or a blank with a combining mark is
/// judged as a whole, and the predicate sees it well-formed. Empty pieces as in `splitWhere`.
std::vector<std::string_view> splitAtCharacters(
    std::string_view text, const std::function<bool(std::string_view character)>& isSeparator,
    EmptyPieces empty = EmptyPieces::keep);

}  // namespace orvantis::text
