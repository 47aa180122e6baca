#include "core/permissions/synthetic_keystrokes.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/key_output.h"
#include "platform/pasteboard.h"
#include "platform/sim/desktop.h"
#include "platform/sim/key_output.h"

namespace orvantis {
namespace {

namespace keys = platform::key_code;
namespace flags = platform::key_flags;
using sim::SentKey;

TEST(SyntheticKeystrokesTest, PostKeySendsOneKeyWithExactlyTheGivenFlags) {
    sim::Desktop desktop;
    SyntheticKeystrokes keystrokes(desktop.keyOutput());
    keystrokes.postKey(keys::kDelete, 0);
    keystrokes.postKey(keys::kLeftArrow, flags::kShift | flags::kOption);
    EXPECT_EQ(desktop.keyOutput().log(),
              (std::vector<SentKey>{SentKey::key(keys::kDelete, 0),
                                    SentKey::key(keys::kLeftArrow, flags::kShift | flags::kOption)}));
}

TEST(SyntheticKeystrokesTest, PostCmdKeyUsesTheCommandBitAlone) {
    sim::Desktop desktop;
    SyntheticKeystrokes keystrokes(desktop.keyOutput());
    keystrokes.postCmdKey(keys::kA);
    EXPECT_EQ(desktop.keyOutput().log(), std::vector<SentKey>{SentKey::key(keys::kA, 0x100000)});
}

TEST(SyntheticKeystrokesTest, CopyAndPasteAreCommandCAndCommandV) {
    sim::Desktop desktop;
    SyntheticKeystrokes keystrokes(desktop.keyOutput());
    keystrokes.copy();
    keystrokes.paste();
    EXPECT_EQ(desktop.keyOutput().log(),
              (std::vector<SentKey>{SentKey::key(8, flags::kCommand), SentKey::key(9, flags::kCommand)}));
}

TEST(SyntheticKeystrokesTest, CopyWhileTheUserHoldsShiftStillCopies) {
    sim::Desktop desktop;
    sim::TextField& field = desktop.focusTextField("Hello");
    field.selectAll();
    desktop.holdModifiers(flags::kShift);
    SyntheticKeystrokes(desktop.keyOutput()).copy();
    EXPECT_EQ(desktop.keyOutput().log(), std::vector<SentKey>{SentKey::key(keys::kC, flags::kCommand)});
    EXPECT_EQ(desktop.pasteboard().text(), "Hello") << "Command-Shift-C would not have copied";
}

TEST(SyntheticKeystrokesTest, PasteWhileTheUserHoldsOptionStillPastes) {
    sim::Desktop desktop;
    desktop.pasteboard().writeTextFromOtherApp("world");
    desktop.focusTextField("hello ");
    desktop.holdModifiers(flags::kOption);
    SyntheticKeystrokes(desktop.keyOutput()).paste();
    EXPECT_EQ(desktop.focusedText(), "hello world");
}

}  // namespace
}  // namespace orvantis
