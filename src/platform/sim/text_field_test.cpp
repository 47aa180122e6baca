#include "platform/sim/text_field.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/sim/pasteboard.h"

#include "platform/key_output.h"

namespace orvantis::sim {
namespace {

namespace keys = platform::key_code;
using platform::TextRange;
using platform::key_flags::kCommand;
using platform::key_flags::kControl;
using platform::key_flags::kOption;
using platform::key_flags::kShift;

class TextFieldTest : public ::testing::Test {
protected:
    TextField& make(std::string_view text) {
        field_ = std::make_unique<TextField>("field", "org.example.editor", pasteboard_, text);
        return *field_;
    }

    Pasteboard pasteboard_;
    std::unique_ptr<TextField> field_;
};

const std::string kThumb = "\U0001F44D\U0001F3FD";                                    // 4 UTF-16 units
const std::string kFlag = "\U0001F1F7\U0001F1FA";                                     // 4 UTF-16 units
const std::string kFamily = "\U0001F468\u200D\U0001F469\u200D\U0001F467";           // 8 UTF-16 units
const std::string kAccented = "e\u0301";                                              // 2 UTF-16 units

TEST_F(TextFieldTest, StartsWithTheCaretAtTheEnd) {
    auto& field = make("привет");
    EXPECT_EQ(field.text(), "привет");
    EXPECT_EQ(field.selectedRange(), (TextRange{6, 0}));
    EXPECT_EQ(field.selectedText(), "");
}

TEST_F(TextFieldTest, TypingInsertsAtTheCaretAndReplacesTheSelection) {
    auto& field = make("hello world");
    ASSERT_TRUE(field.select({5, 0}));
    field.insertText(",");
    EXPECT_EQ(field.text(), "hello, world");
    EXPECT_EQ(field.selectedRange(), (TextRange{6, 0}));
    ASSERT_TRUE(field.select({7, 5}));
    field.insertText("мир");
    EXPECT_EQ(field.text(), "hello, мир");
    EXPECT_EQ(field.selectedRange(), (TextRange{10, 0}));
}

TEST_F(TextFieldTest, BackspaceDeletesOneWholeGraphemeClusterAtATime) {
    auto& field = make("a" + kThumb + kFlag + kAccented + "й" + kFamily);
    const std::vector<std::string> expected = {
        "a" + kThumb + kFlag + kAccented + "й", "a" + kThumb + kFlag + kAccented, "a" + kThumb + kFlag,
        "a" + kThumb, "a", ""};
    for (const auto& text : expected) {
        EXPECT_TRUE(field.pressKey(keys::kDelete, 0));
        EXPECT_EQ(field.text(), text);
    }
    EXPECT_TRUE(field.pressKey(keys::kDelete, 0));  // at the start: used, changes nothing
    EXPECT_EQ(field.text(), "");
    EXPECT_TRUE(field.ignoredKeys().empty());
}

TEST_F(TextFieldTest, ShiftBackspaceStillDeletesOneCluster) {
    auto& field = make("ghbdtn");
    field.pressKey(keys::kDelete, kShift);
    EXPECT_EQ(field.text(), "ghbdt");
}

TEST_F(TextFieldTest, BackspaceWithASelectionDeletesOnlyTheSelection) {
    auto& field = make("привет мир");
    ASSERT_TRUE(field.select({0, 6}));
    field.pressKey(keys::kDelete, 0);
    EXPECT_EQ(field.text(), " мир");
    EXPECT_EQ(field.selectedRange(), (TextRange{0, 0}));
}

TEST_F(TextFieldTest, ForwardDeleteRemovesTheClusterAfterTheCaret) {
    auto& field = make(kFlag + "x" + kFamily);
    ASSERT_TRUE(field.select({0, 0}));
    field.pressKey(keys::kForwardDelete, 0);
    EXPECT_EQ(field.text(), "x" + kFamily);
    field.pressKey(keys::kRightArrow, 0);
    field.pressKey(keys::kForwardDelete, 0);
    EXPECT_EQ(field.text(), "x");
    field.pressKey(keys::kForwardDelete, 0);  // at the end
    EXPECT_EQ(field.text(), "x");
}

TEST_F(TextFieldTest, ArrowsMoveByClusterAndCountInUtf16Units) {
    auto& field = make("a" + kThumb + "b");
    EXPECT_EQ(field.selectedRange(), (TextRange{6, 0}));
    field.pressKey(keys::kLeftArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{5, 0}));
    field.pressKey(keys::kLeftArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{1, 0}));
    field.pressKey(keys::kRightArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{5, 0}));
    field.pressKey(keys::kUpArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{0, 0}));
    field.pressKey(keys::kLeftArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{0, 0}));
    field.pressKey(keys::kDownArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{6, 0}));
}

TEST_F(TextFieldTest, ShiftArrowsExtendTheSelectionFromTheAnchor) {
    auto& field = make("\U0001F600ab");
    field.pressKey(keys::kLeftArrow, kShift);
    field.pressKey(keys::kLeftArrow, kShift);
    EXPECT_EQ(field.selectedRange(), (TextRange{2, 2}));
    EXPECT_EQ(field.selectedText(), "ab");
    field.pressKey(keys::kLeftArrow, kShift);
    EXPECT_EQ(field.selectedRange(), (TextRange{0, 4}));
    EXPECT_EQ(field.selectedText(), "\U0001F600ab");
    field.pressKey(keys::kRightArrow, kShift);
    EXPECT_EQ(field.selectedText(), "ab");
}

TEST_F(TextFieldTest, PlainArrowsCollapseTheSelection) {
    auto& field = make("abcd");
    ASSERT_TRUE(field.select({1, 2}));
    field.pressKey(keys::kLeftArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{1, 0}));
    ASSERT_TRUE(field.select({1, 2}));
    field.pressKey(keys::kRightArrow, 0);
    EXPECT_EQ(field.selectedRange(), (TextRange{3, 0}));
}

TEST_F(TextFieldTest, SelectingInsideAClusterWidensToTheWholeCluster) {
    auto& field = make("a" + kFlag + "b");
    ASSERT_TRUE(field.select({2, 1}));  // inside the first regional indicator's surrogate pair
    EXPECT_EQ(field.selectedRange(), (TextRange{1, 4}));
    EXPECT_EQ(field.selectedText(), kFlag);
    ASSERT_TRUE(field.select({3, 0}));  // a caret between the two regional indicators
    EXPECT_EQ(field.selectedRange(), (TextRange{1, 4}));
}

TEST_F(TextFieldTest, SelectingPastTheEndFailsAndKeepsTheSelection) {
    auto& field = make("abc");
    ASSERT_TRUE(field.select({1, 1}));
    EXPECT_FALSE(field.select({2, 2}));
    EXPECT_FALSE(field.select({4, 0}));
    EXPECT_EQ(field.selectedRange(), (TextRange{1, 1}));
    EXPECT_TRUE(field.select({3, 0}));
}

TEST_F(TextFieldTest, ACombiningMarkJoinsTheClusterBeforeIt) {
    auto& field = make("");
    field.insertText("e");
    field.insertText("\u0301");
    EXPECT_EQ(field.selectedRange(), (TextRange{2, 0}));
    field.pressKey(keys::kDelete, 0);
    EXPECT_EQ(field.text(), "");
}

TEST_F(TextFieldTest, TheCaretNeverStaysInsideAClusterThatTypingCompleted) {
    auto& field = make("\u0301");
    ASSERT_TRUE(field.select({0, 0}));
    field.insertText("e");  // joins the mark that follows
    EXPECT_EQ(field.text(), kAccented);
    EXPECT_EQ(field.selectedRange(), (TextRange{2, 0}));
}

TEST_F(TextFieldTest, PrintableKeysTypeTheirCharacters) {
    auto& field = make("");
    EXPECT_TRUE(field.pressKey(keys::kA, kShift, "A"));
    EXPECT_TRUE(field.pressKey(keys::kSpace, 0, " "));
    EXPECT_EQ(field.text(), "A ");
}

TEST_F(TextFieldTest, CommandASelectsAll) {
    auto& field = make("мир" + kThumb);
    ASSERT_TRUE(field.select({0, 0}));
    field.pressKey(keys::kA, kCommand);
    EXPECT_EQ(field.selectedRange(), (TextRange{0, 7}));
}

TEST_F(TextFieldTest, CommandCCopiesTheSelectionAsTheApplication) {
    auto& field = make("hello world");
    ASSERT_TRUE(field.select({6, 5}));
    const auto before = pasteboard_.changeCount();
    EXPECT_TRUE(field.pressKey(keys::kC, kCommand));
    EXPECT_EQ(pasteboard_.changeCount(), before + 1);
    EXPECT_EQ(pasteboard_.text(), "world");
    ASSERT_EQ(pasteboard_.writes().size(), 1u);
    EXPECT_EQ(pasteboard_.writes().back().application, "org.example.editor");
    EXPECT_EQ(field.text(), "hello world");
}

TEST_F(TextFieldTest, CopyWithoutASelectionLeavesThePasteboardAlone) {
    auto& field = make("hello");
    pasteboard_.writeTextFromOtherApp("old");
    const auto before = pasteboard_.changeCount();
    EXPECT_FALSE(field.pressKey(keys::kC, kCommand));
    EXPECT_EQ(pasteboard_.changeCount(), before);
    EXPECT_EQ(pasteboard_.text(), "old");
    EXPECT_EQ(field.ignoredKeys(), (std::vector<KeyStroke>{{keys::kC, kCommand}}));
}

TEST_F(TextFieldTest, CommandXCutsTheSelection) {
    auto& field = make("cut me");
    ASSERT_TRUE(field.select({0, 4}));
    field.pressKey(keys::kX, kCommand);
    EXPECT_EQ(field.text(), "me");
    EXPECT_EQ(pasteboard_.text(), "cut ");
    EXPECT_EQ(pasteboard_.changeCount(), 1);
}

TEST_F(TextFieldTest, CommandVPastesThePasteboardTextOverTheSelection) {
    auto& field = make("say ghbdtn");
    ASSERT_TRUE(field.select({4, 6}));
    pasteboard_.write(platform::PasteboardItem::text("привет"));
    EXPECT_TRUE(field.pressKey(keys::kV, kCommand));
    EXPECT_EQ(field.text(), "say привет");
    EXPECT_EQ(field.selectedRange(), (TextRange{10, 0}));
}

TEST_F(TextFieldTest, PasteWithoutTextChangesNothing) {
    auto& field = make("abc");
    pasteboard_.writeFromOtherApp(platform::PasteboardItem{{{"public.png", "PNG"}}});
    EXPECT_FALSE(field.pressKey(keys::kV, kCommand));
    EXPECT_EQ(field.text(), "abc");
}

TEST_F(TextFieldTest, CommandZIsRecordedAndIgnored) {
    auto& field = make("abc");
    field.pressKey(keys::kDelete, 0);
    EXPECT_FALSE(field.pressKey(keys::kZ, kCommand));
    EXPECT_EQ(field.text(), "ab");
    EXPECT_EQ(field.ignoredKeys(), (std::vector<KeyStroke>{{keys::kZ, kCommand}}));
}

TEST_F(TextFieldTest, OtherModifiersMakeKeysThatTheFieldIgnores) {
    auto& field = make("abc");
    EXPECT_FALSE(field.pressKey(keys::kA, kControl, "a"));
    EXPECT_FALSE(field.pressKey(keys::kDelete, kOption));
    EXPECT_FALSE(field.pressKey(keys::kC, kCommand | kShift));
    EXPECT_FALSE(field.pressKey(keys::kReturn, 0));
    EXPECT_EQ(field.text(), "abc");
    EXPECT_EQ(field.ignoredKeys().size(), 4u);
}

TEST_F(TextFieldTest, ASecureFieldTakesTypingButRefusesCopyAndCut) {
    auto& field = make("hunter");
    field.setSecure(true);
    field.insertText("2");
    EXPECT_EQ(field.text(), "hunter2");
    field.selectAll();
    EXPECT_FALSE(field.pressKey(keys::kC, kCommand));
    EXPECT_FALSE(field.pressKey(keys::kX, kCommand));
    EXPECT_EQ(pasteboard_.changeCount(), 0);
    EXPECT_EQ(field.text(), "hunter2");
}

TEST_F(TextFieldTest, SetTextPutsTheCaretAtTheEnd) {
    auto& field = make("abc");
    ASSERT_TRUE(field.select({0, 1}));
    field.setText(kThumb);
    EXPECT_EQ(field.selectedRange(), (TextRange{4, 0}));
}

}  // namespace
}  // namespace orvantis::sim
