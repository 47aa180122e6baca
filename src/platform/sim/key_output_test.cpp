#include "platform/sim/key_output.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/sim/desktop.h"

namespace orvantis::sim {
namespace {

using namespace std::chrono_literals;
namespace keys = platform::key_code;
using platform::key_flags::kCommand;
using platform::key_flags::kShift;

TEST(KeyOutputTest, LogsEveryKeyAndTextInOrder) {
    Desktop desktop;
    auto& out = desktop.keyOutput();
    out.postKey(keys::kDelete, 0);
    out.postKey(keys::kDelete, 0);
    out.typeText("при");
    out.postKey(keys::kLeftArrow, kShift);
    EXPECT_EQ(out.log(), (std::vector<SentKey>{SentKey::key(keys::kDelete), SentKey::key(keys::kDelete),
                                               SentKey::typed("при"), SentKey::key(keys::kLeftArrow, kShift)}));
    EXPECT_EQ(out.count(keys::kDelete), 2u);
    EXPECT_EQ(out.count(keys::kLeftArrow), 0u);
    EXPECT_EQ(out.typedText(), "при");
    out.clearLog();
    EXPECT_TRUE(out.log().empty());
}

TEST(KeyOutputTest, KeysAreLoggedEvenWithNothingFocused) {
    Desktop desktop;
    desktop.keyOutput().copy();
    EXPECT_EQ(desktop.keyOutput().log(), (std::vector<SentKey>{SentKey::key(keys::kC, kCommand)}));
    EXPECT_EQ(desktop.pasteboard().changeCount(), 0);
}

TEST(KeyOutputTest, SyntheticKeysEditTheFocusedField) {
    Desktop desktop;
    desktop.focusTextField("ghbdtn");
    platform::KeyOutput& out = desktop.keyOutput();
    for (int i = 0; i < 6; ++i) out.postKey(keys::kDelete, 0);
    out.typeText("привет");
    EXPECT_EQ(desktop.focusedText(), "привет");
}

TEST(KeyOutputTest, HeldModifiersDoNotChangeWhatIsSent) {
    Desktop desktop;
    auto& field = desktop.focusTextField("x");
    desktop.holdModifiers(kCommand | kShift);
    desktop.keyOutput().postKey(keys::kA, 0);
    EXPECT_EQ(desktop.keyOutput().log().back(), SentKey::key(keys::kA, 0));
    EXPECT_EQ(field.text(), "xa");  // not Command+A
    desktop.keyOutput().postKey(keys::kDelete, 0);
    EXPECT_EQ(field.text(), "x");
    desktop.keyOutput().typeText("y");
    EXPECT_EQ(field.text(), "xy");
}

TEST(KeyOutputTest, CopyAndPasteAreCommandCAndCommandV) {
    Desktop desktop;
    auto& field = desktop.focusTextField("hello world");
    ASSERT_TRUE(field.select({0, 5}));
    desktop.keyOutput().copy();
    EXPECT_EQ(desktop.pasteboard().text(), "hello");
    desktop.pasteboard().write(platform::PasteboardItem::text("bye"));
    desktop.keyOutput().paste();
    EXPECT_EQ(field.text(), "bye world");
    EXPECT_EQ(desktop.keyOutput().log(),
              (std::vector<SentKey>{SentKey::key(keys::kC, kCommand), SentKey::key(keys::kV, kCommand)}));
}

TEST(KeyOutputTest, WithALatencyKeysArriveInOrderOnTheLoop) {
    Desktop desktop;
    desktop.focusTextField("ghbdtn");
    desktop.setSyntheticKeyLatency(5ms);
    auto& out = desktop.keyOutput();
    for (int i = 0; i < 6; ++i) out.postKey(keys::kDelete, 0);
    out.typeText("привет");
    EXPECT_EQ(desktop.focusedText(), "ghbdtn");
    EXPECT_EQ(out.log().size(), 7u);
    desktop.loop().runFor(4ms);
    EXPECT_EQ(desktop.focusedText(), "ghbdtn");
    desktop.loop().runFor(1ms);
    EXPECT_EQ(desktop.focusedText(), "привет");
}

TEST(KeyOutputTest, ACopyWithALatencyIsNotOnThePasteboardYet) {
    Desktop desktop;
    auto& field = desktop.focusTextField("word");
    field.selectAll();
    desktop.pasteboard().writeTextFromOtherApp("old");
    desktop.setSyntheticKeyLatency(200ms);
    desktop.keyOutput().copy();
    desktop.loop().runFor(150ms);
    EXPECT_EQ(desktop.pasteboard().text(), "old");
    desktop.loop().runFor(50ms);
    EXPECT_EQ(desktop.pasteboard().text(), "word");
}

TEST(KeyOutputTest, SentKeysPrintReadably) {
    std::ostringstream out;
    out << SentKey::key(keys::kC, kCommand) << "; " << SentKey::typed("ok");
    EXPECT_EQ(out.str(), "key 8 flags 0x100000; text \"ok\"");
}

}  // namespace
}  // namespace orvantis::sim
