#include "core/clipboard/clipboard_item.h"

#include <string>

#include <gtest/gtest.h>

#include "core/clipboard/reference_date.h"
#include "core/clipboard/uuid.h"
#include "core/text/graphemes.h"

namespace orvantis {
namespace {

ClipboardItem textItem(std::string text) {
    static UuidGenerator ids(7);
    return ClipboardItem::makeText(std::move(text), std::nullopt, ids.generate(), 800000000.5);
}

// --- Preview ---------------------------------------------------------------------------------

TEST(ClipboardItemPreviewTest, A81CharacterTextIsCutTo80CharactersAndTheMark) {
    const std::string text(81, 'x');
    const std::string preview = ClipboardItem::preview(text);
    EXPECT_EQ(preview, std::string(80, 'x') + "\u2026");
    EXPECT_EQ(text::graphemeCount(preview), 81u);
}

TEST(ClipboardItemPreviewTest, An80CharacterTextIsItsOwnPreview) {
    const std::string text(80, 'x');
    EXPECT_EQ(ClipboardItem::preview(text), text);
}

TEST(ClipboardItemPreviewTest, LeadingEmptyLinesAreSkippedAndIndentationStays) {
    EXPECT_EQ(ClipboardItem::preview("\n\n \t \n    let x = 1\nlet y = 2"), "    let x = 1");
}

TEST(ClipboardItemPreviewTest, AWhitespaceOnlyTextPreviewsAsTheWholeText) {
    EXPECT_EQ(ClipboardItem::preview("   \n"), "   \n");
}

TEST(ClipboardItemPreviewTest, AnEmojiOfSeveralCodePointsCountsAsOneCharacter) {
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // one cluster, 5 code points
    const std::string eighty = std::string(79, 'a') + family;
    EXPECT_EQ(ClipboardItem::preview(eighty), eighty);
    const std::string eightyOne = std::string(80, 'a') + family;
    EXPECT_EQ(ClipboardItem::preview(eightyOne), std::string(80, 'a') + "\u2026");
    EXPECT_EQ(ClipboardItem::preview(family + std::string(80, 'b')), family + std::string(79, 'b') + "\u2026");
}

TEST(ClipboardItemPreviewTest, CrLfAndUnicodeLineBreaksSplitLines) {
    EXPECT_EQ(ClipboardItem::preview("\r\nfirst\r\nsecond"), "first");
    EXPECT_EQ(ClipboardItem::preview("\u2028\u2029\u0085one\u2028two"), "one");
    EXPECT_EQ(ClipboardItem::preview("\xC2\xA0\n  x"), "  x");  // NBSP is a blank
}

TEST(ClipboardItemPreviewTest, TheFirstLineWithContentIsKeptUntrimmedAtItsEnd) {
    EXPECT_EQ(ClipboardItem::preview("  a  \nb"), "  a  ");
}

TEST(ClipboardItemPreviewTest, AHugeSingleLineTextPreviewsQuickly) {
    const std::string big(50u * 1024u * 1024u, 'z');
    EXPECT_EQ(ClipboardItem::preview(big), std::string(80, 'z') + "\u2026");
}

// --- Records ---------------------------------------------------------------------------------

TEST(ClipboardItemTest, MakeTextFillsEveryField) {
    const Uuid id = *Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    const ClipboardItem item = ClipboardItem::makeText("  hello\nworld", std::string("org.gnome.Terminal"), id, 12.5);
    EXPECT_EQ(item.id(), id);
    EXPECT_EQ(item.timestamp(), 12.5);
    ASSERT_TRUE(item.isText());
    EXPECT_EQ(*item.text(), "  hello\nworld");
    EXPECT_EQ(item.previewText(), "  hello");
    EXPECT_FALSE(item.isPinned());
    EXPECT_EQ(item.sourceBundleID(), "org.gnome.Terminal");
    EXPECT_FALSE(item.nonTextContentHash().has_value());
    EXPECT_EQ(item.dedupKey(), "hello\nworld");
}

TEST(ClipboardItemTest, IllFormedTextIsRepaired) {
    const ClipboardItem item = textItem("ab\xFF\xC0" "c");
    EXPECT_EQ(*item.text(), "ab\uFFFD\uFFFDc");
    EXPECT_EQ(item.previewText(), "ab\uFFFD\uFFFDc");
}

TEST(ClipboardItemTest, DedupKeyTrimsBlanksAndLineBreaksAtBothEnds) {
    EXPECT_EQ(textItem(" \t\r\n abc \u2029\u0085\u3000").dedupKey(), "abc");
    EXPECT_EQ(textItem("a b").dedupKey(), "a b");
    EXPECT_EQ(textItem("   ").dedupKey(), "");
}

TEST(ClipboardItemTest, NonTextRecordsPreviewWithEmojiAndNameAndHashTheirBytes) {
    UuidGenerator ids(1);
    const ClipboardItem item = ClipboardItem::makeNonText("\U0001F5BC\uFE0F", "image",
                                                          {{"public.png", "PNGDATA"}}, std::nullopt, ids.generate(), 1);
    EXPECT_FALSE(item.isText());
    EXPECT_EQ(item.text(), nullptr);
    EXPECT_EQ(item.previewText(), "\U0001F5BC\uFE0F image");
    ASSERT_TRUE(item.nonTextContentHash().has_value());
    EXPECT_EQ(item.nonTextContentHash()->size(), 64u);
    EXPECT_EQ(item.dedupKey(), "\U0001F5BC\uFE0Fimage#" + *item.nonTextContentHash());
    EXPECT_FALSE(item.toPersisted().has_value());
}

TEST(ClipboardItemTest, TheHashIsSha256OfNamesAndBytesInNameOrder) {
    // SHA-256("abc"), the standard test vector: "a" is the type's name, "bc" its bytes.
    EXPECT_EQ(ClipboardItem::hash({{"a", "bc"}}),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    // Names sort first: "x" then "y" gives the bytes "x1y2" whatever the order of insertion.
    PasteboardTypeData reversed;
    reversed.emplace("y", "2");
    reversed.emplace("x", "1");
    EXPECT_EQ(ClipboardItem::hash(reversed), ClipboardItem::hash({{"x1y", "2"}}));
    // SHA-256 of nothing.
    EXPECT_EQ(ClipboardItem::hash({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(ClipboardItemTest, PersistedRecordsGoBackAndForth) {
    const Uuid id = *Uuid::parse("00000000-0000-4000-8000-000000000001");
    PersistedClipboardItem record{id, 815616000.25, "\n  first\nsecond", true, std::string("org.kde.kate")};
    const ClipboardItem item(record);
    EXPECT_EQ(item.previewText(), "  first");
    EXPECT_TRUE(item.isPinned());
    EXPECT_FALSE(item.nonTextContentHash().has_value());
    EXPECT_EQ(item.toPersisted(), record);

    record.sourceBundleID.reset();
    record.isPinned = false;
    EXPECT_EQ(ClipboardItem(record).toPersisted(), record);
}

TEST(ClipboardItemTest, CopiesOfANonTextRecordShareTheirBytes) {
    UuidGenerator ids(1);
    const ClipboardItem item = ClipboardItem::makeNonText("x", "data", {{"t", std::string(1000, 'b')}}, std::nullopt,
                                                          ids.generate(), 1);
    const ClipboardItem copy = item;  // NOLINT: the copy is the point
    EXPECT_EQ(std::get<NonTextContent>(copy.kind()).types.get(), std::get<NonTextContent>(item.kind()).types.get());
}

// --- Identifiers and dates -------------------------------------------------------------------

TEST(UuidTest, PrintsUpperCaseCanonicalAndParsesEitherCase) {
    const auto id = Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
    ASSERT_TRUE(id.has_value());
    EXPECT_EQ(id->toString(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    EXPECT_EQ(Uuid::parse(id->toString()), id);
}

TEST(UuidTest, RejectsEverythingButTheCanonicalForm) {
    for (const char* bad : {"", "E621E1F8C36C495A93FC0C247A3E6E5F", "{E621E1F8-C36C-495A-93FC-0C247A3E6E5F}",
                            "E621E1F8-C36C-495A-93FC-0C247A3E6E5", "E621E1F8-C36C-495A-93FC-0C247A3E6E5FF",
                            "E621E1F8-C36C-495A-93FC_0C247A3E6E5F", "G621E1F8-C36C-495A-93FC-0C247A3E6E5F",
                            " E621E1F8-C36C-495A-93FC-0C247A3E6E5"}) {
        EXPECT_FALSE(Uuid::parse(bad).has_value()) << bad;
    }
}

TEST(UuidTest, GeneratedIdsAreVersion4AndASeedRepeatsTheSequence) {
    UuidGenerator a(42), b(42), system;
    for (int i = 0; i < 50; ++i) {
        const Uuid x = a.generate();
        EXPECT_EQ(x, b.generate());
        const std::string s = x.toString();
        EXPECT_EQ(s[14], '4');
        EXPECT_NE(std::string("89AB").find(s[19]), std::string::npos);
        const Uuid r = system.generate();
        EXPECT_EQ(r.toString()[14], '4');
        EXPECT_NE(r, x);
    }
    EXPECT_NE(system.generate(), system.generate());
}

TEST(ReferenceDateTest, CountsSecondsFrom2001) {
    using namespace std::chrono;
    const system_clock::time_point reference{seconds(978307200)};
    EXPECT_EQ(secondsSinceReferenceDate(reference), 0.0);
    EXPECT_EQ(secondsSinceReferenceDate(reference + milliseconds(1500)), 1.5);
    EXPECT_EQ(secondsSinceReferenceDate(reference - seconds(10)), -10.0);
    EXPECT_EQ(timeFromReferenceDate(1.5), reference + milliseconds(1500));
}

}  // namespace
}  // namespace orvantis
