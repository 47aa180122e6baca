#include "core/clipboard/clipboard_history.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvantis {
namespace {

/// Makes text records with fresh ids and rising timestamps, and counts observer calls.
class ClipboardHistoryTest : public ::testing::Test {
protected:
    ClipboardItem make(std::string text) {
        return ClipboardItem::makeText(std::move(text), std::nullopt, ids_.generate(), now_ += 1);
    }
    void observe(ClipboardHistory& history) {
        subscription_ = history.onChange([this] { ++changes_; });
    }
    static std::vector<std::string> texts(const std::vector<ClipboardItem>& items) {
        std::vector<std::string> out;
        for (const auto& item : items) out.push_back(item.text() != nullptr ? *item.text() : item.previewText());
        return out;
    }
    using Texts = std::vector<std::string>;

    UuidGenerator ids_{3};
    double now_ = 800000000;
    int changes_ = 0;
    Subscription subscription_;
};

TEST_F(ClipboardHistoryTest, StartsEmptyWithAClampedSize) {
    ClipboardHistory history(20);
    EXPECT_TRUE(history.isEmpty());
    EXPECT_EQ(history.count(), 0u);
    EXPECT_EQ(history.maxSize(), 20);
    EXPECT_EQ(ClipboardHistory(0).maxSize(), 1);
    EXPECT_EQ(ClipboardHistory(-5).maxSize(), 1);
    EXPECT_EQ(ClipboardHistory(201).maxSize(), 200);
}

TEST_F(ClipboardHistoryTest, AddPutsNewEntriesOnTopAndEvictsTheOldest) {
    ClipboardHistory history(2);
    observe(history);
    history.add(make("a"));
    history.add(make("b"));
    history.add(make("c"));
    EXPECT_EQ(texts(history.unpinned()), (Texts{"c", "b"}));
    EXPECT_EQ(changes_, 3);
    EXPECT_EQ(history.count(), 2u);
}

TEST_F(ClipboardHistoryTest, TheSameContentOnTopWithOtherSpacingChangesNothing) {
    ClipboardHistory history(20);
    observe(history);
    history.add(make("abc"));
    const Uuid firstId = history.unpinned()[0].id();
    const double firstTime = history.unpinned()[0].timestamp();
    history.add(make(" abc\n"));
    ASSERT_EQ(history.count(), 1u);
    EXPECT_EQ(*history.unpinned()[0].text(), "abc");
    EXPECT_EQ(history.unpinned()[0].id(), firstId);
    EXPECT_EQ(history.unpinned()[0].timestamp(), firstTime);
    EXPECT_EQ(changes_, 1);
}

TEST_F(ClipboardHistoryTest, ADuplicateFurtherDownMovesToTheTopWithItsNewSpacing) {
    ClipboardHistory history(20);
    history.add(make("B"));
    history.add(make("A"));
    history.add(make(" B "));
    EXPECT_EQ(texts(history.unpinned()), (Texts{" B ", "A"}));
}

TEST_F(ClipboardHistoryTest, WithAPinnedEntryOnTopAnUnpinnedDuplicateIsReplacedInPlace) {
    ClipboardHistory history(20);
    history.add(make("A"));
    history.togglePin(history.unpinned()[0].id());
    history.add(make("B"));
    const Uuid oldId = history.unpinned()[0].id();
    const double oldTime = history.unpinned()[0].timestamp();
    history.add(make("B"));
    ASSERT_EQ(history.unpinned().size(), 1u);
    EXPECT_EQ(texts(history.items()), (Texts{"A", "B"}));
    EXPECT_NE(history.unpinned()[0].id(), oldId);
    EXPECT_GT(history.unpinned()[0].timestamp(), oldTime);
}

TEST_F(ClipboardHistoryTest, APinnedContentCopiedAgainRisesToTheTopOfThePinnedList) {
    ClipboardHistory history(20);
    observe(history);
    history.add(make("A"));
    history.togglePin(history.unpinned()[0].id());
    changes_ = 0;
    history.add(make("A"));  // A is the first of items: nothing happens
    EXPECT_EQ(changes_, 0);
    ASSERT_EQ(history.pinned().size(), 1u);

    history.add(make("C"));
    history.togglePin(history.unpinned()[0].id());  // pinned: C, A
    ASSERT_EQ(texts(history.pinned()), (Texts{"C", "A"}));
    history.add(make("A"));
    EXPECT_EQ(texts(history.pinned()), (Texts{"A", "C"}));
    EXPECT_TRUE(history.pinned()[0].isPinned());
    EXPECT_TRUE(history.unpinned().empty());
}

TEST_F(ClipboardHistoryTest, PinnedEntriesDontCountAgainstTheLimit) {
    ClipboardHistory history(1);
    history.add(make("one"));
    history.togglePin(history.unpinned()[0].id());
    history.add(make("two"));
    history.add(make("three"));
    EXPECT_EQ(texts(history.pinned()), (Texts{"one"}));
    EXPECT_EQ(texts(history.unpinned()), (Texts{"three"}));

    history.togglePin(history.pinned()[0].id());
    EXPECT_TRUE(history.pinned().empty());
    EXPECT_EQ(texts(history.unpinned()), (Texts{"one"}));
    EXPECT_FALSE(history.unpinned()[0].isPinned());
}

TEST_F(ClipboardHistoryTest, ResizeClampsEvictsAndTells) {
    ClipboardHistory history(20);
    observe(history);
    for (const char* t : {"a", "b", "c"}) history.add(make(t));
    changes_ = 0;
    history.resize(0);
    EXPECT_EQ(history.maxSize(), 1);
    EXPECT_EQ(texts(history.unpinned()), (Texts{"c"}));
    history.resize(5000);
    EXPECT_EQ(history.maxSize(), 200);
    EXPECT_EQ(changes_, 2);
}

TEST_F(ClipboardHistoryTest, RestoreKeepsTheFirstMaxSizeEntriesAndTellsNobody) {
    ClipboardHistory history(20);
    observe(history);
    std::vector<ClipboardItem> unpinned;
    for (int i = 0; i < 300; ++i) unpinned.push_back(make("entry " + std::to_string(i)));
    std::vector<ClipboardItem> pinned{make("pinned")};
    history.restore(std::move(pinned), std::move(unpinned));
    ASSERT_EQ(history.unpinned().size(), 20u);
    EXPECT_EQ(*history.unpinned()[0].text(), "entry 0");
    EXPECT_EQ(*history.unpinned()[19].text(), "entry 19");
    EXPECT_EQ(history.pinned().size(), 1u);
    EXPECT_FALSE(history.pinned()[0].isPinned());  // the flag stays as given
    EXPECT_EQ(changes_, 0);
}

TEST_F(ClipboardHistoryTest, ClearEmptiesBothListsAndTells) {
    ClipboardHistory history(20);
    history.add(make("a"));
    history.togglePin(history.unpinned()[0].id());
    history.add(make("b"));
    observe(history);
    history.clear();
    EXPECT_TRUE(history.isEmpty());
    EXPECT_EQ(changes_, 1);
}

TEST_F(ClipboardHistoryTest, RemoveDropsEveryEntryWithTheIdAndAlwaysTells) {
    ClipboardHistory history(20);
    history.add(make("a"));
    history.add(make("b"));
    observe(history);
    history.remove(history.unpinned()[1].id());
    EXPECT_EQ(texts(history.unpinned()), (Texts{"b"}));
    history.remove(ids_.generate());
    EXPECT_EQ(history.count(), 1u);
    EXPECT_EQ(changes_, 2);
}

TEST_F(ClipboardHistoryTest, TogglePinMovesAnOldEntryToTheFrontAndEvicts) {
    ClipboardHistory history(2);
    history.add(make("a"));
    history.add(make("b"));
    const Uuid a = history.unpinned()[1].id();
    history.togglePin(a);
    EXPECT_EQ(texts(history.pinned()), (Texts{"a"}));
    EXPECT_TRUE(history.pinned()[0].isPinned());
    history.add(make("c"));
    history.add(make("d"));  // unpinned: d, c
    history.togglePin(a);    // a back in front; c, the oldest other, goes
    EXPECT_EQ(texts(history.unpinned()), (Texts{"a", "d"}));
    EXPECT_EQ(history.unpinned()[0].id(), a);
}

TEST_F(ClipboardHistoryTest, TogglePinOfAnUnknownIdOnlyTells) {
    ClipboardHistory history(20);
    history.add(make("a"));
    observe(history);
    history.togglePin(ids_.generate());
    EXPECT_EQ(texts(history.unpinned()), (Texts{"a"}));
    EXPECT_EQ(changes_, 1);
}

TEST_F(ClipboardHistoryTest, ARestoredPinnedEntryWithoutItsFlagDoesNotKeepADuplicatePinned) {
    // The pinned list decides the place; the flag decides whether a new copy stays pinned.
    ClipboardHistory history(20);
    ClipboardItem unflagged = make("x");
    history.restore({make("y"), std::move(unflagged)}, {});
    history.add(make("x"));
    EXPECT_EQ(texts(history.pinned()), (Texts{"y"}));
    EXPECT_EQ(texts(history.unpinned()), (Texts{"x"}));
}

TEST_F(ClipboardHistoryTest, NonTextEntriesAreDuplicatesOnlyWithTheSameBytes) {
    ClipboardHistory history(20);
    auto image = [&](std::string bytes) {
        return ClipboardItem::makeNonText("i", "image", {{"public.png", std::move(bytes)}}, std::nullopt, ids_.generate(), 1);
    };
    history.add(image("one"));
    history.add(image("two"));
    history.add(image("one"));
    EXPECT_EQ(history.unpinned().size(), 2u);
    history.add(make("i"));
    history.add(image("two"));
    EXPECT_EQ(history.unpinned().size(), 3u);
}

}  // namespace
}  // namespace orvantis
