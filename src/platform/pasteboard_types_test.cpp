#include "platform/pasteboard_types.h"

#include <gtest/gtest.h>

namespace orvantis::platform {
namespace {

namespace type = pasteboard_type;

TEST(PasteboardTypesTest, MimeNamesAndXTargetsMapToTheCoresTypes) {
    EXPECT_EQ(typeForMime("text/plain;charset=utf-8"), type::kText);
    EXPECT_EQ(typeForMime("UTF8_STRING"), type::kText);
    EXPECT_EQ(typeForMime("STRING"), type::kText);
    EXPECT_EQ(typeForMime("text/plain;charset=UTF-8"), type::kText);
    EXPECT_EQ(typeForMime("text/uri-list"), type::kFileURL);
    EXPECT_EQ(typeForMime("application/rtf"), type::kRTF);
    EXPECT_EQ(typeForMime("image/webp"), "image/webp");
    EXPECT_EQ(mimesForType(type::kText),
              (std::vector<std::string>{"text/plain;charset=utf-8", "UTF8_STRING", "text/plain"}));
    EXPECT_EQ(mimesForType("image/webp"), std::vector<std::string>{"image/webp"});
}

TEST(PasteboardTypesTest, OnlyContentTargetsAreTypes) {
    for (const char* target : {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "TEXT", "COMPOUND_TEXT"})
        EXPECT_FALSE(isContentTarget(target)) << target;
    for (const char* target : {"UTF8_STRING", "STRING", "text/html", "org.nspasteboard.ConcealedType",
                               "x-kde-passwordManagerHint"})
        EXPECT_TRUE(isContentTarget(target)) << target;
}

TEST(PasteboardTypesTest, TextIsAskedForInUtf8FirstAndLatin1Last) {
    const std::vector<std::string> targets = targetsForType(type::kText);
    ASSERT_FALSE(targets.empty());
    EXPECT_EQ(targets.front(), "UTF8_STRING");
    EXPECT_EQ(targets.back(), "STRING");
    EXPECT_EQ(targetsForType(type::kConcealed), std::vector<std::string>{std::string(type::kConcealed)});
    EXPECT_EQ(latin1ToUtf8("caf\xE9"), "café");
}

TEST(PasteboardTypesTest, ASecretGoesOutWithBothMarkersAndEachTypeUnderAllItsNames) {
    PasteboardItem item = PasteboardItem::text("hunter2");
    item.representations.emplace_back(std::string(type::kConcealed), std::string("\x01", 1));
    const auto native = nativeRepresentations(item);
    std::vector<std::string> names;
    for (const auto& [name, bytes] : native) names.push_back(name);
    EXPECT_EQ(names, (std::vector<std::string>{"text/plain;charset=utf-8", "UTF8_STRING", "text/plain",
                                               std::string(type::kConcealed), std::string(type::kPasswordManagerHint)}));
    EXPECT_EQ(native.back().second, "secret");
    EXPECT_EQ(nativeRepresentations(PasteboardItem::text("plain")).size(), 3u);
}

}  // namespace
}  // namespace orvantis::platform
