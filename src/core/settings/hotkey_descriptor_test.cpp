#include "core/settings/hotkey_descriptor.h"

#include <gtest/gtest.h>

namespace orvantis {
namespace {

TEST(HotkeyDescriptorTest, EncodesExactlyKeyCodeAndModifiers) {
    EXPECT_EQ((HotkeyDescriptor{51, 0x20000}).toJson(), R"({"keyCode":51,"modifiers":131072})");
    EXPECT_EQ((HotkeyDescriptor{65535, UINT64_MAX}).toJson(),
              R"({"keyCode":65535,"modifiers":18446744073709551615})");
}

TEST(HotkeyDescriptorTest, DecodesItsOwnFormAndToleratesOtherKeysAndOrder) {
    EXPECT_EQ(HotkeyDescriptor::fromJson(R"({"keyCode":51,"modifiers":131072})"), (HotkeyDescriptor{51, 0x20000}));
    EXPECT_EQ(HotkeyDescriptor::fromJson(R"( {"modifiers":393216, "extra":[1], "keyCode":7} )"),
              (HotkeyDescriptor{7, 0x60000}));
    EXPECT_EQ(HotkeyDescriptor::fromJson(R"({"keyCode":51.0,"modifiers":131072})"), (HotkeyDescriptor{51, 0x20000}));
}

TEST(HotkeyDescriptorTest, AnythingElseDoesNotDecode) {
    for (const char* bad : {"", "null", "[]", "{}", "garbage", R"({"keyCode":51})", R"({"modifiers":1})",
                            R"({"keyCode":-1,"modifiers":0})", R"({"keyCode":65536,"modifiers":0})",
                            R"({"keyCode":"51","modifiers":0})", R"({"keyCode":51,"modifiers":-5})",
                            R"({"keyCode":51.5,"modifiers":0})", R"({"keyCode":51,"modifiers":1e30})",
                            R"({"keyCode":51,"modifiers":131072)", "\xff\xfe"}) {
        EXPECT_FALSE(HotkeyDescriptor::fromJson(bad).has_value()) << bad;
    }
}

TEST(HotkeyDescriptorTest, DisplayStringOrdersModifiersControlOptionShiftCommand) {
    EXPECT_EQ((HotkeyDescriptor{51, 0x20000}).displayString(), "⇧⌫");
    EXPECT_EQ((HotkeyDescriptor{7, 0x60000}).displayString(), "⌃⇧X");
    EXPECT_EQ((HotkeyDescriptor{7, 0xC0000}).displayString(), "⌃⌥X");
    EXPECT_EQ((HotkeyDescriptor{0, 0x1E0000}).displayString(), "⌃⌥⇧⌘A");
    EXPECT_EQ((HotkeyDescriptor{49, 0}).displayString(), "Space");
}

TEST(HotkeyDescriptorTest, NamedKeysAndTheUsLayoutCharacters) {
    EXPECT_EQ(HotkeyDescriptor::keyName(36), "↩");
    EXPECT_EQ(HotkeyDescriptor::keyName(53), "⎋");
    EXPECT_EQ(HotkeyDescriptor::keyName(123), "←");
    EXPECT_EQ(HotkeyDescriptor::keyName(124), "→");
    EXPECT_EQ(HotkeyDescriptor::keyName(125), "↓");
    EXPECT_EQ(HotkeyDescriptor::keyName(126), "↑");
    EXPECT_EQ(HotkeyDescriptor::keyName(39), "'");
    EXPECT_EQ(HotkeyDescriptor::keyName(42), "\\");
    EXPECT_EQ(HotkeyDescriptor::keyName(50), "`");
    EXPECT_EQ(HotkeyDescriptor::keyName(22), "6");
    EXPECT_EQ(HotkeyDescriptor::keyName(23), "5");
    EXPECT_EQ(HotkeyDescriptor::keyName(46), "M");
}

TEST(HotkeyDescriptorTest, FunctionKeysAndOtherCodesShowTheirNumber) {
    EXPECT_EQ((HotkeyDescriptor{122, 0}).displayString(), "(122)");  // F1
    EXPECT_EQ((HotkeyDescriptor{10, 0x100000}).displayString(), "⌘(10)");
    EXPECT_EQ(HotkeyDescriptor::keyName(48), "(48)");
}

TEST(HotkeyDescriptorTest, HasModifierLooksAtTheFourBitsOnly) {
    EXPECT_FALSE((HotkeyDescriptor{0, 0}).hasModifier());
    EXPECT_FALSE((HotkeyDescriptor{0, 0x10000}).hasModifier());  // caps lock
    EXPECT_TRUE((HotkeyDescriptor{0, 0x100000}).hasModifier());
    EXPECT_EQ((HotkeyDescriptor{0, 0x60000}).cgModifiers(), 0x60000u);
}

}  // namespace
}  // namespace orvantis

namespace orvantis {
namespace {

TEST(HotkeyDescriptorTest, TheCanonicalFormAndTheGeneralParserAgree) {
    for (const char* json : {R"({"keyCode":0,"modifiers":0})", R"({"keyCode":65535,"modifiers":18446744073709551615})",
                             R"({"keyCode":65536,"modifiers":0})", R"({"keyCode":51,"modifiers":18446744073709551616})",
                             R"({"keyCode":,"modifiers":1})", R"({"keyCode":1,"modifiers":})",
                             R"({"keyCode":007,"modifiers":1})", R"({"keyCode":1,"modifiers":2,"x":3})"}) {
        const auto viaFast = HotkeyDescriptor::fromJson(json);
        const auto padded = HotkeyDescriptor::fromJson(std::string(" ") + json);  // not canonical: full parser
        EXPECT_EQ(viaFast, padded) << json;
    }
}

}  // namespace
}  // namespace orvantis
