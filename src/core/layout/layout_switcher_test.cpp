#include "core/layout/layout_switcher.h"

#include <gtest/gtest.h>

#include "platform/sim/input_sources.h"

namespace orvantis {
namespace {

using platform::InputSourceDescriptor;

const InputSourceDescriptor kUs{"us", "English (US)", {"en"}};
const InputSourceDescriptor kRu{"ru", "Russian", {"ru"}};
const InputSourceDescriptor kDe{"de", "German", {"de"}};

class LayoutSwitcherTest : public ::testing::Test {
protected:
    void add(const InputSourceDescriptor& d) { sources_.add(d, platform::KeyLayout{}); }

    sim::InputSources sources_;
    LayoutSwitcher switcher_{sources_};
};

TEST(InputSourceDescriptorTest, EqualWhenIdentifierAndNameAreEqual) {
    EXPECT_EQ(kUs, (InputSourceDescriptor{"us", "English (US)", {"eng"}}));
    EXPECT_NE(kUs, (InputSourceDescriptor{"us", "English", {"en"}}));
    EXPECT_NE(kUs, (InputSourceDescriptor{"us2", "English (US)", {"en"}}));
}

TEST_F(LayoutSwitcherTest, CurrentSource) {
    EXPECT_EQ(switcher_.currentSource(), std::nullopt);
    add(kUs);
    add(kRu);
    EXPECT_EQ(switcher_.currentSource(), kUs);
    sources_.setCurrent(std::nullopt);
    EXPECT_EQ(switcher_.currentSource(), std::nullopt);
}

TEST_F(LayoutSwitcherTest, OneSourceHasNoOpposite) {
    add(kUs);
    EXPECT_EQ(switcher_.oppositeSource(kUs), std::nullopt);
    EXPECT_EQ(switcher_.oppositeSource(kRu), std::nullopt);
}

TEST_F(LayoutSwitcherTest, NoSourcesHaveNoOpposite) {
    EXPECT_EQ(switcher_.oppositeSource(kUs), std::nullopt);
    add(kUs);
    add(kRu);
    sources_.setListAvailable(false);
    EXPECT_TRUE(switcher_.enabledSources().empty());
    EXPECT_EQ(switcher_.oppositeSource(kUs), std::nullopt);
}

TEST_F(LayoutSwitcherTest, TwoSourcesRotate) {
    add(kUs);
    add(kRu);
    EXPECT_EQ(switcher_.oppositeSource(kUs), kRu);
    EXPECT_EQ(switcher_.oppositeSource(kRu), kUs);
}

TEST_F(LayoutSwitcherTest, ThreeSourcesCycleWhateverTheLanguage) {
    add(kUs);
    add(kRu);
    add(kDe);
    EXPECT_EQ(switcher_.oppositeSource(kUs), kRu);
    EXPECT_EQ(switcher_.oppositeSource(kRu), kDe);
    EXPECT_EQ(switcher_.oppositeSource(kDe), kUs);
}

TEST_F(LayoutSwitcherTest, CurrentNotListedGivesTheFirstSource) {
    add(kRu);
    add(kUs);
    EXPECT_EQ(switcher_.oppositeSource(kDe), kRu);
}

TEST_F(LayoutSwitcherTest, ARenamedSourceCountsAsNotListed) {
    add(kUs);
    add(kRu);
    add(kDe);
    // "ru" under its old name is not in the list: the first source unlike it is returned.
    const InputSourceDescriptor oldRu{"ru", "Russian (old)", {"ru"}};
    EXPECT_EQ(switcher_.oppositeSource(oldRu), kUs);
    const InputSourceDescriptor oldUs{"us", "US", {"en"}};
    EXPECT_EQ(switcher_.oppositeSource(oldUs), kUs);
}

TEST_F(LayoutSwitcherTest, SelectMakesTheSourceCurrent) {
    add(kUs);
    add(kRu);
    switcher_.select(kRu);
    EXPECT_EQ(switcher_.currentSource(), kRu);
    EXPECT_EQ(sources_.selections(), std::vector<std::string>{"ru"});
}

TEST_F(LayoutSwitcherTest, SelectComparesTheIdentifierOnly) {
    add(kUs);
    add(kRu);
    switcher_.select({"ru", "Another name", {}});
    EXPECT_EQ(switcher_.currentSource(), kRu);
}

TEST_F(LayoutSwitcherTest, SelectWithAnUnknownIdentifierChangesNothing) {
    add(kUs);
    add(kRu);
    switcher_.select(kDe);
    EXPECT_EQ(switcher_.currentSource(), kUs);
    EXPECT_EQ(sources_.selectCalls(), 0);
}

TEST_F(LayoutSwitcherTest, SelectWithoutAListDoesNothing) {
    add(kUs);
    add(kRu);
    sources_.setListAvailable(false);
    switcher_.select(kRu);
    sources_.setListAvailable(true);
    EXPECT_EQ(switcher_.currentSource(), kUs);
}

TEST_F(LayoutSwitcherTest, ARefusedSelectionIsSilent) {
    add(kUs);
    add(kRu);
    sources_.setRefuseSelection(true);
    switcher_.select(kRu);
    EXPECT_EQ(sources_.selectCalls(), 1);
    EXPECT_EQ(switcher_.currentSource(), kUs);
}

TEST_F(LayoutSwitcherTest, ASourceWithoutNameIsLeftOut) {
    add(kUs);
    add({"anon", "", {"fr"}});
    add(kRu);
    const auto listed = switcher_.enabledSources();
    EXPECT_EQ(listed, (std::vector<InputSourceDescriptor>{kUs, kRu}));
    EXPECT_EQ(switcher_.oppositeSource(kUs), kRu);
    switcher_.select({"anon", "", {}});
    EXPECT_EQ(sources_.selectCalls(), 0);
    EXPECT_EQ(switcher_.currentSource(), kUs);
    // As the current source it can't be named either.
    sources_.setCurrent("anon");
    EXPECT_EQ(switcher_.currentSource(), std::nullopt);
}

TEST_F(LayoutSwitcherTest, ASourceWithoutIdentifierIsLeftOut) {
    add({"", "Nameless", {}});
    add(kUs);
    EXPECT_EQ(switcher_.enabledSources(), std::vector<InputSourceDescriptor>{kUs});
    EXPECT_EQ(switcher_.oppositeSource(kUs), std::nullopt);
}

TEST_F(LayoutSwitcherTest, SelectSkipsAnUnnamedDuplicateAndTakesTheNamedOne) {
    add(kUs);
    add({"ru", "", {}});
    add(kRu);
    switcher_.select(kRu);
    ASSERT_EQ(sources_.selectCalls(), 1);
    EXPECT_EQ(sources_.selections(), std::vector<std::string>{"ru"});
}

TEST_F(LayoutSwitcherTest, UsableThroughTheProtocol) {
    add(kUs);
    add(kRu);
    LayoutSwitcherProtocol& protocol = switcher_;
    const auto current = protocol.currentSource();
    ASSERT_TRUE(current);
    const auto opposite = protocol.oppositeSource(*current);
    ASSERT_TRUE(opposite);
    protocol.select(*opposite);
    EXPECT_EQ(protocol.currentSource(), kRu);
    protocol.select(*protocol.oppositeSource(*protocol.currentSource()));
    EXPECT_EQ(protocol.currentSource(), kUs);
}

}  // namespace
}  // namespace orvantis
