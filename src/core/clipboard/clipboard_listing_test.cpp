#include "core/clipboard/clipboard_listing.h"

#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include "core/clipboard/clipboard_history.h"
#include "core/clipboard/uuid.h"

namespace orvantis {
namespace {

class ClipboardListingTest : public ::testing::Test {
protected:
    ClipboardItem text(std::string t, std::optional<std::string> source = std::nullopt) {
        return ClipboardItem::makeText(std::move(t), std::move(source), ids_.generate(), 1);
    }
    ClipboardItem image() {
        return ClipboardItem::makeNonText("\U0001F5BC\uFE0F", "Image", {{"image/png", "\x89PNG"}}, "org.gimp.GIMP",
                                          ids_.generate(), 2);
    }
    UuidGenerator ids_{11};
};

TEST_F(ClipboardListingTest, KeepsTheHistoryOrderPinnedFirst) {
    ClipboardHistory history(10);
    history.add(text("older"));
    history.add(text("pin me"));
    history.add(text("newest"));
    history.togglePin(history.unpinned()[1].id());
    const auto entries = clipboardListing(history.items());
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].preview, "pin me");
    EXPECT_TRUE(entries[0].isPinned);
    EXPECT_EQ(entries[1].preview, "newest");
    EXPECT_EQ(entries[2].preview, "older");
    EXPECT_EQ(entries[2].id, history.unpinned()[1].id().toString());
}

TEST_F(ClipboardListingTest, JsonHasTheKeysInOrderAndTextOnlyForTexts) {
    const std::vector<ClipboardItem> items{text("first line\nsecond", "org.gnome.Terminal"), image()};
    const std::string json = encodeClipboardListing(clipboardListing(items));
    const std::string id0 = items[0].id().toString();
    const std::string id1 = items[1].id().toString();
    EXPECT_EQ(json, "[{\"id\":\"" + id0 +
                        "\",\"preview\":\"first line\",\"isPinned\":false,\"isText\":true,"
                        "\"text\":\"first line\\nsecond\",\"sourceBundleID\":\"org.gnome.Terminal\"},"
                        "{\"id\":\"" + id1 +
                        "\",\"preview\":\"\U0001F5BC\uFE0F Image\",\"isPinned\":false,\"isText\":false,"
                        "\"sourceBundleID\":\"org.gimp.GIMP\"}]");
    EXPECT_EQ(id0, nlohmann::json::parse(json)[0]["id"].get<std::string>());
}

TEST_F(ClipboardListingTest, AnUnknownSourceIsLeftOut) {
    const std::string json = encodeClipboardListing(clipboardListing({text("x")}));
    EXPECT_EQ(json.find("sourceBundleID"), std::string::npos);
}

TEST_F(ClipboardListingTest, AnEmptyHistoryIsAnEmptyArray) {
    EXPECT_EQ(encodeClipboardListing({}), "[]");
    EXPECT_EQ(formatClipboardListing({}), "");
}

TEST_F(ClipboardListingTest, DecodingGivesBackWhatWasEncoded) {
    const auto entries = clipboardListing({text("Привет\tмир", "a.b"), image(), text("   ")});
    const auto decoded = decodeClipboardListing(encodeClipboardListing(entries));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, entries);
}

TEST_F(ClipboardListingTest, DecodingRejectsWhatIsNoListing) {
    std::string error;
    EXPECT_FALSE(decodeClipboardListing("{", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(decodeClipboardListing("{}", &error));
    EXPECT_FALSE(decodeClipboardListing(R"([{"id":"X","preview":"p","isPinned":1,"isText":true}])", &error));
    EXPECT_NE(error.find("isPinned"), std::string::npos);
}

TEST_F(ClipboardListingTest, PlainLinesNumberFromOneAndMarkPinnedEntries) {
    ClipboardHistory history(10);
    history.add(text("b"));
    history.add(text("a"));
    history.togglePin(history.unpinned()[1].id());
    EXPECT_EQ(formatClipboardListing(clipboardListing(history.items())), "1\t*\tb\n2\t-\ta\n");
}

TEST_F(ClipboardListingTest, APreviewNeverBreaksItsLine) {
    // A text of blanks and line breaks is its own preview.
    const std::vector<ClipboardItem> items{text(" \n\t \r\n "), text("tab\there"), text(" \u2028 ")};
    EXPECT_EQ(formatClipboardListing(clipboardListing(items)), "1\t-\t       \n2\t-\ttab here\n3\t-\t   \n");
}

TEST_F(ClipboardListingTest, ControlCharactersBecomeBlanksButOtherTextStays) {
    ClipboardListingEntry entry;
    entry.preview = "a\u0085b\x7f" "c Ёж \U0001F600";
    EXPECT_EQ(formatClipboardListing({entry}), "1\t-\ta b c Ёж \U0001F600\n");
}

}  // namespace
}  // namespace orvantis
