#include "platform/sim/pasteboard.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/sim/virtual_main_loop.h"

namespace orvantis::sim {
namespace {

using platform::PasteboardItem;
namespace type = platform::pasteboard_type;

TEST(PasteboardTest, StartsEmpty) {
    Pasteboard pasteboard(41);
    EXPECT_EQ(pasteboard.changeCount(), 41);
    EXPECT_TRUE(pasteboard.types().empty());
    EXPECT_EQ(pasteboard.text(), std::nullopt);
    EXPECT_FALSE(pasteboard.content().has_value());
}

TEST(PasteboardTest, EveryWriteRaisesTheChangeCountEvenWithTheSameContent) {
    Pasteboard pasteboard;
    pasteboard.write(PasteboardItem::text("x"));
    EXPECT_EQ(pasteboard.changeCount(), 1);
    pasteboard.write(PasteboardItem::text("x"));
    EXPECT_EQ(pasteboard.changeCount(), 2);
    pasteboard.writeTextFromOtherApp("x");
    EXPECT_EQ(pasteboard.changeCount(), 3);
}

TEST(PasteboardTest, TypesAndDataFollowTheItemsOwnOrder) {
    Pasteboard pasteboard;
    platform::Pasteboard& asPlatform = pasteboard;
    asPlatform.write(PasteboardItem{{{std::string(type::kText), "secret"}, {std::string(type::kConcealed), "\x01"}}});
    EXPECT_EQ(asPlatform.types(), (std::vector<std::string>{std::string(type::kText), std::string(type::kConcealed)}));
    EXPECT_EQ(asPlatform.text(), "secret");
    EXPECT_EQ(asPlatform.data(type::kConcealed), "\x01");
    EXPECT_EQ(asPlatform.data("public.png"), std::nullopt);
}

TEST(PasteboardTest, AWriteReplacesTheWholeContent) {
    Pasteboard pasteboard;
    pasteboard.write(PasteboardItem{{{"public.png", "PNG"}, {std::string(type::kText), "a"}}});
    pasteboard.writeTextFromOtherApp("b");
    EXPECT_EQ(pasteboard.types(), (std::vector<std::string>{std::string(type::kText)}));
    EXPECT_EQ(pasteboard.data("public.png"), std::nullopt);
}

TEST(PasteboardTest, WritesRecordTheWriter) {
    Pasteboard pasteboard;
    pasteboard.writeTextFromOtherApp("copied", "org.example.browser");
    pasteboard.write(PasteboardItem::text("ours"));
    pasteboard.writeFromOtherApp(PasteboardItem::text("nameless"), "");
    ASSERT_EQ(pasteboard.writes().size(), 3u);
    EXPECT_EQ(pasteboard.writes()[0].application, "org.example.browser");
    EXPECT_FALSE(pasteboard.writes()[0].byProgram());
    EXPECT_TRUE(pasteboard.writes()[1].byProgram());
    EXPECT_EQ(pasteboard.writes()[1].item.data(type::kText), "ours");
    EXPECT_FALSE(pasteboard.writes()[2].byProgram());
    EXPECT_EQ(pasteboard.programWriteCount(), 1u);
}

TEST(PasteboardTest, ClearEmptiesAndCountsAsAChange) {
    Pasteboard pasteboard;
    pasteboard.writeTextFromOtherApp("x");
    pasteboard.clear();
    EXPECT_EQ(pasteboard.changeCount(), 2);
    EXPECT_TRUE(pasteboard.types().empty());
    EXPECT_EQ(pasteboard.text(), std::nullopt);
    EXPECT_EQ(pasteboard.writes().size(), 1u);
}

}  // namespace
}  // namespace orvantis::sim

namespace orvantis::sim {
namespace {

TEST(PasteboardNoticeTest, ReportsEveryChangeInALaterTurnOnlyWhenSwitchedOn) {
    VirtualMainLoop loop;
    Pasteboard pasteboard;
    int notices = 0;
    const Subscription subscription = pasteboard.onChange([&notices] { ++notices; });
    EXPECT_FALSE(pasteboard.reportsChanges());
    pasteboard.writeTextFromOtherApp("unreported");
    loop.runUntilIdle();
    EXPECT_EQ(notices, 0);

    pasteboard.reportChangesOn(&loop);
    EXPECT_TRUE(pasteboard.reportsChanges());
    pasteboard.writeTextFromOtherApp("reported");
    EXPECT_EQ(notices, 0);  // not from within the write
    loop.runUntilIdle();
    EXPECT_EQ(notices, 1);
    pasteboard.clear();
    loop.runUntilIdle();
    EXPECT_EQ(notices, 2);
    // The program's own writes are told of too, in a later turn.
    pasteboard.write(platform::PasteboardItem::text("ours"));
    EXPECT_EQ(notices, 2);
    loop.runUntilIdle();
    EXPECT_EQ(notices, 3);
}

}  // namespace
}  // namespace orvantis::sim
