#include "core/text/icu_support.h"

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/ucasemap.h>
#include <unicode/ustring.h>

#include "core/text/whitespace.h"

namespace orvantis::text::detail {
namespace {

constexpr std::size_t kReplacementLength = 3;  // U+FFFD in UTF-8

/// One break iterator of a kind per thread, reused while no other walk holds it.
struct CachedIterator {
    UBreakIterator* iterator = nullptr;
    bool busy = false;
    ~CachedIterator() {
        if (iterator != nullptr) ubrk_close(iterator);
    }
};

UBreakIterator* openIterator(UBreakIteratorType type) {
    UErrorCode status = U_ZERO_ERROR;
    // "" is the root locale: segmentation must not follow the locale of the process.
    UBreakIterator* iterator = ubrk_open(type, "", nullptr, 0, &status);
    if (U_FAILURE(status)) {
        if (iterator != nullptr) ubrk_close(iterator);
        return nullptr;
    }
    return iterator;
}

CachedIterator* cacheFor(UBreakIteratorType type) {
    thread_local CachedIterator character;
    thread_local CachedIterator word;
    switch (type) {
        case UBRK_CHARACTER: return &character;
        case UBRK_WORD: return &word;
        default: return nullptr;
    }
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// Owns a UCaseMap; the thread-local holders below close theirs when the thread ends.
struct CaseMapHolder {
    UCaseMap* map = nullptr;
    bool failed = false;
    ~CaseMapHolder() {
        if (map != nullptr) ucasemap_close(map);
    }
};

/// Word segments for title case: runs of whitespaces and newlines, and runs of anything
/// else. The first code point of every segment is title-cased; for a run of blanks that
/// changes nothing.
constexpr char16_t kTitleRules[] =
    u"$Ws = [\\p{Zs}\\u0009-\\u000D\\u0085\\u2028\\u2029];\n"
    u"$Ws+;\n"
    u"[^$Ws]+;\n";

UCaseMap* plainCaseMap() {
    thread_local CaseMapHolder holder;
    if (holder.map == nullptr && !holder.failed) {
        UErrorCode status = U_ZERO_ERROR;
        holder.map = ucasemap_open("", U_FOLD_CASE_DEFAULT, &status);
        if (U_FAILURE(status)) {
            if (holder.map != nullptr) ucasemap_close(holder.map);
            holder.map = nullptr;
            holder.failed = true;
        }
    }
    return holder.map;
}

UCaseMap* titleCaseMap() {
    thread_local CaseMapHolder holder;
    if (holder.map == nullptr && !holder.failed) {
        UErrorCode status = U_ZERO_ERROR;
        UCaseMap* map = ucasemap_open("", U_TITLECASE_NO_BREAK_ADJUSTMENT, &status);
        UParseError parseError{};
        UBreakIterator* words = nullptr;
        if (U_SUCCESS(status)) {
            words = ubrk_openRules(reinterpret_cast<const UChar*>(kTitleRules), -1, nullptr, 0,
                                   &parseError, &status);
        }
        if (U_SUCCESS(status)) {
            ucasemap_setBreakIterator(map, words, &status);  // the map adopts the iterator
        } else if (words != nullptr) {
            ubrk_close(words);
        }
        if (U_FAILURE(status)) {
            if (map != nullptr) ucasemap_close(map);
            holder.failed = true;
        } else {
            holder.map = map;
        }
    }
    return holder.map;
}

using Utf8CaseFunction = std::int32_t (*)(UCaseMap*, char*, std::int32_t, const char*,
                                          std::int32_t, UErrorCode*);

std::int32_t toUpper(UCaseMap* map, char* dest, std::int32_t capacity, const char* src,
                     std::int32_t length, UErrorCode* status) {
    return ucasemap_utf8ToUpper(map, dest, capacity, src, length, status);
}
std::int32_t toLower(UCaseMap* map, char* dest, std::int32_t capacity, const char* src,
                     std::int32_t length, UErrorCode* status) {
    return ucasemap_utf8ToLower(map, dest, capacity, src, length, status);
}
std::int32_t toTitle(UCaseMap* map, char* dest, std::int32_t capacity, const char* src,
                     std::int32_t length, UErrorCode* status) {
    return ucasemap_utf8ToTitle(map, dest, capacity, src, length, status);
}
std::int32_t fold(UCaseMap* map, char* dest, std::int32_t capacity, const char* src,
                  std::int32_t length, UErrorCode* status) {
    return ucasemap_utf8FoldCase(map, dest, capacity, src, length, status);
}

/// Appends `chunk` mapped by ICU; false if ICU failed, leaving `out` as it was.
bool appendMapped(Utf8CaseFunction function, UCaseMap* map, std::string_view chunk,
                  std::string& out) {
    const std::size_t before = out.size();
    const auto length = static_cast<std::int32_t>(chunk.size());
    std::size_t capacity = chunk.size() + chunk.size() / 4 + 16;
    for (int attempt = 0; attempt < 2; ++attempt) {
        out.resize(before + capacity);
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t written = function(map, out.data() + before,
                                              static_cast<std::int32_t>(capacity), chunk.data(),
                                              length, &status);
        if (status == U_BUFFER_OVERFLOW_ERROR && written > 0) {
            capacity = static_cast<std::size_t>(written);
            continue;
        }
        if (U_FAILURE(status) || written < 0) break;
        out.resize(before + static_cast<std::size_t>(written));
        return true;
    }
    out.resize(before);
    return false;
}

/// One code point at a time, by the simple mappings of UCD: the way out when ICU's mapper
/// can't be had.
void appendSimplyMapped(CaseOperation operation, std::string_view chunk, bool& atWordStart,
                        std::string& out) {
    for (const CodePoint& c : codePoints(chunk)) {
        const auto value = static_cast<UChar32>(c.value);
        UChar32 mapped = value;
        switch (operation) {
            case CaseOperation::upper: mapped = u_toupper(value); break;
            case CaseOperation::lower: mapped = u_tolower(value); break;
            case CaseOperation::fold: mapped = u_foldCase(value, U_FOLD_CASE_DEFAULT); break;
            case CaseOperation::title:
                mapped = atWordStart ? u_totitle(value) : u_tolower(value);
                break;
        }
        const bool blank = isIn(WhitespaceSet::whitespacesAndNewlines, c.value);
        atWordStart = blank;
        appendUtf8(out, static_cast<char32_t>(mapped));
    }
}

}  // namespace

std::string mapCase(CaseOperation operation, std::string_view valid, std::size_t maxChunk) {
    UCaseMap* map = operation == CaseOperation::title ? titleCaseMap() : plainCaseMap();
    Utf8CaseFunction function = toUpper;
    switch (operation) {
        case CaseOperation::upper: function = toUpper; break;
        case CaseOperation::lower: function = toLower; break;
        case CaseOperation::title: function = toTitle; break;
        case CaseOperation::fold: function = fold; break;
    }
    std::string out;
    out.reserve(valid.size());
    bool atWordStart = true;
    for (const ByteRange& range : icuChunks(valid, maxChunk)) {
        const std::string_view chunk = valid.substr(range.begin, range.size());
        if (map == nullptr || !appendMapped(function, map, chunk, out)) {
            appendSimplyMapped(operation, chunk, atWordStart, out);
        }
        // ICU sees each chunk as a text of its own; the fallback does the same.
        atWordStart = true;
    }
    return out;
}

ValidUtf8::ValidUtf8(std::string_view text) {
    if (isValidUtf8(text)) {
        view_ = text;
        return;
    }
    storage_.reserve(text.size() + 16);
    for (const CodePoint& c : codePoints(text)) {
        if (c.valid) {
            storage_.append(text.substr(c.offset, c.length));
        } else {
            fixes_.push_back(Fix{storage_.size(), c.offset, c.length});
            appendUtf8(storage_, kReplacementCharacter);
        }
    }
    view_ = storage_;
}

std::size_t ValidUtf8::toOriginal(std::size_t repaired) const {
    if (fixes_.empty()) return repaired;
    auto after = std::upper_bound(
        fixes_.begin(), fixes_.end(), repaired,
        [](std::size_t offset, const Fix& fix) { return offset < fix.repairedOffset; });
    if (after == fixes_.begin()) return repaired;
    const Fix& fix = *(after - 1);
    if (repaired < fix.repairedOffset + kReplacementLength) return fix.originalOffset;
    return fix.originalOffset + fix.originalLength +
           (repaired - fix.repairedOffset - kReplacementLength);
}

std::vector<ByteRange> icuChunks(std::string_view valid, std::size_t maxBytes) {
    maxBytes = std::max<std::size_t>(maxBytes, 4);
    std::vector<ByteRange> chunks;
    std::size_t position = 0;
    while (position < valid.size()) {
        if (valid.size() - position <= maxBytes) {
            chunks.push_back(ByteRange{position, valid.size()});
            break;
        }
        const std::size_t limit = position + maxBytes;
        std::size_t cut = 0;
        for (std::size_t i = limit; i > position + maxBytes / 2; --i) {
            if (valid[i - 1] == ' ' || valid[i - 1] == '\n') {
                cut = i;
                break;
            }
        }
        if (cut == 0) {
            cut = limit;
            while (cut > position && isContinuation(valid[cut])) --cut;
            if (cut == position) cut = limit;  // only for ill-formed input; keeps progress
        }
        chunks.push_back(ByteRange{position, cut});
        position = cut;
    }
    return chunks;
}

Segmenter::Segmenter(UBreakIteratorType type, std::string_view valid, std::size_t maxChunk)
    : text_(valid), chunks_(icuChunks(valid, maxChunk)) {
    CachedIterator* cache = cacheFor(type);
    if (cache != nullptr && !cache->busy) {
        if (cache->iterator == nullptr) cache->iterator = openIterator(type);
        if (cache->iterator != nullptr) {
            cache->busy = true;
            cacheBusy_ = &cache->busy;
            iterator_ = cache->iterator;
            return;
        }
    }
    owned_ = openIterator(type);
    iterator_ = owned_;
}

Segmenter::~Segmenter() {
    utext_close(&utext_);
    if (cacheBusy_ != nullptr) *cacheBusy_ = false;
    if (owned_ != nullptr) ubrk_close(owned_);
}

bool Segmenter::openChunk(std::size_t index) {
    chunk_ = index;
    if (index >= chunks_.size()) return false;
    const ByteRange range = chunks_[index];
    fallbackPosition_ = range.begin;
    if (iterator_ == nullptr) return true;
    UErrorCode status = U_ZERO_ERROR;
    utext_openUTF8(&utext_, text_.data() + range.begin, static_cast<std::int64_t>(range.size()),
                   &status);
    ubrk_setUText(iterator_, &utext_, &status);
    if (U_FAILURE(status)) {
        iterator_ = nullptr;  // the rest of the text is walked by code points
        return true;
    }
    ubrk_first(iterator_);
    return true;
}

std::optional<std::size_t> Segmenter::next() {
    if (!started_) {
        started_ = true;
        if (!openChunk(0)) return std::nullopt;
    }
    while (chunk_ < chunks_.size()) {
        const ByteRange range = chunks_[chunk_];
        if (iterator_ != nullptr) {
            const std::int32_t position = ubrk_next(iterator_);
            if (position != UBRK_DONE) {
                return range.begin + std::min(static_cast<std::size_t>(position), range.size());
            }
        } else if (fallbackPosition_ < range.end) {
            const CodePoint c = decodeCodePoint(text_, fallbackPosition_);
            fallbackPosition_ =
                std::min(range.end, fallbackPosition_ + std::max<std::size_t>(1, c.length));
            return fallbackPosition_;
        }
        openChunk(chunk_ + 1);
    }
    return std::nullopt;
}

std::int32_t Segmenter::ruleStatus() const {
    return iterator_ != nullptr ? ubrk_getRuleStatus(iterator_) : 0;
}

std::vector<std::size_t> boundaries(UBreakIteratorType type, std::string_view valid) {
    std::vector<std::size_t> result{0};
    Segmenter segmenter(type, valid);
    while (auto boundary = segmenter.next()) {
        if (*boundary > result.back()) result.push_back(*boundary);
    }
    return result;
}

}  // namespace orvantis::text::detail
