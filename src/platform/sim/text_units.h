#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis::sim::text_units {

// Positions in UTF-8 text: byte offsets, UTF-16 code units and extended grapheme clusters.
// The simulated text field keeps bytes and answers the accessibility layer in UTF-16 units.
// Bytes that are not valid UTF-8 count as one code point of one UTF-16 unit each.

/// Byte offsets of every grapheme cluster boundary of `utf8`, from 0 up to and including its size.
std::vector<std::size_t> graphemeBoundaries(std::string_view utf8);

/// The grapheme clusters of `utf8`, in order.
std::vector<std::string> graphemes(std::string_view utf8);

/// Number of UTF-16 code units of `utf8`.
std::size_t utf16Length(std::string_view utf8);

/// Where a UTF-16 offset falls in UTF-8 text.
struct BytePosition {
    std::size_t byte = 0;      ///< start of the code point that holds the offset, or the text size
    bool insideCodePoint = false;  ///< the offset splits a surrogate pair
};

/// Maps a UTF-16 offset to bytes. Offsets past the end answer the text size.
BytePosition byteOffsetOfUtf16(std::string_view utf8, std::size_t utf16Offset);

/// Byte length of the code point that starts at `byte` (1 for a stray byte).
std::size_t codePointLength(std::string_view utf8, std::size_t byte);

}  // namespace orvantis::sim::text_units
