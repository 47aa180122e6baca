#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include "core/text/utf.h"

// Internal to src/core/text: the plumbing between UTF-8 views and ICU. Nothing outside this
// folder includes it; tests do, to reach the chunking with small sizes.

namespace orvantis::text::detail {

/// ICU counts positions in int32_t. Longer texts are handed over in chunks of at most this
/// many bytes, cut after a blank or a line feed where one is near, so that words, clusters
/// and case contexts are rarely split.
inline constexpr std::size_t kIcuChunkBytes = std::size_t{1} << 26;

/// Well-formed UTF-8 for ICU, made from any bytes, with the way back to offsets in the bytes
/// as they were given. Valid input is viewed, not copied. The input must outlive the object.
class ValidUtf8 {
public:
    explicit ValidUtf8(std::string_view text);
    ValidUtf8(const ValidUtf8&) = delete;
    ValidUtf8& operator=(const ValidUtf8&) = delete;

    /// The text, every ill-formed sequence replaced by U+FFFD.
    std::string_view view() const { return view_; }
    /// Offset in the original bytes of offset `repaired` in `view()`. An offset inside a
    /// U+FFFD that replaced something maps to the start of what it replaced.
    std::size_t toOriginal(std::size_t repaired) const;

private:
    struct Fix {
        std::size_t repairedOffset;  // where the U+FFFD begins in view()
        std::size_t originalOffset;  // where the ill-formed bytes begin in the input
        std::size_t originalLength;
    };
    std::string storage_;
    std::string_view view_;
    std::vector<Fix> fixes_;
};

/// Consecutive ranges that cover `valid`, each at most `maxBytes` long (at least 4 is used),
/// each ending on a code point boundary; preferably just after an ASCII blank or line feed.
/// The empty text has no chunk.
std::vector<ByteRange> icuChunks(std::string_view valid, std::size_t maxBytes = kIcuChunkBytes);

/// Walks the boundaries of an ICU break iterator (clusters or words) over well-formed UTF-8,
/// chunk by chunk. Uses a thread-local iterator of its kind when that one is free, else an
/// iterator of its own, so two walks may be alive at once. If ICU can't make an iterator,
/// every code point boundary counts as a boundary and every rule status is 0.
class Segmenter {
public:
    Segmenter(UBreakIteratorType type, std::string_view valid,
              std::size_t maxChunk = kIcuChunkBytes);
    ~Segmenter();
    Segmenter(const Segmenter&) = delete;
    Segmenter& operator=(const Segmenter&) = delete;

    /// The next boundary in bytes of the text, or nullopt after the last one. The start of
    /// the text (0) is never returned; its end is returned last, unless the text is empty.
    std::optional<std::size_t> next();
    /// ICU's rule status of the segment that ends at the boundary last returned.
    std::int32_t ruleStatus() const;

private:
    bool openChunk(std::size_t index);

    std::string_view text_;
    std::vector<ByteRange> chunks_;
    std::size_t chunk_ = 0;
    bool started_ = false;
    std::size_t fallbackPosition_ = 0;
    UBreakIterator* iterator_ = nullptr;
    bool* cacheBusy_ = nullptr;
    UBreakIterator* owned_ = nullptr;
    UText utext_ = UTEXT_INITIALIZER;
};

/// The case operations of ICU's UTF-8 case mapper, all in the root locale.
enum class CaseOperation {
    upper,
    lower,
    /// Title case for the first code point after each run of whitespaces and newlines, lower
    /// case for the rest.
    title,
    /// Full default case folding.
    fold,
};

/// `valid` mapped by `operation`, chunk by chunk. Should ICU fail, each code point is
/// mapped on its own by its simple (one to one) mapping instead.
std::string mapCase(CaseOperation operation, std::string_view valid,
                    std::size_t maxChunk = kIcuChunkBytes);

/// All boundaries of the given kind in `valid`: 0 first, `valid.size()` last; {0} for the
/// empty text.
std::vector<std::size_t> boundaries(UBreakIteratorType type, std::string_view valid);

}  // namespace orvantis::text::detail
