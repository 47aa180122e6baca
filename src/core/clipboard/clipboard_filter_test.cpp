#include "core/clipboard/clipboard_filter.h"

#include <gtest/gtest.h>

#include <string>

#include "core/clipboard/uuid.h"

namespace orvantis {
namespace {

class ClipboardFilterTest : public ::testing::Test {
protected:
    ClipboardItem text(std::string t) { return ClipboardItem::makeText(std::move(t), std::nullopt, ids_.generate(), 1); }
    std::vector<std::string> previews(const std::vector<ClipboardItem>& items) {
        std::vector<std::string> out;
        for (const auto& item : items) out.push_back(item.previewText());
        return out;
    }
    UuidGenerator ids_{7};
};

TEST_F(ClipboardFilterTest, AnEmptyOrBlankSearchKeepsEverything) {
    const std::vector<ClipboardItem> items{text("one"), text("two")};
    EXPECT_EQ(filterClipboardItems(items, "").size(), 2u);
    EXPECT_EQ(filterClipboardItems(items, " \t ").size(), 2u);
}

TEST_F(ClipboardFilterTest, MatchesThePreviewWhateverTheCaseAndKeepsTheOrder) {
    const std::vector<ClipboardItem> items{text("Hello World"), text("other"), text("HELLO again")};
    EXPECT_EQ(previews(filterClipboardItems(items, " hello\t")), (std::vector<std::string>{"Hello World", "HELLO again"}));
    EXPECT_EQ(previews(filterClipboardItems(items, "ПРИВЕТ")), std::vector<std::string>{});
    const std::vector<ClipboardItem> cyrillic{text("Привет, мир")};
    EXPECT_EQ(filterClipboardItems(cyrillic, "ПРИВЕТ").size(), 1u);
}

TEST_F(ClipboardFilterTest, ReachesBeyondThePreviewLineOfAText) {
    const std::vector<ClipboardItem> items{text("first line\nsecond line with needle")};
    ASSERT_EQ(items[0].previewText().find("needle"), std::string::npos);
    EXPECT_EQ(filterClipboardItems(items, "needle").size(), 1u);
}

TEST_F(ClipboardFilterTest, OtherItemsMatchOnTheirPreviewAlone) {
    const std::vector<ClipboardItem> items{
        ClipboardItem::makeNonText("📄", "report.pdf", {{"public.file-url", "file:///tmp/report.pdf"}}, std::nullopt,
                                   ids_.generate(), 1)};
    EXPECT_EQ(filterClipboardItems(items, "REPORT").size(), 1u);
    EXPECT_EQ(filterClipboardItems(items, "tmp").size(), 0u);
}

}  // namespace
}  // namespace orvantis
