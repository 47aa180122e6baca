#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/text/utf.h"

// Characters as the user sees them: extended grapheme clusters after ICU's character break
// rules. An emoji with skin tone or joiners, a flag of two regional indicators, a letter with
// its combining marks, a Hangul syllable of jamo and CR LF are one character each.
//
// Text with ill-formed UTF-8 is read as if each ill-formed sequence were U+FFFD: strings that
// come back are always well-formed; byte offsets and ranges always point into the text as it
// was given, a replaced sequence spanning its original bytes.

namespace orvantis::text {

/// Byte offsets where clusters begin and end: 0 first, `text.size()` last; {0} for the empty
/// text.
std::vector<std::size_t> graphemeBoundaries(std::string_view text);

/// The byte range of every cluster, in order; empty for the empty text.
std::vector<ByteRange> graphemeRanges(std::string_view text);

/// Every cluster as a string of its own, in order; empty for the empty text.
std::vector<std::string> graphemes(std::string_view text);

/// Number of clusters; 0 for the empty text.
std::size_t graphemeCount(std::string_view text);

/// True when `text` is exactly one cluster; false for the empty text.
bool isSingleGrapheme(std::string_view text);

/// The first `count` clusters; the whole text when it has no more than `count`.
std::string graphemePrefix(std::string_view text, std::size_t count);

/// The last `count` clusters; the whole text when it has no more than `count`.
std::string graphemeSuffix(std::string_view text, std::size_t count);

/// Up to `count` clusters from cluster index `start`. A start past the end gives the empty
/// string; a count that runs past the end stops there.
std::string graphemeSlice(std::string_view text, std::size_t start, std::size_t count);

/// The first cluster, or the empty string for the empty text.
std::string firstGrapheme(std::string_view text);

/// The last cluster, or the empty string for the empty text.
std::string lastGrapheme(std::string_view text);

/// The text with its clusters in reverse order; each cluster keeps its inner order, so marks
/// stay on their letters and emoji stay whole.
std::string reversedGraphemes(std::string_view text);

/// The text cut to `maxCount` clusters with `marker` appended, when it has more than
/// `maxCount`; otherwise the text itself (repaired if it was ill-formed).
std::string truncatedGraphemes(std::string_view text, std::size_t maxCount,
                               std::string_view marker);

/// Number of clusters that end at or before `byteOffset`; an offset inside a cluster counts
/// as its start, an offset past the end as the end.
std::size_t graphemeIndexFromByteOffset(std::string_view text, std::size_t byteOffset);

/// Byte offset where cluster `index` begins; an index at or past the count gives
/// `text.size()`.
std::size_t byteOffsetFromGraphemeIndex(std::string_view text, std::size_t index);

}  // namespace orvantis::text
