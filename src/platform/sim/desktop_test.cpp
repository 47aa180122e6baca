#include "platform/sim/desktop.h"

#include <gtest/gtest.h>

#include <string>

namespace orvantis::sim {
namespace {

namespace keys = platform::key_code;
using platform::TextRange;
using platform::key_flags::kCommand;
using platform::key_flags::kShift;

TEST(DesktopTest, TheUserTypesAndEditsTheFocusedField) {
    Desktop desktop;
    desktop.focusTextField("");
    desktop.type("ghbdtn");
    desktop.press(keys::kDelete);
    desktop.type("n мир");
    EXPECT_EQ(desktop.focusedText(), "ghbdtn мир");
}

TEST(DesktopTest, KeysTypeTheCharactersOfAUsKeyboard) {
    Desktop desktop;
    desktop.focusTextField("");
    desktop.press(keys::kA, kShift);
    desktop.press(keys::kSpace);
    desktop.press(keys::kC);
    desktop.press(keys::kSpace, kShift);
    desktop.press(18, kShift);
    desktop.press(keys::kReturn);
    EXPECT_EQ(desktop.focusedText(), "A c !");
}

TEST(DesktopTest, HeldModifiersJoinTheUsersPresses) {
    Desktop desktop;
    auto& field = desktop.focusTextField("abc");
    desktop.holdModifiers(kCommand);
    EXPECT_EQ(desktop.heldModifiers(), kCommand);
    desktop.press(keys::kA);
    EXPECT_EQ(field.selectedRange(), (TextRange{0, 3}));
    desktop.holdModifiers(0);
    desktop.press(keys::kA);
    EXPECT_EQ(field.text(), "a");
}

TEST(DesktopTest, FocusTextFieldStartsAFreshFieldWithTheCaretAtTheEnd) {
    Desktop desktop;
    desktop.focusTextField("old").setSecure(true);
    auto& field = desktop.focusTextField("\U0001F600ok");
    EXPECT_FALSE(field.isSecure());
    EXPECT_EQ(desktop.focusedField(), &field);
    EXPECT_EQ(field.selectedRange(), (TextRange{4, 0}));
    EXPECT_EQ(desktop.focusedApplication(), Desktop::kDefaultApplication);
}

TEST(DesktopTest, NamedFieldsKeepTheirOwnTextAcrossFocusChanges) {
    Desktop desktop;
    auto& search = desktop.addTextField("search", "", "org.example.browser");
    auto& editor = desktop.addTextField("editor", "draft");
    desktop.focus(search);
    desktop.type("query");
    EXPECT_EQ(desktop.focusedApplication(), "org.example.browser");
    desktop.focus(editor);
    desktop.type("!");
    EXPECT_EQ(search.text(), "query");
    EXPECT_EQ(editor.text(), "draft!");
    EXPECT_EQ(desktop.textField("search"), &search);
    EXPECT_EQ(desktop.textField("none"), nullptr);
}

TEST(DesktopTest, WithoutATextFieldInFocusNothingIsTypedOrRead) {
    Desktop desktop;
    auto& field = desktop.addTextField("f", "abc");
    desktop.type("x");
    EXPECT_EQ(desktop.focusedText(), "");
    EXPECT_EQ(desktop.accessibility().focusedTextElement(), nullptr);
    desktop.focusNonTextElement("org.example.player");
    desktop.press(keys::kDelete);
    desktop.keyOutput().typeText("y");
    EXPECT_EQ(desktop.accessibility().focusedTextElement(), nullptr);
    EXPECT_EQ(desktop.focusedApplication(), "org.example.player");
    EXPECT_EQ(field.text(), "abc");
    desktop.clearFocus();
    EXPECT_EQ(desktop.focusedApplication(), "");
}

TEST(DesktopTest, AccessibilityFollowsTheFocus) {
    Desktop desktop;
    auto& first = desktop.addTextField("first", "one");
    desktop.addTextField("second", "two");
    desktop.focus(first);
    EXPECT_EQ(desktop.accessibility().focusedTextElement()->value(), "one");
    desktop.focus(*desktop.textField("second"));
    EXPECT_EQ(desktop.accessibility().focusedTextElement()->value(), "two");
}

TEST(DesktopTest, ReplacingOrRemovingAFieldMakesItsElementsVanish) {
    Desktop desktop;
    desktop.focusTextField("before");
    auto element = desktop.accessibility().focusedTextElement();
    desktop.focusTextField("after");
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_EQ(desktop.accessibility().focusedTextElement()->value(), "after");
    auto second = desktop.accessibility().focusedTextElement();
    desktop.removeTextField(Desktop::kDefaultFieldName);
    EXPECT_EQ(second->value(), std::nullopt);
    EXPECT_EQ(desktop.focusedField(), nullptr);
    EXPECT_EQ(desktop.focusedText(), "");
}

TEST(DesktopTest, ACopyThroughKeysReachesThePasteboardAndItsCount) {
    Desktop desktop;
    auto& field = desktop.focusTextField("translate this");
    ASSERT_TRUE(field.select({10, 4}));
    const auto before = desktop.pasteboard().changeCount();
    desktop.keyOutput().copy();
    EXPECT_EQ(desktop.pasteboard().changeCount(), before + 1);
    EXPECT_EQ(desktop.pasteboard().text(), "this");
    EXPECT_EQ(desktop.pasteboard().writes().back().application, Desktop::kDefaultApplication);
}

TEST(DesktopTest, CopyFromASecureFieldLeavesThePreviousClipboard) {
    Desktop desktop;
    auto& field = desktop.focusTextField("hunter2");
    field.setSecure(true);
    field.selectAll();
    desktop.pasteboard().writeTextFromOtherApp("previous");
    const auto before = desktop.pasteboard().changeCount();
    desktop.keyOutput().copy();
    EXPECT_EQ(desktop.pasteboard().changeCount(), before);
    EXPECT_EQ(desktop.pasteboard().text(), "previous");
}

TEST(DesktopTest, TheUserCutsAndPastesWithTheShortcuts) {
    Desktop desktop;
    auto& field = desktop.focusTextField("one two");
    desktop.press(keys::kLeftArrow, kShift);
    desktop.press(keys::kLeftArrow, kShift);
    desktop.press(keys::kLeftArrow, kShift);
    desktop.press(keys::kX, kCommand);
    EXPECT_EQ(field.text(), "one ");
    desktop.press(keys::kUpArrow);
    desktop.press(keys::kV, kCommand);
    EXPECT_EQ(field.text(), "twoone ");
    EXPECT_TRUE(desktop.keyOutput().log().empty());
}

TEST(DesktopTest, TypingGoesByGraphemeCluster) {
    Desktop desktop;
    auto& field = desktop.focusTextField("");
    desktop.type("\U0001F1F7\U0001F1FAe\u0301");
    EXPECT_EQ(field.selectedRange(), (TextRange{6, 0}));
    desktop.press(keys::kDelete);
    desktop.press(keys::kDelete);
    EXPECT_EQ(field.text(), "");
}

}  // namespace
}  // namespace orvantis::sim
