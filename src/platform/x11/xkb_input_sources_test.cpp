#include "platform/x11/xkb_input_sources.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace orvantis::x11 {
namespace {

using namespace std::string_literals;

TEST(XkbRulesNamesTest, ReadsLayoutsAndVariantsPerGroup) {
    const auto names = parseXkbRulesNames("evdev\0pc105\0us,ru,ru\0,,phonetic\0grp:alt_shift_toggle\0"s);
    ASSERT_TRUE(names.has_value());
    EXPECT_EQ(names->rules, "evdev");
    EXPECT_EQ(names->model, "pc105");
    EXPECT_EQ(names->layouts, (std::vector<std::string>{"us", "ru", "ru"}));
    EXPECT_EQ(names->variants, (std::vector<std::string>{"", "", "phonetic"}));
    EXPECT_EQ(names->options, "grp:alt_shift_toggle");
}

TEST(XkbRulesNamesTest, MissingFieldsAndLayoutsAreSafe) {
    EXPECT_FALSE(parseXkbRulesNames(""s).has_value());
    EXPECT_FALSE(parseXkbRulesNames("evdev\0pc105\0"s).has_value());
    const auto oneLayout = parseXkbRulesNames("evdev\0pc105\0de"s);
    ASSERT_TRUE(oneLayout.has_value());
    EXPECT_EQ(oneLayout->layouts, (std::vector<std::string>{"de"}));
    EXPECT_EQ(oneLayout->variants, (std::vector<std::string>{""}));
}

TEST(XkbSourceIdTest, RoundTrips) {
    EXPECT_EQ(xkbSourceID("us", ""), "xkb:us");
    EXPECT_EQ(xkbSourceID("ru", "phonetic"), "xkb:ru(phonetic)");
    EXPECT_EQ(parseXkbSourceID("xkb:ru(phonetic)"), std::make_pair("ru"s, "phonetic"s));
    EXPECT_EQ(parseXkbSourceID("xkb:us"), std::make_pair("us"s, ""s));
    EXPECT_FALSE(parseXkbSourceID("us").has_value());
    EXPECT_FALSE(parseXkbSourceID("xkb:").has_value());
    EXPECT_FALSE(parseXkbSourceID("xkb:(x)").has_value());
    EXPECT_FALSE(parseXkbSourceID("xkb:ru(phonetic").has_value());
}

TEST(XkbInputSourcesTest, NoDisplayGivesNoSources) {
    EXPECT_EQ(XkbInputSources::open(":9999"), nullptr);
}

// Needs the session of the virtual desktop (setxkbmap -layout us,ru); runs in the end-to-end
// desktop probes and skips elsewhere.
TEST(XkbInputSourcesTest, LiveSessionListsNamesAndSelectsGroups) {
    auto sources = XkbInputSources::open();
    if (!sources) GTEST_SKIP() << "no X display";
    const auto list = sources->enabledSources();
    ASSERT_GE(list.size(), 2u);
    if (list[0].sourceID != "xkb:us" || list[1].sourceID != "xkb:ru") GTEST_SKIP() << "not a us,ru session";
    EXPECT_EQ(list[0].localizedName, "English (US)");
    EXPECT_EQ(list[0].languages.front(), "en");
    EXPECT_EQ(list[1].localizedName, "Russian");
    EXPECT_EQ(list[1].languages.front(), "ru");

    ASSERT_TRUE(sources->select("xkb:ru"));
    ASSERT_TRUE(sources->currentSource().has_value());
    EXPECT_EQ(sources->currentSource()->sourceID, "xkb:ru");
    ASSERT_TRUE(sources->select("xkb:us"));
    EXPECT_EQ(sources->currentSource()->sourceID, "xkb:us");
    EXPECT_FALSE(sources->select("xkb:de"));
    EXPECT_EQ(sources->currentSource()->sourceID, "xkb:us");

    const auto russian = sources->keyLayout("xkb:ru");
    ASSERT_TRUE(russian.has_value());
    EXPECT_EQ(russian->at(5).unshifted, "п");  // the key of g
    EXPECT_FALSE(sources->keyLayout("not-xkb").has_value());
}

}  // namespace
}  // namespace orvantis::x11
