#include "core/snippets/snippet_expander.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/settings/preference_store.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

constexpr std::string_view kId1 = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";
constexpr std::string_view kId2 = "0A1B2C3D-4E5F-4A6B-8C7D-8E9FA0B1C2D3";

SnippetEntry entry(std::string_view id, std::string shortcut, std::string expansion) {
    return SnippetEntry{*Uuid::parse(id), std::move(shortcut), std::move(expansion)};
}

class SnippetExpanderTest : public ::testing::Test {
protected:
    /// The expansion that `token` matches, or "<none>".
    std::string expansionFor(std::string_view token) const {
        const auto entry = expander_.match(token);
        return entry ? entry->expansion : "<none>";
    }
    void storeBlob(std::string bytes) { store_.set(SnippetExpander::kKey, PreferenceData{std::move(bytes)}); }

    testing::TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("prefs");
    PreferenceStore store_{dir_.path() / "preferences.plist", *queue_, nullptr};
    SnippetExpander expander_{store_};
};

TEST_F(SnippetExpanderTest, NothingStoredIsAnEmptyList) {
    EXPECT_TRUE(expander_.entries().empty());
    EXPECT_FALSE(expander_.match("sig").has_value());
}

TEST_F(SnippetExpanderTest, TheStoredFormIsACompactArrayWithUpperCaseIdentifiers) {
    expander_.setEntries({entry("e621e1f8-c36c-495a-93fc-0c247a3e6e5f", "sig", "Best regards,\nAnna / Team"),
                          entry(kId2, "адр", "Москва")});
    const auto data = store_.dataForKey(SnippetExpander::kKey);
    ASSERT_TRUE(data.has_value());
    EXPECT_EQ(*data,
              "[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\",\"shortcut\":\"sig\",\"expansion\":\"Best "
              "regards,\\nAnna \\/ Team\"},{\"id\":\"0A1B2C3D-4E5F-4A6B-8C7D-8E9FA0B1C2D3\",\"shortcut\":\"адр\","
              "\"expansion\":\"Москва\"}]");
    // Held as data, not as a string.
    ASSERT_TRUE(store_.object(SnippetExpander::kKey).has_value());
    EXPECT_TRUE(std::holds_alternative<PreferenceData>(*store_.object(SnippetExpander::kKey)));
    const auto back = expander_.entries();
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[0].expansion, "Best regards,\nAnna / Team");
    EXPECT_EQ(back[1].shortcut, "адр");
}

TEST_F(SnippetExpanderTest, ABlobThatIsNotJsonIsAnEmptyList) {
    storeBlob("this is not JSON [");
    EXPECT_TRUE(expander_.entries().empty());
    storeBlob(std::string("\xff\xfe\x00\x01", 4));
    EXPECT_TRUE(expander_.entries().empty());
    storeBlob("{\"id\":\"x\"}");
    EXPECT_TRUE(expander_.entries().empty());
}

TEST_F(SnippetExpanderTest, AWrongTypeOrAMissingKeyInOneEntryEmptiesTheWholeList) {
    const std::string good = "{\"id\":\"" + std::string(kId1) + "\",\"shortcut\":\"a\",\"expansion\":\"A\"}";
    storeBlob("[" + good + "]");
    ASSERT_EQ(expander_.entries().size(), 1u);
    for (const std::string& bad : {
             "{\"id\":\"" + std::string(kId2) + "\",\"shortcut\":5,\"expansion\":\"B\"}",
             "{\"id\":\"" + std::string(kId2) + "\",\"shortcut\":\"b\",\"expansion\":null}",
             "{\"id\":\"" + std::string(kId2) + "\",\"shortcut\":\"b\"}",
             std::string("{\"id\":\"not-a-uuid\",\"shortcut\":\"b\",\"expansion\":\"B\"}"),
             std::string("{\"shortcut\":\"b\",\"expansion\":\"B\"}"),
             std::string("\"just a string\""),
         }) {
        storeBlob("[" + good + "," + bad + "]");
        EXPECT_TRUE(expander_.entries().empty()) << bad;
        EXPECT_FALSE(expander_.match("a").has_value()) << bad;
    }
}

TEST_F(SnippetExpanderTest, ExtraKeysAndLowerCaseIdentifiersAreRead) {
    storeBlob("[{\"id\":\"e621e1f8-c36c-495a-93fc-0c247a3e6e5f\",\"shortcut\":\"a\",\"expansion\":\"A\",\"note\":1}]");
    const auto entries = expander_.entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].id.toString(), kId1);
}

TEST_F(SnippetExpanderTest, MatchIsExactAndCaseSensitive) {
    expander_.setEntries({entry(kId1, "Mail", "upper"), entry(kId2, "mail", "lower")});
    EXPECT_EQ(expansionFor("mail"), "lower");
    EXPECT_EQ(expansionFor("Mail"), "upper");
    EXPECT_FALSE(expander_.match("MAIL").has_value());
    EXPECT_FALSE(expander_.match(" mail").has_value());
    EXPECT_FALSE(expander_.match("mai").has_value());
    expander_.setEntries({entry(kId1, "Mail", "upper")});
    EXPECT_FALSE(expander_.match("mail").has_value());
}

TEST_F(SnippetExpanderTest, TheEarlierOfTwoEntriesWithTheSameShortcutWins) {
    expander_.setEntries({entry(kId1, "sig", "first"), entry(kId2, "sig", "second")});
    EXPECT_EQ(expansionFor("sig"), "first");
}

TEST_F(SnippetExpanderTest, AnEmptyTokenMatchesNothingEvenAnEmptyShortcut) {
    expander_.setEntries({entry(kId1, "", "never")});
    EXPECT_FALSE(expander_.match("").has_value());
}

TEST_F(SnippetExpanderTest, CanonicallyEquivalentTextsMatch) {
    expander_.setEntries({entry(kId1, "caf\u00e9", "coffee")});
    EXPECT_EQ(expansionFor("cafe\u0301"), "coffee");
    EXPECT_FALSE(expander_.match("cafe").has_value());
}

TEST_F(SnippetExpanderTest, EmptyAndHugeExpansionsSurviveTheStore) {
    const std::string huge(1 << 20, 'x');
    expander_.setEntries({entry(kId1, "empty", ""), entry(kId2, "huge", huge)});
    EXPECT_EQ(expansionFor("empty"), "");
    EXPECT_EQ(expansionFor("huge"), huge);
}

TEST_F(SnippetExpanderTest, EditsCountAtTheNextRead) {
    expander_.setEntries({entry(kId1, "a", "one")});
    EXPECT_EQ(expansionFor("a"), "one");
    // Another writer (the settings window, a synced value) changes the stored value.
    SnippetExpander other(store_);
    other.setEntries({entry(kId1, "a", "two")});
    EXPECT_EQ(expansionFor("a"), "two");
}

}  // namespace
}  // namespace orvantis
