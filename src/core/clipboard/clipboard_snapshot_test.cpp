#include "core/clipboard/clipboard_snapshot.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace orvantis {
namespace {

const Uuid kId1 = *Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
const Uuid kId2 = *Uuid::parse("0A1B2C3D-4E5F-4061-8293-A4B5C6D7E8F9");

TEST(ClipboardSnapshotTest, WritesTheExactBytesOfTheFileFormat) {
    ClipboardSnapshot snapshot;
    snapshot.pinned.push_back({kId1, 815616000.25, "pinned text", true, std::string("org.gnome.Terminal")});
    snapshot.unpinned.push_back({kId2, 815616001, "a/b \"q\" \\ \n\t\r\b\f\x01\x1f\x7f ü 😀 \u2028", false, std::nullopt});
    const auto bytes = encodeSnapshot(snapshot);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(*bytes,
              "{\"pinned\":[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\",\"timestamp\":815616000.25,"
              "\"text\":\"pinned text\",\"isPinned\":true,\"sourceBundleID\":\"org.gnome.Terminal\"}],"
              "\"unpinned\":[{\"id\":\"0A1B2C3D-4E5F-4061-8293-A4B5C6D7E8F9\",\"timestamp\":815616001,"
              "\"text\":\"a\\/b \\\"q\\\" \\\\ \\n\\t\\r\\b\\f\\u0001\\u001f\x7f ü 😀 \u2028\",\"isPinned\":false}]}");
}

TEST(ClipboardSnapshotTest, AnEmptyHistoryIsTwoEmptyArrays) {
    EXPECT_EQ(encodeSnapshot({}), "{\"pinned\":[],\"unpinned\":[]}");
}

TEST(ClipboardSnapshotTest, NumbersAreWrittenInTheirShortestFormWithoutATrailingPointZero) {
    const std::pair<double, const char*> cases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1.0, "1"},
        {-1.0, "-1"},
        {0.5, "0.5"},
        {815616000.0, "815616000"},
        {815616000.123456, "815616000.123456"},
        {815616000.1234567, "815616000.1234567"},
        {-31622400.5, "-31622400.5"},
        {0.1, "0.1"},
        {0.001, "0.001"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1.5e-7, "1.5e-07"},
        {1e15, "1000000000000000"},
        {1e16, "10000000000000000"},
        {9007199254740993.0, "9007199254740992"},
        {0x1.0p54, "18014398509481984"},
        {1e17, "1e+17"},
        {1.25e20, "1.25e+20"},
        {1e100, "1e+100"},
        {5e-324, "5e-324"},
        {1.7976931348623157e308, "1.7976931348623157e+308"},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(formatJsonNumber(value), expected) << value;
    EXPECT_FALSE(formatJsonNumber(std::numeric_limits<double>::infinity()).has_value());
    EXPECT_FALSE(formatJsonNumber(std::nan("")).has_value());
}

TEST(ClipboardSnapshotTest, EveryWrittenNumberReadsBackToTheSameDouble) {
    ClipboardSnapshot snapshot;
    double t = 1.0 / 3.0;
    for (int i = 0; i < 200; ++i) {
        snapshot.unpinned.push_back({kId1, t, "x", false, std::nullopt});
        t = t * -7.3 + 0.1;
    }
    const auto decoded = decodeSnapshot(*encodeSnapshot(snapshot));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, snapshot);
}

TEST(ClipboardSnapshotTest, ANonFiniteTimestampCannotBeWritten) {
    ClipboardSnapshot snapshot;
    snapshot.pinned.push_back({kId1, std::numeric_limits<double>::infinity(), "x", true, std::nullopt});
    std::string error;
    EXPECT_FALSE(encodeSnapshot(snapshot, &error).has_value());
    EXPECT_FALSE(error.empty());
}

TEST(ClipboardSnapshotTest, ReadsWhatItWritesWhateverTheKeyOrderAndIgnoresUnknownKeys) {
    const auto decoded = decodeSnapshot(
        R"( {"unpinned":[{"isPinned":false,"text":"b\/c \u00fc \ud83d\ude00","timestamp":7,"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","extra":[1]}],
             "pinned":[{"id":"0A1B2C3D-4E5F-4061-8293-A4B5C6D7E8F9","timestamp":-1.5e3,"text":"","isPinned":true,"sourceBundleID":null}],
             "version":3} )");
    ASSERT_TRUE(decoded.has_value());
    ASSERT_EQ(decoded->pinned.size(), 1u);
    ASSERT_EQ(decoded->unpinned.size(), 1u);
    EXPECT_EQ(decoded->unpinned[0], (PersistedClipboardItem{kId1, 7, "b/c ü 😀", false, std::nullopt}));
    EXPECT_EQ(decoded->pinned[0], (PersistedClipboardItem{kId2, -1500, "", true, std::nullopt}));
}

TEST(ClipboardSnapshotTest, ARecordWithAWrongTypeFailsTheWholeFile) {
    const std::string good = R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":1,"text":"ok","isPinned":false})";
    const std::pair<std::string, std::string> cases[] = {
        {R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":"1","text":"t","isPinned":false})", "timestamp"},
        {R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":1,"text":5,"isPinned":false})", "text"},
        {R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":1,"text":"t","isPinned":0})", "isPinned"},
        {R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":1,"text":"t","isPinned":false,"sourceBundleID":7})", "sourceBundleID"},
        {R"({"id":"not-a-uuid","timestamp":1,"text":"t","isPinned":false})", "id"},
        {R"({"id":17,"timestamp":1,"text":"t","isPinned":false})", "id"},
        {R"({"timestamp":1,"text":"t","isPinned":false})", "id"},
        {R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":1e400,"text":"t","isPinned":false})", ""},
        {R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","timestamp":null,"text":"t","isPinned":false})", "timestamp"},
        {R"("just a string")", "unpinned[1]"},
    };
    for (const auto& [bad, where] : cases) {
        std::string error;
        EXPECT_FALSE(decodeSnapshot("{\"pinned\":[],\"unpinned\":[" + good + "," + bad + "]}", &error).has_value()) << bad;
        EXPECT_NE(error.find(where), std::string::npos) << error;
        // The description names places, never the content.
        EXPECT_EQ(error.find("ok"), std::string::npos) << error;
    }
}

TEST(ClipboardSnapshotTest, TopLevelFaultsFailTheFile) {
    for (const char* bad : {"", "[]", "null", "{}", R"({"pinned":[]})", R"({"pinned":{},"unpinned":[]})",
                            R"({"pinned":null,"unpinned":[]})", R"({"pinned":[],"unpinned":[]} x)"}) {
        std::string error;
        EXPECT_FALSE(decodeSnapshot(bad, &error).has_value()) << bad;
        EXPECT_FALSE(error.empty());
    }
}

TEST(ClipboardSnapshotTest, ATruncatedFileFailsWithoutQuotingIt) {
    ClipboardSnapshot snapshot;
    snapshot.unpinned.push_back({kId1, 1, "secret password 1234", false, std::nullopt});
    const std::string bytes = *encodeSnapshot(snapshot);
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        std::string error;
        EXPECT_FALSE(decodeSnapshot(bytes.substr(0, cut), &error).has_value()) << cut;
        EXPECT_EQ(error.find("secret"), std::string::npos) << error;
        EXPECT_EQ(error.find("1234"), std::string::npos) << error;
    }
    EXPECT_TRUE(decodeSnapshot(bytes).has_value());
}

TEST(ClipboardSnapshotTest, IllFormedUtf8InTheFileFailsIt) {
    EXPECT_FALSE(decodeSnapshot("{\"pinned\":[],\"unpinned\":[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\","
                                "\"timestamp\":1,\"text\":\"\xff\",\"isPinned\":false}]}")
                     .has_value());
}

TEST(ClipboardSnapshotTest, IllFormedUtf8IsRepairedOnWriting) {
    ClipboardSnapshot snapshot;
    snapshot.unpinned.push_back({kId1, 1, "a\xff", false, std::string("b\xc0")});
    const auto decoded = decodeSnapshot(*encodeSnapshot(snapshot));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->unpinned[0].text, "a\uFFFD");
    EXPECT_EQ(decoded->unpinned[0].sourceBundleID, "b\uFFFD");
}

}  // namespace
}  // namespace orvantis
