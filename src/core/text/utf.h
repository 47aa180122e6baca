#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

// UTF-8 as the core keeps all text: validity, repair, code points, and the conversion to the
// UTF-16 offsets in which the accessibility interfaces of the desktop count.
//
// Ill-formed input is read the way Unicode recommends ("maximal subparts"): each maximal
// prefix of a well-formed sequence, or a single stray byte, stands for one U+FFFD. Every
// function here accepts any bytes and never reads outside the view it was given.

namespace orvantis::text {

/// A half-open range [begin, end) of bytes in a UTF-8 string.
struct ByteRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    /// Number of bytes covered; 0 for an inverted range.
    std::size_t size() const { return end > begin ? end - begin : 0; }
    /// True when the range covers no byte.
    bool empty() const { return end <= begin; }
    bool operator==(const ByteRange&) const = default;
};

/// U+FFFD, the stand-in for every ill-formed sequence.
inline constexpr char32_t kReplacementCharacter = U'\uFFFD';

/// The highest Unicode code point.
inline constexpr char32_t kMaxCodePoint = U'\U0010FFFF';

/// One code point as it was read from UTF-8.
struct CodePoint {
    /// The scalar value; U+FFFD for an ill-formed sequence; 0 past the end.
    char32_t value = 0;
    /// Byte offset of the sequence in the text.
    std::size_t offset = 0;
    /// Bytes taken by the sequence: 1 to 4, at least 1 for an ill-formed one, 0 past the end.
    std::size_t length = 0;
    /// False for an ill-formed sequence and past the end.
    bool valid = false;
};

/// Decodes the sequence that starts at `offset`. At or past the end of `text` the result has
/// length 0. An offset inside a sequence is read from there on: a stray continuation byte is
/// one ill-formed unit.
CodePoint decodeCodePoint(std::string_view text, std::size_t offset);

/// True when `text` is well-formed UTF-8 (no surrogates, nothing above U+10FFFF, no overlong
/// forms). The empty string is valid.
bool isValidUtf8(std::string_view text);

/// Checks UTF-8 that arrives in pieces, as isValidUtf8 checks the whole: a sequence cut by the
/// end of a piece is kept for the next one.
class Utf8Stream {
public:
    /// False as soon as the text so far cannot be UTF-8.
    bool add(std::string_view piece);
    /// True when no sequence is left unfinished.
    bool finish() const { return pending_.empty(); }

private:
    std::string pending_;
};

/// `text` with each ill-formed sequence replaced by U+FFFD; valid text comes back unchanged.
std::string repairUtf8(std::string_view text);

/// Number of code points, an ill-formed sequence counting as one.
std::size_t codePointCount(std::string_view text);

/// Appends the UTF-8 form of `codePoint`; a surrogate or a value above U+10FFFF appends U+FFFD.
void appendUtf8(std::string& out, char32_t codePoint);

/// The UTF-8 form of one code point; a surrogate or a value above U+10FFFF gives U+FFFD.
std::string encodeUtf8(char32_t codePoint);

/// The code points of `text`; ill-formed sequences become U+FFFD.
std::u32string toCodePoints(std::string_view text);

/// UTF-8 of `codePoints`; surrogates and values above U+10FFFF become U+FFFD.
std::string fromCodePoints(std::u32string_view codePoints);

/// UTF-16 of `text`; ill-formed sequences become U+FFFD.
std::u16string toUtf16(std::string_view text);

/// UTF-8 of `utf16`; an unpaired surrogate becomes U+FFFD.
std::string fromUtf16(std::u16string_view utf16);

/// Length of `text` in UTF-16 code units: 2 for a code point above U+FFFF, 1 for any other and
/// for each ill-formed sequence (as its U+FFFD would take).
std::size_t utf16Length(std::string_view text);

/// The UTF-16 offset of the byte offset `byteOffset`. An offset past the end counts as the end;
/// an offset inside a multi-byte sequence counts as the start of that sequence.
std::size_t utf16OffsetFromByteOffset(std::string_view text, std::size_t byteOffset);

/// The byte offset of the UTF-16 offset `utf16Offset`. An offset past the end gives
/// `text.size()`; an offset between the two halves of a surrogate pair gives the start of
/// that code point.
std::size_t byteOffsetFromUtf16Offset(std::string_view text, std::size_t utf16Offset);

/// A range in UTF-16 code units, as the accessibility interfaces report a selection.
struct Utf16Range {
    std::size_t location = 0;
    std::size_t length = 0;
    bool operator==(const Utf16Range&) const = default;
};

/// `range` of `text` in UTF-16 units, both ends clamped as by `utf16OffsetFromByteOffset`; an
/// inverted range is read as empty at its begin.
Utf16Range utf16RangeFromByteRange(std::string_view text, ByteRange range);

/// `range` in UTF-16 units of `text` as bytes, with the clamping rules of
/// `byteOffsetFromUtf16Offset`; a length that runs past the end stops at the end.
ByteRange byteRangeFromUtf16Range(std::string_view text, Utf16Range range);

/// Forward iteration over the code points of a UTF-8 view, as `decodeCodePoint` reads them.
/// The view must outlive the iteration.
class CodePointIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = CodePoint;
    using difference_type = std::ptrdiff_t;
    using pointer = const CodePoint*;
    using reference = const CodePoint&;

    CodePointIterator() = default;
    /// Starts at `offset`; an offset at or past the end is the end iterator.
    CodePointIterator(std::string_view text, std::size_t offset)
        : text_(text), current_(decodeCodePoint(text, offset)) {
        current_.offset = offset < text.size() ? offset : text.size();
    }

    reference operator*() const { return current_; }
    pointer operator->() const { return &current_; }
    CodePointIterator& operator++() {
        *this = CodePointIterator(text_, current_.offset + current_.length);
        return *this;
    }
    CodePointIterator operator++(int) {
        CodePointIterator before = *this;
        ++*this;
        return before;
    }
    /// Iterators compare by position only.
    bool operator==(const CodePointIterator& other) const {
        return current_.offset == other.current_.offset;
    }

private:
    std::string_view text_;
    CodePoint current_;
};

/// The code points of a view, for range-based `for`.
class CodePointRange {
public:
    explicit CodePointRange(std::string_view text) : text_(text) {}
    CodePointIterator begin() const { return CodePointIterator(text_, 0); }
    CodePointIterator end() const { return CodePointIterator(text_, text_.size()); }

private:
    std::string_view text_;
};

/// `for (CodePoint c : codePoints(text))` visits every code point of `text` in order.
inline CodePointRange codePoints(std::string_view text) { return CodePointRange(text); }

}  // namespace orvantis::text
