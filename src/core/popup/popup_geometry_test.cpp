#include "core/popup/popup_geometry.h"

#include <gtest/gtest.h>

#include "core/popup/list_selection.h"

namespace orvantis {
namespace {

// A 1280 x 800 screen with a 28-pixel panel at the top.
const PopupRect kScreen{0, 28, 1280, 772};

TEST(ClampToScreenTest, InsideTheScreenTheOriginStands) {
    EXPECT_EQ(clampToScreen({100, 200}, {300, 38}, kScreen), (PopupPoint{100, 200}));
}

TEST(ClampToScreenTest, PastTheRightEdgeIsPulledLeftWithAMarginOf4) {
    EXPECT_EQ(clampToScreen({1100, 200}, {300, 38}, kScreen).x, 1280 - 300 - 4);
}

TEST(ClampToScreenTest, ExactlyAtTheRightEdgeStands) {
    EXPECT_EQ(clampToScreen({980, 200}, {300, 38}, kScreen).x, 980);
}

TEST(ClampToScreenTest, LeftOfTheLeftEdgeIsPushedRight) {
    EXPECT_EQ(clampToScreen({-20, 200}, {300, 38}, kScreen).x, 4);
}

TEST(ClampToScreenTest, WiderThanTheScreenEndsAtTheLeftEdge) {
    // The right-edge rule puts it at -24; the left-edge rule, applied after, wins.
    const PopupRect narrow{0, 0, 280, 800};
    EXPECT_EQ(clampToScreen({10, 10}, {300, 38}, narrow).x, 4);
}

TEST(ClampToScreenTest, PastTheBottomEdgeIsLiftedToStand4Above) {
    const PopupPoint p = clampToScreen({100, 780}, {300, 38}, kScreen);
    EXPECT_EQ(p.y, 800 - 38 - 4);
    EXPECT_EQ(p.y + 38, 796);
}

TEST(ClampToScreenTest, AboveTheTopEdgeIsLowered) { EXPECT_EQ(clampToScreen({100, 10}, {300, 38}, kScreen).y, 28 + 4); }

TEST(ClampToScreenTest, TallerThanTheScreenEndsAtTheTopEdge) {
    EXPECT_EQ(clampToScreen({100, 100}, {300, 900}, kScreen).y, 32);
}

TEST(ClampToScreenTest, WithoutAScreenTheOriginStands) {
    EXPECT_EQ(clampToScreen({5000, -300}, {300, 38}, std::nullopt), (PopupPoint{5000, -300}));
}

TEST(ClampToScreenTest, FollowsAScreenThatIsNotAtZero) {
    const PopupRect second{1280, 0, 1024, 768};
    EXPECT_EQ(clampToScreen({1200, 100}, {300, 38}, second).x, 1284);
    EXPECT_EQ(clampToScreen({2200, 100}, {300, 38}, second).x, 2304 - 304);
}

TEST(PlaceBelowPointerTest, HangsTheGapBelowThePointer) {
    EXPECT_EQ(placeBelowPointer({400, 300}, {300, 38}, 30, kScreen), (PopupRect{400, 330, 300, 38}));
}

TEST(PopupRectTest, EdgesAndContainment) {
    const PopupRect r{10, 20, 300, 38};
    EXPECT_EQ(r.right(), 310);
    EXPECT_EQ(r.bottom(), 58);
    EXPECT_TRUE(r.contains({10, 20}));
    EXPECT_TRUE(r.contains({309, 57}));
    EXPECT_FALSE(r.contains({310, 30}));
    EXPECT_FALSE(r.contains({100, 58}));
    EXPECT_FALSE(r.contains({9, 30}));
}

TEST(ListSelectionTest, StartsAtTheFirstRow) {
    ListSelection selection;
    selection.reset(3);
    EXPECT_EQ(selection.index(), 0u);
    EXPECT_EQ(selection.count(), 3u);
}

TEST(ListSelectionTest, MovesWithoutWrapping) {
    ListSelection selection;
    selection.reset(3);
    EXPECT_FALSE(selection.moveUp());
    EXPECT_EQ(selection.index(), 0u);
    EXPECT_TRUE(selection.moveDown());
    EXPECT_TRUE(selection.moveDown());
    EXPECT_FALSE(selection.moveDown());
    EXPECT_EQ(selection.index(), 2u);
    EXPECT_TRUE(selection.moveUp());
    EXPECT_EQ(selection.index(), 1u);
}

TEST(ListSelectionTest, AnEmptyListNeverMoves) {
    ListSelection selection;
    selection.reset(0);
    EXPECT_FALSE(selection.moveDown());
    EXPECT_FALSE(selection.moveUp());
    EXPECT_FALSE(selection.select(0));
    EXPECT_EQ(selection.index(), 0u);
}

TEST(ListSelectionTest, SelectIgnoresIndicesOutOfRange) {
    ListSelection selection;
    selection.reset(3);
    EXPECT_TRUE(selection.select(2));
    EXPECT_FALSE(selection.select(3));
    EXPECT_EQ(selection.index(), 2u);
    selection.reset(5);
    EXPECT_EQ(selection.index(), 0u);
}

}  // namespace
}  // namespace orvantis
