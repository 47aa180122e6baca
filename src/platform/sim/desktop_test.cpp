#include "platform/sim/desktop.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

// --- The event tap and the input sources ------------------------------------------------------

/// A tap handler that records every key down and swallows the keys in `swallowed`.
struct TapRecorder {
    std::vector<platform::KeyEvent> keyDowns;
    std::vector<std::uint16_t> swallowed;
    platform::EventTap::Handler handler() {
        return [this](const platform::KeyEvent& event) {
            if (event.type != platform::KeyEvent::Type::keyDown) return platform::EventDisposition::pass;
            keyDowns.push_back(event);
            for (const auto code : swallowed)
                if (code == event.keyCode) return platform::EventDisposition::swallow;
            return platform::EventDisposition::pass;
        };
    }
};

TEST(DesktopTest, TheCurrentInputSourceDecidesWhatAKeyTypes) {
    Desktop desktop;
    ASSERT_TRUE(desktop.inputSources().addXkb("us", "", "English (US)", {"en"}));
    ASSERT_TRUE(desktop.inputSources().addXkb("ru", "", "Russian", {"ru"}));
    auto& field = desktop.focusTextField("");
    desktop.press(5);
    ASSERT_TRUE(desktop.inputSources().select("ru"));
    desktop.press(5);
    desktop.press(5, kShift);
    EXPECT_EQ(field.text(), "gпП");
    EXPECT_EQ(desktop.charactersFor(5, kCommand), "");
    desktop.pressKeysOf("ghbdtn");
    EXPECT_EQ(field.text(), "gпПпривет");
}

TEST(DesktopTest, ControlCharactersOfALayoutAreNoTextForTheField) {
    Desktop desktop;
    ASSERT_TRUE(desktop.inputSources().addXkb("us", "", "English (US)", {"en"}));
    auto& field = desktop.focusTextField("ab");
    desktop.press(keys::kReturn);
    desktop.press(keys::kDelete);
    EXPECT_EQ(field.text(), "a");
}

TEST(DesktopTest, EveryKeyPassesTheTapAndSwallowedGrabbedKeysNeverReachTheField) {
    Desktop desktop;
    TapRecorder recorder;
    recorder.swallowed = {keys::kDelete, 5};
    ASSERT_TRUE(desktop.eventTap().start(recorder.handler()));
    desktop.eventTap().setGrabbedHotkeys({{keys::kDelete, kShift}});
    auto& field = desktop.focusTextField("ab");

    desktop.press(keys::kDelete, kShift);  // grabbed and swallowed
    EXPECT_EQ(field.text(), "ab");
    desktop.press(5);  // swallowed, but not grabbed: the field gets it all the same
    EXPECT_EQ(field.text(), "abg");
    desktop.type("Ж ");
    EXPECT_EQ(field.text(), "abgЖ ");

    ASSERT_EQ(recorder.keyDowns.size(), 4u);
    EXPECT_EQ(recorder.keyDowns[0].flags, kShift);
    EXPECT_EQ(recorder.keyDowns[1].characters, "g");
    EXPECT_EQ(recorder.keyDowns[2].characters, "Ж");
    EXPECT_EQ(recorder.keyDowns[3].keyCode, keys::kSpace);
}

TEST(DesktopTest, TypedTextUsesTheKeyOfTheCurrentSource) {
    Desktop desktop;
    ASSERT_TRUE(desktop.inputSources().addXkb("ru", "", "Russian", {"ru"}));
    TapRecorder recorder;
    ASSERT_TRUE(desktop.eventTap().start(recorder.handler()));
    desktop.focusTextField("");
    desktop.type("пG");
    ASSERT_EQ(recorder.keyDowns.size(), 2u);
    EXPECT_EQ(recorder.keyDowns[0].keyCode, 5);
    EXPECT_EQ(recorder.keyDowns[0].flags, 0u);
    // Not in the Russian table: found on a US keyboard.
    EXPECT_EQ(recorder.keyDowns[1].keyCode, 5);
    EXPECT_EQ(recorder.keyDowns[1].flags, kShift);
}

TEST(DesktopTest, TheProgramsSyntheticKeysPassTheTapToo) {
    Desktop desktop;
    TapRecorder recorder;
    ASSERT_TRUE(desktop.eventTap().start(recorder.handler()));
    auto& field = desktop.focusTextField("ab");
    desktop.keyOutput().postKey(keys::kDelete, 0);
    desktop.keyOutput().typeText("ж");
    EXPECT_EQ(field.text(), "aж");
    ASSERT_EQ(recorder.keyDowns.size(), 2u);
    EXPECT_EQ(recorder.keyDowns[0].keyCode, keys::kDelete);
    EXPECT_EQ(recorder.keyDowns[1].keyCode, 0);
    EXPECT_EQ(recorder.keyDowns[1].characters, "ж");
}

}  // namespace
}  // namespace orvantis::sim
