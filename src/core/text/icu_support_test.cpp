#include "core/text/icu_support.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/text/graphemes.h"
#include "core/text/words.h"

namespace orvantis::text::detail {
namespace {

using Offsets = std::vector<std::size_t>;

Offsets walk(UBreakIteratorType type, std::string_view text, std::size_t chunk) {
    Offsets result{0};
    Segmenter segmenter(type, text, chunk);
    while (auto boundary = segmenter.next()) result.push_back(*boundary);
    return result;
}

TEST(IcuSupportTest, ValidTextIsViewedNotCopied) {
    const std::string text = "привет";
    const ValidUtf8 valid(text);
    EXPECT_EQ(valid.view().data(), text.data());
    EXPECT_EQ(valid.toOriginal(4), 4u);
}

TEST(IcuSupportTest, RepairedOffsetsMapBackToTheInput) {
    const std::string text = "a\xFF\xFE" "b\xE2\x82";  // a, FF, FE, b, E2 82
    const ValidUtf8 valid(text);
    EXPECT_EQ(valid.view(), "a\xEF\xBF\xBD\xEF\xBF\xBD" "b\xEF\xBF\xBD");
    EXPECT_EQ(valid.toOriginal(0), 0u);
    EXPECT_EQ(valid.toOriginal(1), 1u);
    EXPECT_EQ(valid.toOriginal(2), 1u);  // inside the first U+FFFD
    EXPECT_EQ(valid.toOriginal(4), 2u);
    EXPECT_EQ(valid.toOriginal(7), 3u);
    EXPECT_EQ(valid.toOriginal(8), 4u);
    EXPECT_EQ(valid.toOriginal(11), 6u);
}

TEST(IcuSupportTest, ChunksCoverTheTextAndEndOnCodePoints) {
    const std::string text = "aaaa bbbb привет cccc";
    for (std::size_t max : {1u, 4u, 5u, 7u, 100u}) {
        const std::vector<ByteRange> chunks = icuChunks(text, max);
        ASSERT_FALSE(chunks.empty());
        std::size_t position = 0;
        for (const ByteRange& chunk : chunks) {
            EXPECT_EQ(chunk.begin, position);
            EXPECT_LE(chunk.size(), std::max<std::size_t>(max, 4));
            EXPECT_FALSE(chunk.empty());
            EXPECT_TRUE(isValidUtf8(std::string_view(text).substr(chunk.begin, chunk.size())));
            position = chunk.end;
        }
        EXPECT_EQ(position, text.size());
    }
    EXPECT_TRUE(icuChunks("", 10).empty());
}

TEST(IcuSupportTest, ChunksPreferToEndAfterABlank) {
    const std::vector<ByteRange> chunks = icuChunks("one two three", 8);
    ASSERT_EQ(chunks.size(), 2u);
    EXPECT_EQ(chunks[0], (ByteRange{0, 8}));  // "one two "
}

TEST(IcuSupportTest, ChunkedWalksFindTheSameBoundaries) {
    const std::string text = "one two, три четыре 👍🏽 five\r\nsix";
    const Offsets whole = walk(UBRK_CHARACTER, text, kIcuChunkBytes);
    EXPECT_EQ(walk(UBRK_CHARACTER, text, 9), whole);
    const Offsets words = walk(UBRK_WORD, text, kIcuChunkBytes);
    EXPECT_EQ(walk(UBRK_WORD, text, 12), words);
}

TEST(IcuSupportTest, TwoWalksOfOneKindMayRunAtOnce) {
    Segmenter outer(UBRK_CHARACTER, "ab");
    EXPECT_EQ(outer.next(), 1u);
    {
        Segmenter inner(UBRK_CHARACTER, "👍🏽xyz");
        EXPECT_EQ(inner.next(), 8u);
        EXPECT_EQ(inner.next(), 9u);
    }
    EXPECT_EQ(outer.next(), 2u);
    EXPECT_EQ(outer.next(), std::nullopt);
}

TEST(IcuSupportTest, EmptyTextHasNoBoundaryButItsStart) {
    Segmenter segmenter(UBRK_WORD, "");
    EXPECT_EQ(segmenter.next(), std::nullopt);
    EXPECT_EQ(boundaries(UBRK_CHARACTER, ""), (Offsets{0}));
}

TEST(IcuSupportTest, ThreadsKeepTheirOwnIterators) {
    std::string text;
    for (int i = 0; i < 2000; ++i) text += "слово 👍🏽 ";
    std::vector<std::size_t> counts(4);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < counts.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 5; ++round) {
                counts[t] = graphemeCount(text) + wordCount(text);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t count : counts) EXPECT_EQ(count, 2000u * 8 + 2000u);
}

}  // namespace
}  // namespace orvantis::text::detail
