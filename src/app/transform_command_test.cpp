#include "app/transform_command.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "core/text_tools/text_transform.h"
#include "core/text_tools/tt_ops.h"

namespace orvantis::app {
namespace {

struct Result {
    int status;
    std::string out;
    std::string err;
};

Result run(std::vector<std::string> args, const std::string& input,
           SettingsLanguage lang = SettingsLanguage::en, bool* languageAsked = nullptr) {
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    const int status = runTransformCommand(args, in, out, err, [&] {
        if (languageAsked != nullptr) *languageAsked = true;
        return lang;
    });
    return {status, out.str(), err.str()};
}

TEST(TransformCommandTest, WritesExactlyTheResult) {
    const Result r = run({"transform", "md5"}, "");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "d41d8cd98f00b204e9800998ecf8427e");  // no line break added
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(run({"transform", "base64Decode"}, "aGVsbG8\n").out, "hello");
    EXPECT_EQ(run({"transform", "unixToISO"}, "1700000000\n").out, "2023-11-14T22:13:20.000Z");
    EXPECT_EQ(run({"transform", "upper"}, "привет\n").out, "ПРИВЕТ\n");  // the input's own break stays
}

TEST(TransformCommandTest, AFailureWritesTheDescription) {
    const Result r = run({"transform", "base64Decode"}, "a$b=");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "Invalid input for Base64.\n");
    EXPECT_EQ(run({"transform", "hexDecode"}, "abc").err, "Invalid input for Hex (odd length).\n");
}

TEST(TransformCommandTest, ListsTheCatalogue) {
    const Result r = run({"transform", "--list"}, "");
    EXPECT_EQ(r.status, 0);
    std::istringstream lines(r.out);
    std::string line;
    std::vector<std::string> all;
    while (std::getline(lines, line)) all.push_back(line);
    ASSERT_EQ(all.size(), 25u);
    EXPECT_EQ(all[0], "md5\tMD5");
    EXPECT_EQ(all[12], "unicodeEscape\tUnicode escape (\\u…)");
    EXPECT_EQ(all[22], "unixToISO\tUnix timestamp → ISO 8601");
    EXPECT_EQ(all[24], "count\tCount (lines / words / chars)");
}

TEST(TransformCommandTest, InputThatIsNotUtf8IsRefused) {
    const Result r = run({"transform", "md5"}, "a\xff");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find("not valid UTF-8"), std::string::npos);
}

TEST(TransformCommandTest, UsageErrors) {
    EXPECT_EQ(run({"transform"}, "").status, 2);
    EXPECT_EQ(run({"transform", "md5", "extra"}, "").status, 2);
    const Result unknown = run({"transform", "MD5"}, "x");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("unknown transform \"MD5\""), std::string::npos);
}

TEST(TransformCommandTest, CountUsesTheInterfaceLanguage) {
    bool asked = false;
    EXPECT_EQ(run({"transform", "count"}, "a b\n", SettingsLanguage::ru, &asked).out,
              "Символов:    4\nСлов:        2\nСтрок:       2\nБайт (UTF-8): 4");
    EXPECT_TRUE(asked);
    asked = false;
    run({"transform", "md5"}, "x", SettingsLanguage::ru, &asked);
    EXPECT_FALSE(asked);  // other transforms leave the settings closed
}

TEST(TransformCommandTest, DigestsReadTheInputInPieces) {
    // A letter of two bytes, and one of four, across the end of the first megabyte.
    for (const std::string& letter : {std::string("я"), std::string("😀")}) {
        for (std::size_t before = (1u << 20) - 3; before < (1u << 20) + 1; ++before) {
            const std::string input = std::string(before, 'a') + letter + "b";
            const Result r = run({"transform", "sha256"}, input);
            EXPECT_EQ(r.status, 0) << before;
            EXPECT_EQ(r.out, applyTransform(TextTransform::sha256, input)) << before;
        }
    }
    EXPECT_EQ(run({"transform", "md5"}, std::string((1u << 20) - 1, 'a') + "\xd1").status, 2);   // cut at the end
    EXPECT_EQ(run({"transform", "md5"}, std::string((1u << 20) - 1, 'a') + "\xd1" "a").status, 2);  // broken across
    EXPECT_EQ(run({"transform", "md5"}, std::string((1u << 20) - 2, 'a') + "\xf0\x9f" + "a").status, 2);
    EXPECT_EQ(run({"transform", "sha1"}, std::string(3u << 20, 'a') + "\xff").status, 2);
}

TEST(TransformCommandTest, Base64IsWrittenInPiecesWithTheWholeTransformsOutcome) {
    // Larger than a piece, with a letter of four bytes across the ends of pieces.
    std::string text;
    while (text.size() < (1u << 20)) text += "Hello, мир 😀 e\u0301\n";
    const std::string encoded = applyTransform(TextTransform::base64Encode, text);
    EXPECT_EQ(run({"transform", "base64Encode"}, text).out, encoded);
    std::string wrapped;
    for (std::size_t i = 0; i < encoded.size(); i += 76) wrapped += encoded.substr(i, 76) + "\n";
    const Result decoded = run({"transform", "base64Decode"}, wrapped);
    EXPECT_EQ(decoded.status, 0);
    EXPECT_EQ(decoded.out, text);
    // Bytes that are not UTF-8 come back whole in hex; a bad character is the error, with
    // nothing written.
    const std::string binary = std::string(1u << 19, 'a') + "\xff";
    std::string binaryBase64;
    binaryBase64 = TTOps::runBase64Encode(binary);
    EXPECT_EQ(run({"transform", "base64Decode"}, binaryBase64).out, applyTransform(TextTransform::base64Decode, binaryBase64));
    EXPECT_EQ(run({"transform", "base64Decode"}, binaryBase64).out.rfind("(non-UTF8) 6161", 0), 0u);
    const Result bad = run({"transform", "base64Decode"}, wrapped + "\t");
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.out, "");
    EXPECT_EQ(bad.err, "Invalid input for Base64.\n");
    const Result notUtf8 = run({"transform", "base64Encode"}, text + "\xff");
    EXPECT_EQ(notUtf8.status, 2);
    EXPECT_EQ(notUtf8.out, "");
}

TEST(TransformCommandTest, LargeInputPassesWhole) {
    const std::string input(5 * 1024 * 1024 + 7, 'z');
    const Result r = run({"transform", "hexEncode"}, input);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out.size(), input.size() * 2);
    // Hex is written in pieces: the same as the whole, with the pieces' ends inside a letter.
    std::string mixed;
    while (mixed.size() < (1u << 19)) mixed += "aé😀";
    EXPECT_EQ(run({"transform", "hexEncode"}, mixed).out, applyTransform(TextTransform::hexEncode, mixed));
    EXPECT_EQ(run({"transform", "hexEncode"}, mixed + "\xff").status, 2);
    EXPECT_EQ(run({"transform", "hexEncode"}, mixed + "\xff").out, "");
}

}  // namespace
}  // namespace orvantis::app
