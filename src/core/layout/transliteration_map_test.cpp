#include "core/layout/transliteration_map.h"

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/text/graphemes.h"
#include "platform/sim/input_sources.h"

namespace orvantis {
namespace {

using Direction = TransliterationMap::Direction;
using Chars = std::vector<std::string>;

Chars chars(std::string_view text) { return text::graphemes(text); }

TEST(TransliterationMapTest, FixedTableHasThe73EntriesInOrder) {
    const auto& table = TransliterationMap::fallbackTable();
    ASSERT_EQ(table.size(), 73u);
    std::string keys;
    std::string values;
    for (const auto& [en, ru] : table) {
        keys += en;
        keys += ' ';
        values += ru;
        values += ' ';
    }
    EXPECT_EQ(keys,
              "q w e r t y u i o p [ ] a s d f g h j k l ; ' z x c v b n m , . ` "
              "Q W E R T Y U I O P { } A S D F G H J K L : \" Z X C V B N M < > ~ "
              "@ # $ ^ & / ? ");
    EXPECT_EQ(values,
              "й ц у к е н г ш щ з х ъ ф ы в а п р о л д ж э я ч с м и т ь б ю ё "
              "Й Ц У К Е Н Г Ш Щ З Х Ъ Ф Ы В А П Р О Л Д Ж Э Я Ч С М И Т Ь Б Ю Ё "
              "\" № ; : ? . , ");
}

TEST(TransliterationMapTest, FixedMapMatchesTheTable) {
    TransliterationMap map;
    const auto& en = map.fallbackEnToRu();
    EXPECT_EQ(en.size(), 73u);
    for (const auto& [key, value] : TransliterationMap::fallbackTable())
        EXPECT_EQ(en.at(std::string(key)), value) << key;
    EXPECT_EQ(en.at("q"), "й");
    EXPECT_EQ(en.at("["), "х");
    EXPECT_EQ(en.at(","), "б");
    EXPECT_EQ(en.at("@"), "\"");
    EXPECT_EQ(en.at("/"), ".");
    EXPECT_EQ(en.at("?"), ",");
}

TEST(TransliterationMapTest, CharactersWithoutEntryInTheFixedTable) {
    TransliterationMap map;
    for (const char* none : {"0", "1", "9", " ", "-", "=", "_", "+", "%", "*", "(", ")", "\\", "|", "!"})
        EXPECT_FALSE(map.fallbackEnToRu().contains(none)) << none;
}

TEST(TransliterationMapTest, AllValuesDifferSoTheInverseHas73Entries) {
    TransliterationMap map;
    std::set<std::string> values;
    for (const auto& [key, value] : TransliterationMap::fallbackTable()) values.emplace(value);
    EXPECT_EQ(values.size(), 73u);
    EXPECT_EQ(map.fallbackRuToEn().size(), 73u);
    EXPECT_EQ(map.fallbackRuToEn().at("й"), "q");
    EXPECT_EQ(map.fallbackRuToEn().at("."), "/");
    EXPECT_EQ(map.fallbackRuToEn().at(","), "?");
    EXPECT_EQ(map.fallbackRuToEn().at("\""), "@");
    EXPECT_EQ(map.fallbackRuToEn().at("?"), "&");
}

TEST(TransliterationMapTest, InverseIsBuiltOnceAndKept) {
    TransliterationMap map;
    const CharacterMap* first = &map.fallbackRuToEn();
    EXPECT_EQ(first, &map.fallbackRuToEn());
}

TEST(TransliterationMapTest, EveryKeyComesBackThroughTheInverse) {
    TransliterationMap map;
    for (const auto& [key, value] : TransliterationMap::fallbackTable()) {
        const Chars there = map.transliterate(Chars{std::string(key)}, Direction::enToRu);
        const Chars back = map.transliterate(there, Direction::ruToEn);
        EXPECT_EQ(back, Chars{std::string(key)}) << key;
    }
}

TEST(TransliterationMapTest, InvertedSwapsKeysAndValues) {
    const CharacterMap map{{"a", "1"}, {"b", "2"}};
    EXPECT_EQ(TransliterationMap::inverted(map), (CharacterMap{{"1", "a"}, {"2", "b"}}));
    EXPECT_TRUE(TransliterationMap::inverted({}).empty());
}

TEST(TransliterationMapTest, FallbackConvertsBothWays) {
    TransliterationMap map;
    EXPECT_EQ(map.transliterate("ghbdtn", Direction::enToRu), "привет");
    EXPECT_EQ(map.transliterate("привет", Direction::ruToEn), "ghbdtn");
    EXPECT_EQ(map.transliterate("Ghbdtn", Direction::enToRu), "Привет");
    EXPECT_EQ(map.transliterate("Rfr ltkf&", Direction::enToRu), "Как дела?");
    EXPECT_EQ(map.transliterate("ёЁ", Direction::ruToEn), "`~");
}

TEST(TransliterationMapTest, CharactersWithoutEntryPassAndLengthIsKept) {
    TransliterationMap map;
    const Chars input = chars("q1👍🏽 w-й");
    const Chars output = map.transliterate(input, Direction::enToRu);
    ASSERT_EQ(output.size(), input.size());
    EXPECT_EQ(output, (Chars{"й", "1", "👍🏽", " ", "ц", "-", "й"}));
    EXPECT_EQ(map.transliterate(chars("123"), Direction::ruToEn), chars("123"));
}

TEST(TransliterationMapTest, EmptyInputGivesEmptyOutput) {
    TransliterationMap map;
    EXPECT_TRUE(map.transliterate(Chars{}, Direction::enToRu).empty());
    EXPECT_TRUE(map.transliterate(Chars{}, Direction::ruToEn).empty());
    EXPECT_EQ(map.transliterate(std::string_view(""), Direction::enToRu), "");
}

TEST(TransliterationMapTest, NoCaseHandling) {
    // A capital that has no entry in the direction stays as it stands.
    TransliterationMap map;
    EXPECT_EQ(map.transliterate("ПРИвет", Direction::enToRu), "ПРИвет");
}

TEST(TransliterationMapTest, DecomposedCharacterFindsItsComposedEntry) {
    TransliterationMap map;
    // й as и + combining breve, ё as е + combining diaeresis.
    EXPECT_EQ(map.transliterate("\xD0\xB8\xCC\x86\xD0\xB5\xCC\x88", Direction::ruToEn), "q`");
}

TEST(TransliterationMapTest, ApplyOverAGivenMap) {
    const CharacterMap m{{"a", "b"}};
    EXPECT_EQ(TransliterationMap::apply(m, Chars{"a", "c", "a"}), (Chars{"b", "c", "b"}));
}

class TransliterationMapWithLayoutsTest : public ::testing::Test {
protected:
    sim::InputSources sources_;
    LayoutTranslator translator_{sources_};
    TransliterationMap map_{translator_};
};

TEST_F(TransliterationMapWithLayoutsTest, EnglishBesideARussianVariantUsesThatVariant) {
    ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"en"}));
    ASSERT_TRUE(sources_.addXkb("ru", "typewriter", "Russian (typewriter)", {"ru"}));
    EXPECT_EQ(map_.transliterate("ghbdtn/", Direction::enToRu), "приветё");
    EXPECT_EQ(map_.transliterate("приветё", Direction::ruToEn), "ghbdtn/");
}

TEST_F(TransliterationMapWithLayoutsTest, PhoneticVariantLeavesTheSlashAlone) {
    ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"en"}));
    ASSERT_TRUE(sources_.addXkb("ru", "phonetic", "Russian (phonetic)", {"ru"}));
    EXPECT_EQ(map_.transliterate("priwet/", Direction::enToRu), "привет/");
}

TEST_F(TransliterationMapWithLayoutsTest, RussianAndUkrainianFallBackOnTheFixedTable) {
    ASSERT_TRUE(sources_.addXkb("ru", "phonetic", "Russian (phonetic)", {"ru"}));
    ASSERT_TRUE(sources_.addXkb("ua", "", "Ukrainian", {"uk"}));
    EXPECT_EQ(map_.transliterate("ghbdtn/", Direction::enToRu), "привет.");
}

TEST_F(TransliterationMapWithLayoutsTest, OneSourceFallsBackOnTheFixedTable) {
    ASSERT_TRUE(sources_.addXkb("ru", "phonetic", "Russian (phonetic)", {"ru"}));
    EXPECT_EQ(map_.transliterate("ghbdtn/", Direction::enToRu), "привет.");
}

TEST_F(TransliterationMapWithLayoutsTest, InputMethodAsCurrentFallsBackOnTheFixedTable) {
    sources_.add({"im", "Input method", {"en"}}, std::nullopt);
    ASSERT_TRUE(sources_.addXkb("ru", "phonetic", "Russian (phonetic)", {"ru"}));
    EXPECT_EQ(map_.transliterate("ghbdtn/", Direction::enToRu), "привет.");
}

TEST_F(TransliterationMapWithLayoutsTest, AChangeOfSourcesTakesEffectAtTheNextCall) {
    ASSERT_TRUE(sources_.addXkb("us", "", "English (US)", {"en"}));
    ASSERT_TRUE(sources_.addXkb("ru", "typewriter", "Russian (typewriter)", {"ru"}));
    EXPECT_EQ(map_.transliterate("/", Direction::enToRu), "ё");
    sources_.remove("ru(typewriter)");
    EXPECT_EQ(map_.transliterate("/", Direction::enToRu), ".");
}

}  // namespace
}  // namespace orvantis
