#include "platform/sim/input_sources.h"

#include <set>

#include <gtest/gtest.h>

#include "platform/x11/key_positions.h"

namespace orvantis::sim {
namespace {

using platform::KeyCharacters;

TEST(KeyPositionsTest, TableIsOneToOne) {
    std::set<std::uint32_t> x;
    std::set<std::uint16_t> v;
    for (const auto& key : x11::kKeyPositions) {
        x.insert(key.xKeycode);
        v.insert(key.virtualKey);
    }
    EXPECT_EQ(x.size(), x11::kKeyPositions.size());
    EXPECT_EQ(v.size(), x11::kKeyPositions.size());
}

TEST(KeyPositionsTest, KnownKeys) {
    EXPECT_EQ(x11::virtualKeyForXKeycode(38), 0);   // <AC01> A
    EXPECT_EQ(x11::virtualKeyForXKeycode(43), 4);   // <AC06> H
    EXPECT_EQ(x11::virtualKeyForXKeycode(42), 5);   // <AC05> G
    EXPECT_EQ(x11::virtualKeyForXKeycode(24), 12);  // <AD01> Q
    EXPECT_EQ(x11::virtualKeyForXKeycode(21), 24);  // <AE12> =
    EXPECT_EQ(x11::virtualKeyForXKeycode(49), 50);  // <TLDE> `
    EXPECT_EQ(x11::virtualKeyForXKeycode(65), 49);  // <SPCE>
    EXPECT_EQ(x11::virtualKeyForXKeycode(22), 51);  // <BKSP>
    EXPECT_EQ(x11::virtualKeyForXKeycode(9), 53);   // <ESC>
    EXPECT_EQ(x11::virtualKeyForXKeycode(94), std::nullopt);  // <LSGT>, not covered
    EXPECT_EQ(x11::xKeycodeForVirtualKey(44), 61u);           // / is <AB10>
    EXPECT_EQ(x11::xKeycodeForVirtualKey(10), std::nullopt);
}

TEST(XkbKeyLayoutTest, UsLayout) {
    const auto us = InputSources::xkbKeyLayout("us");
    ASSERT_TRUE(us);
    EXPECT_EQ(us->at(0), (KeyCharacters{"a", "A"}));
    EXPECT_EQ(us->at(12), (KeyCharacters{"q", "Q"}));
    EXPECT_EQ(us->at(26), (KeyCharacters{"7", "&"}));
    EXPECT_EQ(us->at(44), (KeyCharacters{"/", "?"}));
    EXPECT_EQ(us->at(50), (KeyCharacters{"`", "~"}));
    EXPECT_EQ(us->at(49), (KeyCharacters{" ", " "}));
    EXPECT_EQ(us->at(36).unshifted, "\r");
}

TEST(XkbKeyLayoutTest, RussianLayouts) {
    const auto ru = InputSources::xkbKeyLayout("ru");
    ASSERT_TRUE(ru);
    EXPECT_EQ(ru->at(0), (KeyCharacters{"ф", "Ф"}));
    EXPECT_EQ(ru->at(26), (KeyCharacters{"7", "?"}));
    EXPECT_EQ(ru->at(44), (KeyCharacters{".", ","}));
    EXPECT_EQ(ru->at(50), (KeyCharacters{"ё", "Ё"}));
    const auto phonetic = InputSources::xkbKeyLayout("ru", "phonetic");
    ASSERT_TRUE(phonetic);
    EXPECT_EQ(phonetic->at(12), (KeyCharacters{"я", "Я"}));
    EXPECT_EQ(phonetic->at(44), (KeyCharacters{"/", "?"}));
}

TEST(XkbKeyLayoutTest, DeadKeysTypeNothing) {
    const auto de = InputSources::xkbKeyLayout("de");
    ASSERT_TRUE(de);
    EXPECT_EQ(de->at(16), (KeyCharacters{"z", "Z"}));  // the US Y key
    EXPECT_FALSE(de->contains(24));                     // dead acute and grave
    EXPECT_EQ(de->at(50), (KeyCharacters{"", "°"}));    // dead circumflex, then degree
}

TEST(XkbKeyLayoutTest, UnknownLayoutGivesNothing) {
    EXPECT_EQ(InputSources::xkbKeyLayout("no-such-layout"), std::nullopt);
    EXPECT_EQ(InputSources::xkbKeyLayout("ru", "no-such-variant"), std::nullopt);
    InputSources sources;
    EXPECT_FALSE(sources.addXkb("no-such-layout", "", "None", {}));
    EXPECT_TRUE(sources.enabledSources().empty());
}

TEST(SimInputSourcesTest, ListCurrentAndKeys) {
    InputSources sources;
    EXPECT_EQ(sources.currentSource(), std::nullopt);
    ASSERT_TRUE(sources.addXkb("us", "", "English (US)", {"en"}));
    ASSERT_TRUE(sources.addXkb("ru", "phonetic", "Russian (phonetic)", {"ru"}));
    sources.add({"im", "Input method", {"ja"}}, std::nullopt);
    const auto list = sources.enabledSources();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[1].sourceID, "ru(phonetic)");
    EXPECT_EQ(list[1].languages, std::vector<std::string>{"ru"});
    EXPECT_EQ(sources.currentSource()->sourceID, "us");
    EXPECT_TRUE(sources.keyLayout("ru(phonetic)"));
    EXPECT_FALSE(sources.keyLayout("im"));
    EXPECT_FALSE(sources.keyLayout("de"));
}

TEST(SimInputSourcesTest, Select) {
    InputSources sources;
    sources.add({"us", "English", {"en"}}, platform::KeyLayout{});
    sources.add({"ru", "Russian", {"ru"}}, platform::KeyLayout{});
    EXPECT_TRUE(sources.select("ru"));
    EXPECT_EQ(sources.currentSource()->sourceID, "ru");
    EXPECT_FALSE(sources.select("de"));
    EXPECT_EQ(sources.currentSource()->sourceID, "ru");
    sources.setRefuseSelection(true);
    EXPECT_FALSE(sources.select("us"));
    EXPECT_EQ(sources.currentSource()->sourceID, "ru");
    EXPECT_EQ(sources.selections(), std::vector<std::string>{"ru"});
    EXPECT_EQ(sources.selectCalls(), 3);
}

TEST(SimInputSourcesTest, FailuresOfTheDesktop) {
    InputSources sources;
    sources.add({"us", "English", {"en"}}, platform::KeyLayout{});
    sources.setListAvailable(false);
    EXPECT_TRUE(sources.enabledSources().empty());
    sources.setListAvailable(true);
    sources.setCurrent(std::nullopt);
    EXPECT_EQ(sources.currentSource(), std::nullopt);
    sources.setCurrent("gone");
    EXPECT_EQ(sources.currentSource(), std::nullopt);
    sources.setCurrent("us");
    sources.remove("us");
    EXPECT_EQ(sources.currentSource(), std::nullopt);
}

}  // namespace
}  // namespace orvantis::sim
