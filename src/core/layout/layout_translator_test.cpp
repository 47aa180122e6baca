#include "core/layout/layout_translator.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/sim/input_sources.h"

namespace orvantis {
namespace {

using platform::KeyCharacters;
using platform::KeyLayout;

/// The mapped value, or "<none>" when the map has no entry.
std::string at(const CharacterMap& map, const std::string& key) {
    const auto it = map.find(key);
    return it == map.end() ? "<none>" : it->second;
}

std::string mapWord(const CharacterMap& map, const std::string& word) {
    std::string out;
    for (char c : word) out += at(map, std::string(1, c));
    return out;
}

class LayoutTranslatorTest : public ::testing::Test {
protected:
    void addUs() { ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"en"})); }
    void addRu(std::string variant = "") {
        ASSERT_TRUE(sources_.addXkb("ru", variant, "Russian", {"ru"}));
    }
    std::optional<LayoutTranslator::Pair> build() const { return translator_.buildPair(); }

    sim::InputSources sources_;
    LayoutTranslator translator_{sources_};
};

TEST_F(LayoutTranslatorTest, UsAndRussianGivePrivet) {
    addUs();
    addRu();
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(mapWord(pair->enToRu, "ghbdtn"), "привет");
    EXPECT_EQ(mapWord(pair->enToRu, "Ghbdtn"), "Привет");
    EXPECT_EQ(at(pair->ruToEn, "п"), "g");
    EXPECT_EQ(at(pair->ruToEn, "Т"), "N");
}

TEST_F(LayoutTranslatorTest, UsAndRussianGiveThePcPunctuation) {
    addUs();
    addRu();
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "&"), "?");  // Shift+7
    EXPECT_EQ(at(pair->enToRu, "/"), ".");
    EXPECT_EQ(at(pair->enToRu, "?"), ",");
    EXPECT_EQ(at(pair->enToRu, "@"), "\"");
    EXPECT_EQ(at(pair->enToRu, "#"), "№");
    EXPECT_EQ(at(pair->enToRu, "$"), ";");
    EXPECT_EQ(at(pair->enToRu, "^"), ":");
    EXPECT_EQ(at(pair->enToRu, "|"), "/");  // beyond the fixed table
    EXPECT_EQ(at(pair->enToRu, "`"), "ё");
    EXPECT_EQ(at(pair->enToRu, "~"), "Ё");
    EXPECT_EQ(at(pair->ruToEn, "№"), "#");
    EXPECT_EQ(at(pair->ruToEn, "."), "/");
}

TEST_F(LayoutTranslatorTest, KeysThatTypeTheSameLeaveNoEntry) {
    addUs();
    addRu();
    const auto pair = build();
    ASSERT_TRUE(pair);
    for (const char* same : {"1", "7", "0", " ", "-", "=", "%", "*", "(", ")", "\\", "\t"}) {
        EXPECT_FALSE(pair->enToRu.contains(same)) << same;
        EXPECT_FALSE(pair->ruToEn.contains(same)) << same;
    }
}

TEST_F(LayoutTranslatorTest, TheRussianSideMayBeCurrent) {
    addUs();
    addRu();
    sources_.setCurrent("ru");
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(mapWord(pair->enToRu, "ghbdtn"), "привет");
    EXPECT_EQ(at(pair->ruToEn, "р"), "h");
}

TEST_F(LayoutTranslatorTest, PhoneticVariantGivesItsOwnKeys) {
    addUs();
    addRu("phonetic");
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "q"), "я");
    EXPECT_EQ(at(pair->enToRu, "a"), "а");
    EXPECT_EQ(at(pair->enToRu, "="), "ч");
    EXPECT_EQ(at(pair->enToRu, "#"), "ё");
    EXPECT_EQ(at(pair->enToRu, "`"), "ю");
    // The slash and Shift+7 type the same as on the US layout: they pass unchanged, and do
    // not take the fixed table's "." and "?".
    EXPECT_EQ(at(pair->enToRu, "/"), "<none>");
    EXPECT_EQ(at(pair->enToRu, "&"), "<none>");
    EXPECT_EQ(at(pair->ruToEn, "ё"), "#");
}

TEST_F(LayoutTranslatorTest, TypewriterVariantSlashGivesItsOwnCharacter) {
    addUs();
    addRu("typewriter");
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "/"), "ё");
    EXPECT_EQ(at(pair->enToRu, "7"), ".");
    EXPECT_EQ(at(pair->enToRu, "&"), "7");
    EXPECT_EQ(at(pair->enToRu, "1"), "№");
    // Russian "1" is typed by Shift+1 alone.
    EXPECT_EQ(at(pair->ruToEn, "1"), "!");
}

TEST_F(LayoutTranslatorTest, UkrainianBesideEnglishPairs) {
    addUs();
    ASSERT_TRUE(sources_.addXkb("ua", "", "Ukrainian", {"uk"}));
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "s"), "і");
    EXPECT_EQ(at(pair->enToRu, "]"), "ї");
    EXPECT_EQ(at(pair->enToRu, "'"), "є");
    EXPECT_EQ(at(pair->enToRu, "\\"), "ґ");
    EXPECT_EQ(at(pair->ruToEn, "ї"), "]");
    // The Ukrainian apostrophe sits on the key left of 1, before the US apostrophe's key.
    EXPECT_EQ(at(pair->ruToEn, "'"), "`");
}

TEST_F(LayoutTranslatorTest, GermanBesideEnglishPairs) {
    ASSERT_TRUE(sources_.addXkb("de", "", "German", {"de"}));
    addUs();
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "y"), "z");
    EXPECT_EQ(at(pair->enToRu, "z"), "y");
    EXPECT_EQ(at(pair->enToRu, ";"), "ö");
    EXPECT_EQ(at(pair->enToRu, "-"), "ß");
    // A dead key types nothing and leaves no entry.
    EXPECT_EQ(at(pair->enToRu, "="), "<none>");
    EXPECT_EQ(at(pair->ruToEn, "z"), "y");
}

TEST_F(LayoutTranslatorTest, RussianAndUkrainianGiveNoPair) {
    addRu();
    ASSERT_TRUE(sources_.addXkb("ua", "", "Ukrainian", {"uk"}));
    EXPECT_FALSE(build());
    sources_.setCurrent("ua");
    EXPECT_FALSE(build());
}

TEST_F(LayoutTranslatorTest, GermanAndRussianGiveNoPair) {
    ASSERT_TRUE(sources_.addXkb("de", "", "German", {"de"}));
    addRu();
    EXPECT_FALSE(build());
}

TEST_F(LayoutTranslatorTest, OneSourceGivesNoPair) {
    addUs();
    EXPECT_FALSE(build());
}

TEST_F(LayoutTranslatorTest, NoCurrentSourceGivesNoPair) {
    addUs();
    addRu();
    sources_.setCurrent(std::nullopt);
    EXPECT_FALSE(build());
}

TEST_F(LayoutTranslatorTest, UnavailableListGivesNoPair) {
    addUs();
    addRu();
    sources_.setListAvailable(false);
    EXPECT_FALSE(build());
}

TEST_F(LayoutTranslatorTest, CurrentSourceWithoutKeyTableGivesNoPair) {
    sources_.add({"im", "Pinyin", {"en"}}, std::nullopt);
    addRu();
    EXPECT_FALSE(build());
}

TEST_F(LayoutTranslatorTest, OtherSourcesWithoutKeyTableAreSkipped) {
    addUs();
    sources_.add({"im", "Input method", {"ja"}}, std::nullopt);
    addRu();
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "q"), "й");
}

TEST_F(LayoutTranslatorTest, TwoRussianVariantsNeverPairWithEachOther) {
    addRu();
    addRu("phonetic");
    EXPECT_FALSE(build());
    // Beside English, the first Russian variant in the list is the partner of English...
    addUs();
    sources_.setCurrent("us");
    auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "q"), "й");
    // ...and from a Russian variant the partner is English, not the other variant.
    sources_.setCurrent("ru(phonetic)");
    pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "q"), "я");
}

TEST_F(LayoutTranslatorTest, OnlyThePrefixEnCounts) {
    ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"en-GB"}));
    addRu();
    EXPECT_TRUE(build());
    sources_.remove("us");
    ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"eng"}));
    EXPECT_TRUE(build());
    sources_.remove("us");
    ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"fr", "en"}));
    sources_.setCurrent("ru");
    EXPECT_FALSE(build()) << "only the primary language is read";
}

TEST_F(LayoutTranslatorTest, ASourceWithoutLanguagesIsALanguageOfItsOwn) {
    // Current has a language: a source without any is taken as the other one.
    addUs();
    sources_.add({"plain", "No language", {}}, sim::InputSources::xkbKeyLayout("ru"));
    auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "q"), "й");

    // Current has none: the first source with a language is taken.
    sim::InputSources others;
    others.add({"plain", "No language", {}}, sim::InputSources::xkbKeyLayout("ru"));
    others.add({"plain2", "No language either", {}}, sim::InputSources::xkbKeyLayout("de"));
    ASSERT_TRUE(others.addXkb("us", "", "English (US)", {"en"}));
    pair = LayoutTranslator(others).buildPair();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->enToRu, "q"), "й");
}

TEST_F(LayoutTranslatorTest, FirstKeyWinsAndUnshiftedComesFirst) {
    KeyLayout en{{0, {"a", "A"}}, {1, {"b", "a"}}, {2, {"c", "C"}}};
    KeyLayout other{{0, {"x", "y"}}, {1, {"x", "z"}}, {2, {"x", "x"}}};
    sources_.add({"en", "English", {"en"}}, en);
    sources_.add({"xx", "Other", {"xx"}}, other);
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(at(pair->ruToEn, "x"), "a");  // key 0 unshifted, ahead of keys 1 and 2
    EXPECT_EQ(at(pair->enToRu, "a"), "x");  // not overwritten by Shift+key 1
    EXPECT_EQ(at(pair->enToRu, "b"), "x");
    EXPECT_EQ(at(pair->ruToEn, "z"), "a");
    EXPECT_EQ(at(pair->enToRu, "A"), "y");
    EXPECT_EQ(pair->enToRu.size(), 5u);  // a A b c C
    EXPECT_EQ(pair->ruToEn.size(), 3u);  // x y z
}

TEST_F(LayoutTranslatorTest, KeysAboveTheRangeOrTypingNothingAreSkipped) {
    KeyLayout en{{0, {"a", ""}}, {128, {"q", "Q"}}, {5, {"", "G"}}};
    KeyLayout other{{0, {"ф", "Ф"}}, {128, {"й", "Й"}}, {5, {"п", "П"}}};
    sources_.add({"en", "English", {"en"}}, en);
    sources_.add({"ru", "Russian", {"ru"}}, other);
    const auto pair = build();
    ASSERT_TRUE(pair);
    EXPECT_EQ(pair->enToRu, (CharacterMap{{"a", "ф"}, {"G", "П"}}));
}

TEST_F(LayoutTranslatorTest, IdenticalLayoutsGiveNoPair) {
    addUs();
    sources_.add({"us2", "Same keys", {"de"}}, sim::InputSources::xkbKeyLayout("us"));
    EXPECT_FALSE(build());
}

TEST(LayoutTranslatorKeyTest, OutputOfSeveralCharactersIsCutToTheFirst) {
    const KeyLayout layout{{3, {"ab", "\xCC\x81x"}}, {4, {"e\xCC\x81z", ""}}};
    EXPECT_EQ(LayoutTranslator::translateKey(3, false, layout), "a");
    EXPECT_EQ(LayoutTranslator::translateKey(4, false, layout), "e\xCC\x81");
    EXPECT_EQ(LayoutTranslator::translateKey(4, true, layout), std::nullopt);
    EXPECT_EQ(LayoutTranslator::translateKey(9, false, layout), std::nullopt);
}

}  // namespace
}  // namespace orvantis
