#include "core/text_tools/text_transformer_coordinator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/preference_store.h"
#include "core/text_tools/text_transformer_model.h"
#include "platform/key_output.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

namespace key_flags = platform::key_flags;
constexpr std::uint16_t kKeyT = 17;  // the text tools hotkey's key: T, with Control and Shift

struct WindowLog {
    int made = 0;
    int shows = 0;
    int destroyed = 0;
    std::function<void()> close;  // the last window's closing
};

class FakeWindow final : public TextTransformerWindow {
public:
    explicit FakeWindow(WindowLog& log) : log_(log) {}
    ~FakeWindow() override { ++log_.destroyed; }
    void show() override { ++log_.shows; }

private:
    WindowLog& log_;
};

class TextTransformerCoordinatorTest : public ::testing::Test {
protected:
    TextTransformerCoordinatorTest() { monitor_.start(); }

    void hotkey() {
        desktop_.press(kKeyT, key_flags::kControl | key_flags::kShift);
        desktop_.loop().runUntilIdle();
    }

    testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = desktop_.loop().makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    AppLogger logger_{dir_.path() / "logs", *logQueue_, desktop_.loop()};
    AppLog log_{logger_};
    GlobalEventMonitor monitor_{settings_, desktop_.eventTap(), desktop_.loop(), log_};
    WindowLog windows_;
    TextTransformerCoordinator coordinator_{settings_, monitor_, desktop_.loop(),
                                            [this](std::function<void()> onClosed) {
                                                ++windows_.made;
                                                windows_.close = std::move(onClosed);
                                                return std::make_unique<FakeWindow>(windows_);
                                            }};
};

TEST_F(TextTransformerCoordinatorTest, TheHotkeyMakesOneWindowAndShowsItEachTime) {
    hotkey();
    EXPECT_EQ(windows_.made, 1);
    EXPECT_EQ(windows_.shows, 1);
    hotkey();
    EXPECT_EQ(windows_.made, 1);
    EXPECT_EQ(windows_.shows, 2);
    EXPECT_TRUE(coordinator_.hasWindow());
}

TEST_F(TextTransformerCoordinatorTest, ClosingDropsTheWindowOnTheNextTurn) {
    hotkey();
    windows_.close();
    EXPECT_TRUE(coordinator_.hasWindow());  // not from within the window's own closing
    desktop_.loop().runUntilIdle();
    EXPECT_FALSE(coordinator_.hasWindow());
    EXPECT_EQ(windows_.destroyed, 1);
    hotkey();  // a new window, which starts again with its first transform
    EXPECT_EQ(windows_.made, 2);
}

TEST_F(TextTransformerCoordinatorTest, NothingWhenTheTextToolsAreOff) {
    settings_.setTextTransformerEnabled(false);
    hotkey();
    EXPECT_EQ(windows_.made, 0);
    coordinator_.handleHotkey();
    EXPECT_EQ(windows_.made, 0);
}

TEST(TextTransformerModelTest, RecomputeShowsTheResultOrTheError) {
    EXPECT_EQ(recomputeTransform(TextTransform::base64Decode, "aGVsbG8", SettingsLanguage::en),
              (TransformOutcome{"hello", ""}));
    EXPECT_EQ(recomputeTransform(TextTransform::base64Decode, "a$b=", SettingsLanguage::ru),
              (TransformOutcome{"", "Invalid input for Base64."}));
    // Empty input is not special.
    EXPECT_EQ(recomputeTransform(TextTransform::md5, "", SettingsLanguage::en).output,
              "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(recomputeTransform(TextTransform::hexDecode, "", SettingsLanguage::en).status,
              "Invalid input for Hex (odd length).");
    EXPECT_EQ(recomputeTransform(TextTransform::count, "", SettingsLanguage::ru).output.substr(0, 16), "Символов");
}

TEST(TextTransformerModelTest, SearchKeepsMatchingNamesInListOrder) {
    EXPECT_EQ(visibleTransforms("", SettingsLanguage::en).size(), 25u);
    EXPECT_EQ(visibleTransforms("  \n", SettingsLanguage::en).size(), 25u);
    EXPECT_EQ(visibleTransforms(" DECODE ", SettingsLanguage::en),
              (std::vector<TextTransform>{TextTransform::base64Decode, TextTransform::urlDecode,
                                          TextTransform::hexDecode}));
    EXPECT_EQ(visibleTransforms("ДЕКОД", SettingsLanguage::ru),
              (std::vector<TextTransform>{TextTransform::base64Decode, TextTransform::urlDecode,
                                          TextTransform::hexDecode}));
    EXPECT_EQ(visibleTransforms("sha", SettingsLanguage::ru).size(), 3u);
    EXPECT_TRUE(visibleTransforms("no such tool", SettingsLanguage::en).empty());
}

TEST(TextTransformerModelTest, ArrowKeysStopAtTheEnds) {
    EXPECT_EQ(movedSelection(std::nullopt, 5, true), 0u);
    EXPECT_EQ(movedSelection(std::nullopt, 5, false), 4u);
    EXPECT_EQ(movedSelection(0, 5, true), 1u);
    EXPECT_EQ(movedSelection(4, 5, true), 4u);
    EXPECT_EQ(movedSelection(0, 5, false), 0u);
    EXPECT_EQ(movedSelection(3, 5, false), 2u);
    EXPECT_EQ(movedSelection(std::nullopt, 0, true), std::nullopt);
}

}  // namespace
}  // namespace orvantis
