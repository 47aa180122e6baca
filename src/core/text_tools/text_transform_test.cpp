#include "core/text_tools/text_transform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <random>
#include <set>
#include <string>

#include "core/text_tools/tt_ops.h"

namespace orvantis {
namespace {

using T = TextTransform;

std::string run(T transform, std::string_view text, SettingsLanguage lang = SettingsLanguage::en) {
    return applyTransform(transform, text, lang);
}

/// The user's text of the error `transform` throws for `text`, or "no error".
std::string errorOf(T transform, std::string_view text) {
    try {
        applyTransform(transform, text);
    } catch (const TransformError& error) {
        return error.what();
    }
    return "no error";
}

// A text with emoji (a flag, a family with joiners), a combining mark and Cyrillic.
constexpr std::string_view kMixed = "Привет e\u0301 🇩🇪 👨‍👩‍👧!";

TEST(TextTransformTest, CatalogueOrderIdsAndNames) {
    ASSERT_EQ(kAllTextTransforms.size(), 25u);
    EXPECT_EQ(id(kAllTextTransforms[0]), "md5");
    EXPECT_EQ(id(kAllTextTransforms[5]), "base64Decode");
    EXPECT_EQ(id(kAllTextTransforms[12]), "unicodeEscape");
    EXPECT_EQ(id(kAllTextTransforms[24]), "count");
    std::set<std::string_view> ids;
    for (std::size_t i = 0; i < kAllTextTransforms.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(kAllTextTransforms[i]), i);
        ids.insert(id(kAllTextTransforms[i]));
        EXPECT_EQ(textTransformFromId(id(kAllTextTransforms[i])), kAllTextTransforms[i]);
    }
    EXPECT_EQ(ids.size(), 25u);
    EXPECT_EQ(textTransformFromId("MD5"), std::nullopt);
    EXPECT_EQ(displayName(T::unicodeEscape, SettingsLanguage::en), "Unicode escape (\\u…)");
    EXPECT_EQ(displayName(T::unicodeEscape, SettingsLanguage::ru), "Unicode \\u — закодировать");
    EXPECT_EQ(displayName(T::base64Decode, SettingsLanguage::ru), "Base64 — декодировать");
    EXPECT_EQ(displayName(T::count, SettingsLanguage::en), "Count (lines / words / chars)");
    EXPECT_EQ(displayName(T::count, SettingsLanguage::ru), "Подсчёт (строки/слова/символы)");
    EXPECT_EQ(displayName(T::trim, SettingsLanguage::ru), "Убрать пробелы (trim)");
    EXPECT_EQ(displayName(T::unixToISO, SettingsLanguage::ru), "Unix timestamp → ISO 8601");
    EXPECT_EQ(displayName(T::hexEncode, SettingsLanguage::en), "Hex (UTF-8) encode");
}

TEST(TextTransformTest, ErrorDescriptionIsEnglishWithAFullStop) {
    const TransformError error("Hex (odd length)");
    EXPECT_EQ(error.errorDescription(), "Invalid input for Hex (odd length).");
    EXPECT_EQ(error.format(), "Hex (odd length)");
}

TEST(TextTransformTest, Hashes) {
    EXPECT_EQ(run(T::md5, ""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(run(T::sha1, ""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(run(T::sha256, ""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(run(T::sha512, "abc"),
              "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd"
              "454d4423643ce80e2a9ac94fa54ca49f");
    // No trimming: a trailing newline changes the digest.
    EXPECT_EQ(run(T::md5, "hello\n"), "b1946ac92492d2347c6235b4d2611184");
    EXPECT_EQ(run(T::md5, "hello"), "5d41402abc4b2a76b9719d911017c592");
    EXPECT_EQ(run(T::sha1, "привет"), run(T::sha1, "\xd0\xbf\xd1\x80\xd0\xb8\xd0\xb2\xd0\xb5\xd1\x82"));
    EXPECT_EQ(run(T::sha256, kMixed).size(), 64u);
}

TEST(TextTransformTest, Base64Encode) {
    EXPECT_EQ(run(T::base64Encode, ""), "");
    EXPECT_EQ(run(T::base64Encode, "hello"), "aGVsbG8=");
    EXPECT_EQ(run(T::base64Encode, "привет"), "0L/RgNC40LLQtdGC");
    EXPECT_EQ(run(T::base64Encode, "\xff\xfe?>"), "//4/Pg==");  // the + and / alphabet
    EXPECT_EQ(run(T::base64Decode, run(T::base64Encode, kMixed)), kMixed);
    EXPECT_EQ(run(T::base64Encode, std::string(100, 'a')).find('\n'), std::string::npos);
}

TEST(TextTransformTest, Base64DecodeIsTolerant) {
    EXPECT_EQ(run(T::base64Decode, "aGVsbG8"), "hello");
    EXPECT_EQ(run(T::base64Decode, "aGVsbG8="), "hello");
    EXPECT_EQ(run(T::base64Decode, "aGVs\nbG8="), "hello");
    EXPECT_EQ(run(T::base64Decode, " aGV\r\nsbG8 "), "hello");
    EXPECT_EQ(run(T::base64Decode, ""), "");
    EXPECT_EQ(run(T::base64Decode, "/w=="), "(non-UTF8) ff");
    EXPECT_EQ(run(T::base64Decode, "_w"), "(non-UTF8) ff");    // URL-safe, unpadded
    EXPECT_EQ(run(T::base64Decode, "-_4"), "(non-UTF8) fbfe");  // '-' is '+'
    EXPECT_EQ(run(T::base64Decode, "0L/RgNC40LLQtdGC"), "привет");
}

TEST(TextTransformTest, Base64DecodeFailures) {
    EXPECT_EQ(errorOf(T::base64Decode, "a$b="), "Invalid input for Base64.");
    EXPECT_EQ(errorOf(T::base64Decode, "aGVs\tbG8="), "Invalid input for Base64.");  // tabs stay
    EXPECT_EQ(errorOf(T::base64Decode, "a=bc"), "Invalid input for Base64.");        // '=' in the middle
    EXPECT_EQ(errorOf(T::base64Decode, "a"), "Invalid input for Base64.");           // "a===": three pads
    EXPECT_EQ(errorOf(T::base64Decode, "aGVsbG8=aGVs"), "Invalid input for Base64.");
    EXPECT_EQ(errorOf(T::base64Decode, "привет"), "Invalid input for Base64.");
    EXPECT_EQ(errorOf(T::base64Decode, "aGVsbG8"), "no error");
}

/// The pieces of runBase64EncodeInPieces / runBase64DecodeInPieces joined; nullopt when the
/// decoding in pieces declines.
std::string encodedInPieces(std::string_view text, std::size_t pieceSize) {
    std::string joined;
    TTOps::runBase64EncodeInPieces(text, [&](std::string_view piece) { joined.append(piece); }, pieceSize);
    return joined;
}
std::optional<std::string> decodedInPieces(std::string_view text, std::size_t pieceSize) {
    std::string joined;
    if (!TTOps::runBase64DecodeInPieces(text, [&](std::string_view piece) { joined.append(piece); }, pieceSize)) {
        EXPECT_EQ(joined, "") << "pieces given before declining";
        return std::nullopt;
    }
    return joined;
}

TEST(TextTransformTest, Base64InPiecesIsTheWholeTransform) {
    std::mt19937 random(11);
    for (std::size_t size : {0u, 1u, 2u, 3u, 4u, 5u, 11u, 12u, 13u, 100u, 1000u, 4099u}) {
        std::string bytes(size, '\0');
        for (char& c : bytes) c = static_cast<char>('a' + random() % 26);
        if (size > 10) bytes.replace(size / 2, 4, "😀");  // a letter of four bytes somewhere
        const std::string encoded = run(T::base64Encode, bytes);
        for (std::size_t piece : {1u, 3u, 4u, 5u, 8u, 13u, 64u, 1u << 18}) {
            EXPECT_EQ(encodedInPieces(bytes, piece), encoded) << size << " in " << piece;
            // Plain, wrapped at 76 and at 3, with CR LF, URL-safe, unpadded, blanks at the end.
            std::string wrapped, crlf, unpadded = encoded;
            for (std::size_t i = 0; i < encoded.size(); ++i) {
                if (i > 0 && i % 76 == 0) wrapped += '\n';
                if (i > 0 && i % 3 == 0) crlf += "\r\n";
                wrapped += encoded[i];
                crlf += encoded[i];
            }
            while (!unpadded.empty() && unpadded.back() == '=') unpadded.pop_back();
            std::string urlSafe = encoded;
            for (char& c : urlSafe) c = c == '+' ? '-' : c == '/' ? '_' : c;
            for (const std::string& text : {encoded, wrapped + "\n", crlf, unpadded, urlSafe, " " + encoded + " \n\n"}) {
                EXPECT_EQ(decodedInPieces(text, piece), run(T::base64Decode, text)) << size << " in " << piece << ": " << text;
            }
        }
    }
}

TEST(TextTransformTest, Base64DecodeInPiecesDeclinesAllButThePlainForm) {
    // What the whole transform refuses, or gives in hex, is left to it.
    for (std::string_view text : {"a$b=", "aGVs\tbG8=", "a=bc", "a", "aGVsbG8=aGVs", "привет", "/w==", "aGVsbG8===",
                                  "aGVsbG8=\n=", "aGVsbG8\n=="}) {
        for (std::size_t piece : {1u, 4u, 8u, 1u << 18}) EXPECT_EQ(decodedInPieces(text, piece), std::nullopt) << text;
    }
    // Bytes that are not UTF-8 far from the start: nothing is given before it is seen.
    const std::string binary = run(T::base64Encode, std::string(5000, 'a')) + run(T::base64Encode, "\xff\xfe\xfd");
    EXPECT_EQ(decodedInPieces(binary, 64), std::nullopt);
    // The plain form is taken, also with its padding on a line of its own.
    EXPECT_EQ(decodedInPieces("aGVsbG8\n=", 4), "hello");
    EXPECT_EQ(decodedInPieces("aGVs bG8=\r\n", 4), "hello");
    EXPECT_EQ(decodedInPieces("", 4), "");
    EXPECT_EQ(decodedInPieces(" \n", 4), "");
}

TEST(TextTransformTest, HtmlUnescapeOfAReferenceBeyondUnicodeIsTheReplacementCharacter) {
    // Found by the fuzzer: the parser let a stray byte out for a reference that overflows.
    EXPECT_EQ(run(T::htmlUnescape, "a&#x1Faaaaaaaaaaaaaaaaaaaaa;b"), "a\uFFFDb");
    EXPECT_EQ(run(T::htmlUnescape, "<ple>ip;&#x1Faaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"), "ip;\uFFFD");
    EXPECT_EQ(run(T::htmlUnescape, "a&#x110000;b&#99999999999;c"), "a\uFFFDb\uFFFDc");
}

TEST(TextTransformTest, UrlEncode) {
    EXPECT_EQ(run(T::urlEncode, "a b&c/d"), "a%20b%26c%2Fd");
    EXPECT_EQ(run(T::urlEncode, "привет мир"), "привет%20мир");
    EXPECT_EQ(run(T::urlEncode, "-._~"), "-._~");
    EXPECT_EQ(run(T::urlEncode, ""), "");
    EXPECT_EQ(run(T::urlEncode, "e\u0301٣"), "e\u0301٣");  // marks and numbers of any script stay
    EXPECT_EQ(run(T::urlEncode, "😀"), "%F0%9F%98%80");
    EXPECT_EQ(run(T::urlEncode, "a+b=c?"), "a%2Bb%3Dc%3F");
}

TEST(TextTransformTest, UrlDecode) {
    EXPECT_EQ(run(T::urlDecode, "100%"), "100%");
    EXPECT_EQ(run(T::urlDecode, "a%20b%26c%2fd"), "a b&c/d");
    EXPECT_EQ(run(T::urlDecode, "a+b"), "a+b");
    EXPECT_EQ(run(T::urlDecode, "%D0%BF%D1%80%D0%B8"), "при");
    EXPECT_EQ(run(T::urlDecode, "%zz and %20"), "%zz and %20");  // a malformed group keeps all
    EXPECT_EQ(run(T::urlDecode, "%ff"), "%ff");                   // not UTF-8
    EXPECT_EQ(run(T::urlDecode, "%4"), "%4");
    EXPECT_EQ(run(T::urlDecode, ""), "");
    EXPECT_EQ(run(T::urlDecode, run(T::urlEncode, kMixed)), kMixed);
}

TEST(TextTransformTest, HexEncode) {
    EXPECT_EQ(run(T::hexEncode, ""), "");
    EXPECT_EQ(run(T::hexEncode, "Hi"), "4869");
    EXPECT_EQ(run(T::hexEncode, "я😀"), "d18ff09f9880");
    EXPECT_EQ(run(T::hexDecode, run(T::hexEncode, kMixed)), kMixed);
}

TEST(TextTransformTest, HexDecode) {
    EXPECT_EQ(run(T::hexDecode, "48 65:6C 0x6c 6F"), "Hello");
    EXPECT_EQ(run(T::hexDecode, "0x41 0x42"), "AB");
    EXPECT_EQ(run(T::hexDecode, "0x41:0x42"), "AB");
    EXPECT_EQ(run(T::hexDecode, "4\t1\r\n4A"), "AJ");
    EXPECT_EQ(run(T::hexDecode, "0 x41"), "A");  // blanks go before "0x" is looked for
    EXPECT_EQ(run(T::hexDecode, "ff"), "(non-UTF8) ff");
    EXPECT_EQ(run(T::hexDecode, "+f41"), "\x0f" "A");  // the number parser takes a sign
    EXPECT_EQ(run(T::hexDecode, "-041"), std::string("\0A", 2));  // and a minus for zero
    EXPECT_EQ(run(T::hexDecode, "d0bf"), "п");
    EXPECT_EQ(errorOf(T::hexDecode, "abc"), "Invalid input for Hex (odd length).");
    EXPECT_EQ(errorOf(T::hexDecode, "zz"), "Invalid input for Hex.");
    EXPECT_EQ(errorOf(T::hexDecode, "-1"), "Invalid input for Hex.");
    EXPECT_EQ(errorOf(T::hexDecode, ""), "Invalid input for Hex (odd length).");
    EXPECT_EQ(errorOf(T::hexDecode, "0x"), "Invalid input for Hex (odd length).");
    EXPECT_EQ(errorOf(T::hexDecode, "0X41"), "Invalid input for Hex.");  // only lower-case 0x
    EXPECT_EQ(errorOf(T::hexDecode, "0:x41"), "Invalid input for Hex.");  // colons go after "0x"
    // Pairs are characters: "é1" is two of them, not three bytes.
    EXPECT_EQ(errorOf(T::hexDecode, "é1"), "Invalid input for Hex.");
    EXPECT_EQ(errorOf(T::hexDecode, "4\u03011"), "Invalid input for Hex.");
    EXPECT_EQ(errorOf(T::hexDecode, "Привет"), "Invalid input for Hex.");
    EXPECT_EQ(errorOf(T::hexDecode, "😀"), "Invalid input for Hex (odd length).");
}

TEST(TextTransformTest, HtmlEscape) {
    EXPECT_EQ(run(T::htmlEscape, "<a href=\"x\">Tom's & Jerry</a>"),
              "&lt;a href=&quot;x&quot;&gt;Tom&#39;s &amp; Jerry&lt;/a&gt;");
    EXPECT_EQ(run(T::htmlEscape, "&amp;"), "&amp;amp;");  // one pass over the text as it is
    EXPECT_EQ(run(T::htmlEscape, ""), "");
    EXPECT_EQ(run(T::htmlEscape, kMixed), kMixed);
    // A mark on the sign makes another character, which is no sign.
    EXPECT_EQ(run(T::htmlEscape, "<\u0338 <"), "<\u0338 &lt;");
}

// The HTML parser's library costs memory from the moment it is mapped, so it comes with the
// first HTML transform, not with the program or the other transforms. Run in a fresh process (a
// death test), where no other test has read HTML yet.
TEST(TextTransformDeathTest, TheHtmlParserLoadsAtTheFirstHtmlTransformNotBefore) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            if (TTOps::htmlParserLoaded()) std::_Exit(1);
            if (run(T::htmlEscape, "<b>") != "&lt;b&gt;") std::_Exit(2);
            if (TTOps::htmlParserLoaded()) std::_Exit(3);
            if (run(T::htmlUnescape, "<b>bold</b>") != "bold") std::_Exit(4);
            std::_Exit(TTOps::htmlParserLoaded() ? 0 : 5);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(TextTransformTest, HtmlUnescape) {
    EXPECT_EQ(run(T::htmlUnescape, "Tom &amp; Jerry &lt;3 &quot;x&quot; &#39;y&#39;"), "Tom & Jerry <3 \"x\" 'y'");
    EXPECT_EQ(run(T::htmlUnescape, "&eacute;&#233;&#xE9;&hellip;&nbsp;&check;"), "ééé…\u00a0✓");
    EXPECT_EQ(run(T::htmlUnescape, "<b>bold</b> and <i>italic</i>"), "bold and italic");
    EXPECT_EQ(run(T::htmlUnescape, "  a \n\t  b  "), "a b");
    EXPECT_EQ(run(T::htmlUnescape, "<p>one</p><p>two</p>line<br>break"), "one\ntwo\nline\nbreak");
    EXPECT_EQ(run(T::htmlUnescape, "<pre>a\n  b</pre>"), "a\n  b");
    EXPECT_EQ(run(T::htmlUnescape, "<script>var x = 1;</script><style>p{}</style>text"), "text");
    EXPECT_EQ(run(T::htmlUnescape, "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>"),
              "a\tb\nc");
    EXPECT_EQ(run(T::htmlUnescape, ""), "");
    EXPECT_EQ(run(T::htmlUnescape, kMixed), kMixed);
    EXPECT_EQ(run(T::htmlUnescape, run(T::htmlEscape, "<a & 'b'>")), "<a & 'b'>");
}

TEST(TextTransformTest, UnicodeEscape) {
    EXPECT_EQ(run(T::unicodeEscape, "a\\é😀"), "a\\u005c\\u00e9\\ud83d\\ude00");
    EXPECT_EQ(run(T::unicodeEscape, "\n~\x7f"), "\\u000a~\x7f");
    EXPECT_EQ(run(T::unicodeEscape, "Пe\u0301"), "\\u041fe\\u0301");
    EXPECT_EQ(run(T::unicodeEscape, ""), "");
}

TEST(TextTransformTest, UnicodeUnescape) {
    EXPECT_EQ(run(T::unicodeUnescape, "\\u0041\\u00e9"), "Aé");
    EXPECT_EQ(run(T::unicodeUnescape, "\\ud83d\\ude00"), "\\ud83d\\ude00");  // halves are no scalars
    EXPECT_EQ(run(T::unicodeUnescape, "\\u004"), "\\u004");
    EXPECT_EQ(run(T::unicodeUnescape, "\\u+041"), "A");
    EXPECT_EQ(run(T::unicodeUnescape, "\\u-000"), std::string(1, '\0'));
    EXPECT_EQ(run(T::unicodeUnescape, "\\u-001"), "\\u-001");
    EXPECT_EQ(run(T::unicodeUnescape, "\\U0001F600 \\x41 \\u{41}"), "\\U0001F600 \\x41 \\u{41}");
    EXPECT_EQ(run(T::unicodeUnescape, "\\u041F\\u0440\\u0438"), "При");
    EXPECT_EQ(run(T::unicodeUnescape, "x\\u0041"), "xA");
    EXPECT_EQ(run(T::unicodeUnescape, "\r\n\\u0041\r\\u0042"), "\r\nA\rB");
    EXPECT_EQ(run(T::unicodeUnescape, "п\\u0041"), "пA");
    EXPECT_EQ(run(T::unicodeUnescape, ""), "");
    EXPECT_EQ(run(T::unicodeUnescape, kMixed), kMixed);
    // Positions count characters: a mark on a digit makes the group fail.
    EXPECT_EQ(run(T::unicodeUnescape, "\\u004\u03011x"), "\\u004\u03011x");
    // The round trip holds below U+10000 and leaves the pair above.
    EXPECT_EQ(run(T::unicodeUnescape, run(T::unicodeEscape, "Привет\\e\u0301")), "Привет\\e\u0301");
    EXPECT_EQ(run(T::unicodeUnescape, run(T::unicodeEscape, "😀")), "\\ud83d\\ude00");
}

TEST(TextTransformTest, JsonPretty) {
    EXPECT_EQ(run(T::jsonPretty, "5"), "5");
    EXPECT_EQ(run(T::jsonPretty, R"({"b":1,"a":"x/y"})"), "{\n  \"a\" : \"x/y\",\n  \"b\" : 1\n}");
    EXPECT_EQ(run(T::jsonPretty, R"( {"z":{"y":[1,{"d":null,"c":true}],"x":"п"}} )"),
              "{\n  \"z\" : {\n    \"x\" : \"п\",\n    \"y\" : [\n      1,\n      {\n        \"c\" : true,\n"
              "        \"d\" : null\n      }\n    ]\n  }\n}");
    EXPECT_EQ(run(T::jsonPretty, "\"a\\nb\\u0001\""), "\"a\\nb\\u0001\"");
    EXPECT_EQ(run(T::jsonPretty, "{}"), "{\n\n}");
    EXPECT_EQ(run(T::jsonPretty, "1.0"), "1");
    EXPECT_EQ(run(T::jsonPretty, "1.5"), "1.5");
    EXPECT_EQ(run(T::jsonPretty, "[-0.0,-7e-717,1e300,-2.5e-7]"), "[\n  0,\n  0,\n  1e+300,\n  -2.5e-07\n]");
    EXPECT_EQ(run(T::jsonPretty, "\u00a0[]\n"), "[\n\n]");
    EXPECT_EQ(errorOf(T::jsonPretty, ""), "Invalid input for JSON.");
    EXPECT_EQ(errorOf(T::jsonPretty, "{'b':1}"), "Invalid input for JSON.");
    EXPECT_EQ(errorOf(T::jsonPretty, "[1,]"), "Invalid input for JSON.");
    EXPECT_EQ(errorOf(T::jsonPretty, "1e400"), "Invalid input for JSON.");
    EXPECT_EQ(errorOf(T::jsonPretty, kMixed), "Invalid input for JSON.");
}

TEST(TextTransformTest, JsonMinifyKeepsKeyOrder) {
    EXPECT_EQ(run(T::jsonMinify, "{\n  \"b\" : 1,\n  \"a\" : [ \"x/y\", \"😀\" ]\n}"), R"({"b":1,"a":["x/y","😀"]})");
    EXPECT_EQ(run(T::jsonMinify, "\"Привет\""), "\"Привет\"");
    EXPECT_EQ(run(T::jsonMinify, "{}"), "{}");
    // Every escape, at the start, in the middle and at the end of strings and keys.
    EXPECT_EQ(run(T::jsonMinify, R"(["\"q\"b\\s/\b\f\n\r\t\u0001\u001f é 😀\\",{"k\"":"x","\t":""}])"),
              R"(["\"q\"b\\s/\b\f\n\r\t\u0001\u001f é 😀\\",{"k\"":"x","\t":""}])");
    EXPECT_EQ(errorOf(T::jsonMinify, "{"), "Invalid input for JSON.");
}

TEST(TextTransformTest, JsonNestingUpTo512Levels) {
    const std::string deepest = std::string(512, '[') + std::string(512, ']');
    EXPECT_EQ(run(T::jsonMinify, deepest), deepest);
    EXPECT_EQ(run(T::jsonPretty, deepest).substr(0, 10), "[\n  [\n    ");
    const std::string tooDeep = std::string(513, '[') + std::string(513, ']');
    EXPECT_EQ(errorOf(T::jsonMinify, tooDeep), "Invalid input for JSON.");
    // Brackets inside strings are no nesting.
    const std::string inString = "[\"" + std::string(1000, '[') + "\"]";
    EXPECT_EQ(run(T::jsonMinify, inString), inString);
}

TEST(TextTransformTest, JsonHundredThousandLevelsFailQuickly) {
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_EQ(errorOf(T::jsonPretty, deep), "Invalid input for JSON.");
    EXPECT_EQ(errorOf(T::jsonMinify, deep), "Invalid input for JSON.");
    EXPECT_EQ(errorOf(T::jsonPretty, std::string(100000, '{')), "Invalid input for JSON.");
}

TEST(TextTransformTest, CaseMapping) {
    EXPECT_EQ(run(T::upper, "straße привет"), "STRASSE ПРИВЕТ");
    EXPECT_EQ(run(T::lower, "ÀÉ ПРИВЕТ İ"), "àé привет i\u0307");
    EXPECT_EQ(run(T::titleCase, "hello wORLD"), "Hello World");
    EXPECT_EQ(run(T::titleCase, "привет мИР"), "Привет Мир");
    EXPECT_EQ(run(T::upper, ""), "");
    EXPECT_EQ(run(T::upper, "e\u0301😀"), "E\u0301😀");
}

TEST(TextTransformTest, Reverse) {
    EXPECT_EQ(run(T::reverse, "ab🇩🇪c"), "c🇩🇪ba");
    EXPECT_EQ(run(T::reverse, "e\u0301x"), "xe\u0301");
    EXPECT_EQ(run(T::reverse, "Привет"), "тевирП");
    EXPECT_EQ(run(T::reverse, "👨‍👩‍👧!"), "!👨‍👩‍👧");
    EXPECT_EQ(run(T::reverse, ""), "");
}

TEST(TextTransformTest, Rot13) {
    EXPECT_EQ(run(T::rot13, "Hello, World! Привет"), "Uryyb, Jbeyq! Привет");
    EXPECT_EQ(run(T::rot13, run(T::rot13, kMixed)), kMixed);
    EXPECT_EQ(run(T::rot13, "AZaz"), "NMnm");
    EXPECT_EQ(run(T::rot13, ""), "");
}

TEST(TextTransformTest, Trim) {
    EXPECT_EQ(run(T::trim, " \t\n a b \u00a0\u2028\r\n"), "a b");
    EXPECT_EQ(run(T::trim, "  "), "");
    EXPECT_EQ(run(T::trim, ""), "");
    EXPECT_EQ(run(T::trim, std::string("\n") + std::string(kMixed) + " "), kMixed);
}

TEST(TextTransformTest, UnixToIso) {
    EXPECT_EQ(run(T::unixToISO, "1700000000"), "2023-11-14T22:13:20.000Z");
    EXPECT_EQ(run(T::unixToISO, "1700000000000"), "2023-11-14T22:13:20.000Z");
    EXPECT_EQ(run(T::unixToISO, "10000000000"), "2286-11-20T17:46:40.000Z");
    EXPECT_EQ(run(T::unixToISO, "10000000001"), "1970-04-26T17:46:40.001Z");
    EXPECT_EQ(run(T::unixToISO, " 1700000000.5\n"), "2023-11-14T22:13:20.500Z");
    EXPECT_EQ(run(T::unixToISO, "1.7e9"), "2023-11-14T22:13:20.000Z");
    EXPECT_EQ(run(T::unixToISO, "0"), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(run(T::unixToISO, "-1"), "1969-12-31T23:59:59.000Z");
    EXPECT_EQ(run(T::unixToISO, "-100000000000"), "-1199-02-15T14:13:20.000Z");  // negatives stay seconds
    EXPECT_EQ(errorOf(T::unixToISO, "abc"), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "  "), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, ""), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "12abc"), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "1,5"), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "1e400"), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "nan"), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "-inf"), "Invalid input for Unix timestamp.");
    EXPECT_EQ(errorOf(T::unixToISO, "Привет"), "Invalid input for Unix timestamp.");
}

TEST(TextTransformTest, IsoToUnix) {
    EXPECT_EQ(run(T::isoToUnix, "2023-11-14T22:13:20Z"), "1700000000.0");
    EXPECT_EQ(run(T::isoToUnix, "2023-11-14T22:13:20.123Z"), "1700000000.123");
    EXPECT_EQ(run(T::isoToUnix, " 2023-11-15T00:13:20+02:00\n"), "1700000000.0");
    EXPECT_EQ(run(T::isoToUnix, "1969-12-31T23:59:59.500Z"), "-0.5");
    EXPECT_EQ(run(T::isoToUnix, "2024-02-29T00:00:00Z"), "1709164800.0");
    EXPECT_EQ(errorOf(T::isoToUnix, "2023-11-14"), "Invalid input for ISO 8601.");
    EXPECT_EQ(errorOf(T::isoToUnix, "2023-02-29T00:00:00Z"), "Invalid input for ISO 8601.");
    EXPECT_EQ(errorOf(T::isoToUnix, "2023-11-14T22:13:20.1Z"), "Invalid input for ISO 8601.");
    EXPECT_EQ(errorOf(T::isoToUnix, "2023-11-14T22:13:20"), "Invalid input for ISO 8601.");
    EXPECT_EQ(errorOf(T::isoToUnix, ""), "Invalid input for ISO 8601.");
    EXPECT_EQ(errorOf(T::isoToUnix, kMixed), "Invalid input for ISO 8601.");
    EXPECT_EQ(run(T::isoToUnix, run(T::unixToISO, "1700000000.25")), "1700000000.25");
}

TEST(TextTransformTest, CountStatistics) {
    EXPECT_EQ(run(T::count, ""), "Characters:  0\nWords:       0\nLines:       1\nUTF-8 bytes: 0");
    EXPECT_EQ(run(T::count, "a b\n"), "Characters:  4\nWords:       2\nLines:       2\nUTF-8 bytes: 4");
    EXPECT_EQ(run(T::count, "a b\n", SettingsLanguage::ru),
              "Символов:    4\nСлов:        2\nСтрок:       2\nБайт (UTF-8): 4");
    // "Привет e\u0301 🇩🇪 👨‍👩‍👧!": 6 letters, 3 blanks, é, the flag, the family and "!".
    EXPECT_EQ(run(T::count, kMixed), "Characters:  13\nWords:       4\nLines:       1\nUTF-8 bytes: " +
                                         std::to_string(kMixed.size()));
    EXPECT_EQ(run(T::count, "  один\u2028два\u00a0три  "),
              "Characters:  16\nWords:       3\nLines:       2\nUTF-8 bytes: 29");
    EXPECT_EQ(run(T::count, "\n"), "Characters:  1\nWords:       0\nLines:       2\nUTF-8 bytes: 1");
    EXPECT_EQ(run(T::count, "a\r\nb\n\nc"), "Characters:  6\nWords:       3\nLines:       4\nUTF-8 bytes: 7");
}

TEST(TextTransformTest, EveryTransformTakesTheEmptyTextAndIllFormedBytes) {
    const std::set<T> failOnEmpty{T::hexDecode, T::jsonPretty, T::jsonMinify, T::unixToISO, T::isoToUnix};
    for (T t : kAllTextTransforms) {
        EXPECT_EQ(errorOf(t, "") != "no error", failOnEmpty.count(t) == 1) << id(t);
        try {
            applyTransform(t, "\xff\xc0\x80 a\xed\xa0\x80\xf4\x90\x80\x80 %\xff&#\xff; \\u\xff\xff\xff\xff");
        } catch (const TransformError&) {
        }
    }
}

TEST(TextTransformTest, HtmlBombsEndQuickly) {
    const auto start = std::chrono::steady_clock::now();
    std::string nested;
    for (int i = 0; i < 4000; ++i) nested += "<div>";
    EXPECT_EQ(run(T::htmlUnescape, nested + "x"), "x");
    // Deeper than any page: the parser is not asked, the text comes back as it is.
    for (int i = 0; i < 96000; ++i) nested += "<div>";
    EXPECT_EQ(run(T::htmlUnescape, nested + "x"), nested + "x");
    std::string formatting;
    for (int i = 0; i < 50000; ++i) formatting += "<b><i><a>";
    EXPECT_EQ(run(T::htmlUnescape, formatting + "y"), formatting + "y");
    // Many paragraphs and list items close each other: they are no nesting.
    std::string flat;
    for (int i = 0; i < 20000; ++i) flat += "<p>a<li>b<span>c</span>";
    EXPECT_EQ(run(T::htmlUnescape, flat).size(), 20000u * 5 - 1);  // "a", a break, "bc", a break
    std::string entities;
    for (int i = 0; i < 100000; ++i) entities += "&amp;&#x1F600;&bogus;";
    EXPECT_EQ(run(T::htmlUnescape, entities).size(), 100000u * (1 + 4 + 7));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace orvantis
