#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/text/utf.h"

// Comparing and searching text without regard to case, independent of the locale.
//
// Both sides are brought to a caseless key: each code point is decomposed canonically
// (NFD), case-folded with Unicode's full default folding, and decomposed again. So "ß"
// matches "ss" and "SS", "Ё" matches "ё", "ﬁ" matches "FI", and a precomposed "é" matches
// "e" with a combining acute. Combining marks written in a non-canonical order are compared
// as they stand; accents are not ignored ("e" never matches "é"). This is a caseless match,
// not a collation: no order of the alphabet is implied.
//
// Every function accepts any bytes; an ill-formed sequence takes part as U+FFFD.

namespace orvantis::text {

/// The text with Unicode's full default case folding applied (no canonical decomposition):
/// "Straße" gives "strasse".
std::string caseFolded(std::string_view text);

/// True when the caseless keys of `a` and `b` are equal.
bool caseInsensitiveEquals(std::string_view a, std::string_view b);

/// Negative, zero or positive as the caseless key of `a` sorts before, equal to or after
/// that of `b`, code point by code point.
int caseInsensitiveCompare(std::string_view a, std::string_view b);

/// Every occurrence of `needle` in `haystack`, ignoring case, as byte ranges of `haystack`,
/// left to right and without overlap. A match begins and ends on character (grapheme
/// cluster) boundaries of the haystack and covers whole code points: "ss" finds "ß", but "s"
/// does not find half of it, and "e" does not find the start of "é". An empty needle finds
/// nothing.
std::vector<ByteRange> caseInsensitiveFind(std::string_view haystack, std::string_view needle);

/// True when `caseInsensitiveFind` would find at least one match; stops at the first. False
/// for an empty needle.
bool caseInsensitiveContains(std::string_view haystack, std::string_view needle);

}  // namespace orvantis::text
