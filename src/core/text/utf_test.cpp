#include "core/text/utf.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvantis::text {
namespace {

const std::string kReplacement = "\xEF\xBF\xBD";  // U+FFFD

TEST(UtfTest, WellFormedTextIsValid) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8("plain ASCII"));
    EXPECT_TRUE(isValidUtf8("привет"));
    EXPECT_TRUE(isValidUtf8("👍🏽 👨‍👩‍👧‍👦 🇷🇺"));
    EXPECT_TRUE(isValidUtf8("\xF4\x8F\xBF\xBF"));  // U+10FFFF
}

TEST(UtfTest, IllFormedSequencesAreInvalid) {
    EXPECT_FALSE(isValidUtf8("\x80"));              // stray continuation
    EXPECT_FALSE(isValidUtf8("\xFF"));              // never a lead
    EXPECT_FALSE(isValidUtf8("\xC0\x80"));          // overlong NUL
    EXPECT_FALSE(isValidUtf8("\xE0\x80\xAF"));      // overlong slash
    EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));      // surrogate U+D800
    EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));  // above U+10FFFF
    EXPECT_FALSE(isValidUtf8("ab\xE2\x82"));        // cut short at the end
    EXPECT_FALSE(isValidUtf8("\xE2\x82x"));         // cut short before ASCII
}

TEST(UtfTest, RepairReplacesEachMaximalSubpart) {
    EXPECT_EQ(repairUtf8("abc"), "abc");
    EXPECT_EQ(repairUtf8("a\xE2\x82" "b"), "a" + kReplacement + "b");
    EXPECT_EQ(repairUtf8("\xC0\x80"), kReplacement + kReplacement);
    EXPECT_EQ(repairUtf8("\xED\xA0\x80"), kReplacement + kReplacement + kReplacement);
    EXPECT_EQ(repairUtf8("\xF0\x9F\x98"), kReplacement);
    EXPECT_EQ(repairUtf8("\xF0\x9F\x98\x80\x80"), "😀" + kReplacement);
    EXPECT_TRUE(isValidUtf8(repairUtf8("\xFF\xFE\xFD x \xC3")));
}

TEST(UtfTest, DecodesOneSequence) {
    const std::string text = "aé😀";
    CodePoint c = decodeCodePoint(text, 1);
    EXPECT_EQ(c.value, U'é');
    EXPECT_EQ(c.offset, 1u);
    EXPECT_EQ(c.length, 2u);
    EXPECT_TRUE(c.valid);

    c = decodeCodePoint(text, 3);
    EXPECT_EQ(c.value, U'😀');
    EXPECT_EQ(c.length, 4u);

    c = decodeCodePoint(text, 2);  // inside é
    EXPECT_EQ(c.value, kReplacementCharacter);
    EXPECT_EQ(c.length, 1u);
    EXPECT_FALSE(c.valid);

    c = decodeCodePoint(text, 7);
    EXPECT_EQ(c.length, 0u);
    EXPECT_FALSE(c.valid);
    c = decodeCodePoint(text, 1000);
    EXPECT_EQ(c.length, 0u);
    EXPECT_EQ(c.offset, text.size());
}

TEST(UtfTest, IteratesCodePoints) {
    std::u32string seen;
    std::vector<std::size_t> offsets;
    for (const CodePoint& c : codePoints("aж\xFF😀")) {
        seen.push_back(c.value);
        offsets.push_back(c.offset);
    }
    EXPECT_EQ(seen, std::u32string(U"aж\uFFFD😀"));
    EXPECT_EQ(offsets, (std::vector<std::size_t>{0, 1, 3, 4}));
    EXPECT_EQ(codePointCount("👨‍👩‍👧‍👦"), 7u);
    EXPECT_EQ(codePointCount(""), 0u);
}

TEST(UtfTest, EncodesAndRejectsNonScalars) {
    EXPECT_EQ(encodeUtf8(U'A'), "A");
    EXPECT_EQ(encodeUtf8(U'ё'), "ё");
    EXPECT_EQ(encodeUtf8(U'€'), "€");
    EXPECT_EQ(encodeUtf8(U'😀'), "\xF0\x9F\x98\x80");
    EXPECT_EQ(encodeUtf8(0xD800), kReplacement);
    EXPECT_EQ(encodeUtf8(0x110000), kReplacement);
    EXPECT_EQ(fromCodePoints(U"при\U0001F600"), "при😀");
    EXPECT_EQ(toCodePoints("при😀"), std::u32string(U"при\U0001F600"));
}

TEST(UtfTest, ConvertsToAndFromUtf16) {
    EXPECT_EQ(toUtf16("a😀ж"), std::u16string(u"a\xD83D\xDE00ж"));
    EXPECT_EQ(fromUtf16(u"a\xD83D\xDE00ж"), "a😀ж");
    EXPECT_EQ(fromUtf16(std::u16string(1, char16_t{0xD83D})), kReplacement);
    EXPECT_EQ(fromUtf16(std::u16string(u"x") + char16_t{0xDE00} + u"y"), "x" + kReplacement + "y");
    EXPECT_EQ(toUtf16("\xFF"), std::u16string(u"\xFFFD"));
}

TEST(UtfTest, Utf16LengthCountsAnEmojiAsTwoUnits) {
    EXPECT_EQ(utf16Length(""), 0u);
    EXPECT_EQ(utf16Length("привет"), 6u);
    EXPECT_EQ(utf16Length("a😀b"), 4u);
    EXPECT_EQ(utf16Length("👍🏽"), 4u);
    EXPECT_EQ(utf16Length("\xFF\xFE"), 2u);
}

TEST(UtfTest, ByteOffsetsBecomeUtf16Offsets) {
    const std::string text = "a😀bж";  // bytes: a 0, 😀 1-4, b 5, ж 6-7
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 0), 0u);
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 1), 1u);
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 5), 3u);
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 6), 4u);
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 8), 5u);
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 3), 1u);  // inside the emoji: its start
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 7), 4u);  // inside ж
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 999), 5u);
    EXPECT_EQ(utf16OffsetFromByteOffset("", 3), 0u);
}

TEST(UtfTest, Utf16OffsetsBecomeByteOffsets) {
    const std::string text = "a😀bж";
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 0), 0u);
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 1), 1u);
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 2), 1u);  // between the surrogates
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 3), 5u);
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 4), 6u);
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 5), 8u);
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 500), 8u);
}

TEST(UtfTest, IllFormedBytesCountAsOneUnitEach) {
    const std::string text = "a\xE2\x82" "b";  // a, one ill-formed subpart, b
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 3), 2u);
    EXPECT_EQ(utf16OffsetFromByteOffset(text, 2), 1u);
    EXPECT_EQ(byteOffsetFromUtf16Offset(text, 2), 3u);
}

TEST(UtfTest, RangesConvertBothWaysAndClamp) {
    const std::string text = "a😀bж";
    EXPECT_EQ(utf16RangeFromByteRange(text, ByteRange{1, 6}), (Utf16Range{1, 3}));
    EXPECT_EQ(byteRangeFromUtf16Range(text, Utf16Range{1, 3}), (ByteRange{1, 6}));
    EXPECT_EQ(byteRangeFromUtf16Range(text, Utf16Range{4, 100}), (ByteRange{6, 8}));
    EXPECT_EQ(byteRangeFromUtf16Range(text, Utf16Range{3, std::numeric_limits<std::size_t>::max()}),
              (ByteRange{5, 8}));
    EXPECT_EQ(byteRangeFromUtf16Range(text, Utf16Range{40, 2}), (ByteRange{8, 8}));
    EXPECT_EQ(utf16RangeFromByteRange(text, ByteRange{6, 2}), (Utf16Range{4, 0}));
}

TEST(UtfTest, ByteRangeMeasuresItself) {
    EXPECT_EQ((ByteRange{2, 5}).size(), 3u);
    EXPECT_TRUE((ByteRange{4, 4}).empty());
    EXPECT_EQ((ByteRange{5, 2}).size(), 0u);
}

}  // namespace
}  // namespace orvantis::text
