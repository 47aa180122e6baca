#pragma once

#include <string>
#include <string_view>

// Blank and line-break characters, and trimming by them. Tests are by code point; an
// ill-formed sequence belongs to no set, so trimming stops at it.

namespace orvantis::text {

/// The three character sets the product trims and splits by.
enum class WhitespaceSet {
    /// Unicode general category Zs (space separators, NBSP included) and U+0009 tab.
    whitespaces,
    /// U+000A to U+000D, U+0085, U+2028 line separator, U+2029 paragraph separator.
    newlines,
    /// The union of the two.
    whitespacesAndNewlines,
};

/// True when `codePoint` belongs to `set`; false for values that are no code point.
bool isIn(WhitespaceSet set, char32_t codePoint);

/// True for code points with the Unicode White_Space property, the test behind "is this
/// character whitespace" (the first code point of a cluster decides). Today it holds the same
/// code points as `whitespacesAndNewlines`. False for values that are no code point.
bool isUnicodeWhitespace(char32_t codePoint);

/// `text` without the characters of `set` at both ends. The result views `text`; it is
/// well-formed whenever `text` is.
std::string_view trimmed(std::string_view text,
                         WhitespaceSet set = WhitespaceSet::whitespacesAndNewlines);

/// `text` without the characters of `set` at its start; a view of `text`.
std::string_view trimmedStart(std::string_view text,
                              WhitespaceSet set = WhitespaceSet::whitespacesAndNewlines);

/// `text` without the characters of `set` at its end; a view of `text`.
std::string_view trimmedEnd(std::string_view text,
                            WhitespaceSet set = WhitespaceSet::whitespacesAndNewlines);

/// `text` trimmed of `set`, with every inner run of characters of `set` replaced by one
/// U+0020 blank. Ill-formed sequences come back as U+FFFD.
std::string collapsedWhitespace(std::string_view text,
                                WhitespaceSet set = WhitespaceSet::whitespacesAndNewlines);

/// True when `text` holds nothing but characters of `set`; true for the empty text, false
/// as soon as an ill-formed sequence appears.
bool isWhitespaceOnly(std::string_view text,
                      WhitespaceSet set = WhitespaceSet::whitespacesAndNewlines);

}  // namespace orvantis::text
