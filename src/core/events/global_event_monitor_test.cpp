#include "core/events/global_event_monitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "testing/test_support.h"
#include "platform/key_output.h"
#include "platform/sim/event_tap.h"
#include "platform/sim/virtual_main_loop.h"

namespace orvantis {
namespace {

using platform::EventDisposition;
using platform::GrabbedKey;
using platform::KeyEvent;
using Hotkey = GlobalEventMonitor::Hotkey;

constexpr EventDisposition kPass = EventDisposition::pass;
constexpr EventDisposition kSwallow = EventDisposition::swallow;

constexpr std::uint64_t kShift = HotkeyDescriptor::kShift;
constexpr std::uint64_t kControl = HotkeyDescriptor::kControl;
constexpr std::uint64_t kOption = HotkeyDescriptor::kOption;
constexpr std::uint64_t kCommand = HotkeyDescriptor::kCommand;
constexpr std::uint64_t kCapsLock = 0x10000;  ///< outside the modifier mask
constexpr std::uint64_t kDeviceBits = 0x102;  ///< left-side modifier bits of the device

constexpr std::uint16_t kDelete = platform::key_code::kDelete;
constexpr std::uint16_t kEscape = platform::key_code::kEscape;
constexpr std::uint16_t kKeyH = 4;   ///< the overlay hotkey's key by default (⌃⇧H)
constexpr std::uint16_t kKeyL = 37;  ///< the keyboard lock hotkey's key by default (⌃⇧L)
constexpr std::uint16_t kKeyX = 7;
constexpr std::uint16_t kKeyV = 9;
constexpr std::uint16_t kKeyK = 40;
constexpr std::uint16_t kKeyQ = 12;
constexpr std::uint64_t kControlShift = kControl | kShift;

/// Keeps what reaches the system log.
class RecordingSink final : public SystemLogSink {
public:
    explicit RecordingSink(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type type, std::string_view category, std::string_view message) override {
        lines_.push_back(std::string(type == Type::Error ? "error " : "other ") + std::string(category) + ": " +
                         std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

class GlobalEventMonitorTest : public ::testing::Test {
protected:
    AppSettings& settings() { return settings_; }

    /// The monitor, built at first use so that a test can change the settings before.
    GlobalEventMonitor& monitor() {
        if (!monitor_) {
            monitor_ = std::make_unique<GlobalEventMonitor>(settings_, tap_, loop_, logger_.log());
            recordAll();
        }
        return *monitor_;
    }
    /// The monitor with its tap installed.
    GlobalEventMonitor& running() {
        monitor().start();
        EXPECT_TRUE(monitor().isRunning());
        return *monitor_;
    }

    /// Registers a recording closure in every slot.
    void recordAll() {
        GlobalEventMonitor& m = *monitor_;
        subs_.clear();
        subs_.push_back(m.onCharacterTyped([this](std::string_view c) { fired_.push_back("char:" + std::string(c)); }));
        auto add = [this](std::string name) { return [this, name] { fired_.push_back(name); }; };
        subs_.push_back(m.onBackspace(add("backspace")));
        subs_.push_back(m.onWhitespace(add("whitespace")));
        subs_.push_back(m.onCursorMoved(add("cursorMoved")));
        subs_.push_back(m.onMouseDown(add("mouseDown")));
        subs_.push_back(m.onHotkey(add("hotkey")));
        subs_.push_back(m.onTranslationHotkey(add("translation")));
        subs_.push_back(m.onDirectTranslationHotkey(add("directTranslation")));
        subs_.push_back(m.onClipboardHistoryHotkey(add("clipboardHistory")));
        subs_.push_back(m.onPomodoroHotkey(add("pomodoro")));
        subs_.push_back(m.onPasswordHotkey(add("password")));
        subs_.push_back(m.onSnippetExpanderHotkey(add("snippetExpander")));
        subs_.push_back(m.onTextTransformerHotkey(add("textTransformer")));
        subs_.push_back(m.onHotkeyOverlayPressed(add("overlayPressed")));
        subs_.push_back(m.onHotkeyOverlayReleased(add("overlayReleased")));
        subs_.push_back(m.onKeyboardLockHotkey(add("keyboardLock")));
        subs_.push_back(m.onKeyboardLockEscPressed(add("escPressed")));
        subs_.push_back(m.onKeyboardLockEscReleased(add("escReleased")));
        subs_.push_back(m.onMenuBarHiderHotkey(add("menuBarHider")));
        subs_.push_back(m.onCaffeineHotkey(add("caffeine")));
    }

    /// Delivers `event` through the tap and answers the handler's decision.
    EventDisposition deliver(const KeyEvent& event) { return tap_.deliver(event); }
    /// The closures that ran since the last call, after running the main loop.
    std::vector<std::string> fired() {
        loop_.runUntilIdle();
        return std::exchange(fired_, {});
    }
    using Names = std::vector<std::string>;

    testing::TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = loop_.makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    std::vector<std::string> logLines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<RecordingSink>(logLines_)};
    sim::EventTap tap_;
    std::unique_ptr<GlobalEventMonitor> monitor_;
    std::vector<Subscription> subs_;
    std::vector<std::string> fired_;
};

// --- The hotkey table ----------------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, EachDefaultHotkeyIsSwallowedAndSchedulesItsOwnClosure) {
    running();
    const std::vector<std::pair<KeyEvent, std::string>> cases = {
        {sim::keyDown(kDelete, kShift), "hotkey"},
        {sim::keyDown(kKeyX, kControlShift, "\x18"), "translation"},
        {sim::keyDown(kKeyX, kControl | kOption, "\x18"), "directTranslation"},
        {sim::keyDown(kKeyV, kControlShift), "clipboardHistory"},
        {sim::keyDown(46, kControlShift), "pomodoro"},
        {sim::keyDown(35, kControlShift), "password"},
        {sim::keyDown(kDelete, kControlShift), "snippetExpander"},
        {sim::keyDown(17, kControlShift), "textTransformer"},
        {sim::keyDown(kKeyL, kControlShift), "keyboardLock"},
        {sim::keyDown(11, kControlShift), "menuBarHider"},
        {sim::keyDown(kKeyK, kControlShift), "caffeine"},
        {sim::keyDown(kKeyH, kControlShift), "overlayPressed"},
    };
    for (const auto& [event, name] : cases) {
        EXPECT_EQ(deliver(event), kSwallow) << name;
        EXPECT_EQ(fired(), Names{name});
    }
}

TEST_F(GlobalEventMonitorTest, TwoFeaturesWithTheSameHotkeyTheEarlierRowWins) {
    const HotkeyDescriptor shared{kKeyQ, kControlShift};
    monitor().updateCaffeineHotkey(shared);
    monitor().updatePasswordHotkey(shared);
    monitor().updateClipboardHistoryHotkey(shared);
    running();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kControlShift)), kSwallow);
    EXPECT_EQ(fired(), (Names{"clipboardHistory", "clipboardHistory", "clipboardHistory"}));
}

TEST_F(GlobalEventMonitorTest, TheOverlayHotkeyIsMatchedLastThoughDeclaredBeforeTheLockHotkey) {
    const HotkeyDescriptor shared{kKeyQ, kControlShift};
    monitor().updateHotkeyOverlayHotkey(shared);
    monitor().updateMenuBarHiderHotkey(shared);
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kControlShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"menuBarHider"});
    EXPECT_FALSE(monitor().hotkeyOverlayActive());

    monitor().updateKeyboardLockHotkey(shared);
    monitor().updateMenuBarHiderHotkey({11, kControlShift});
    EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kControlShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"keyboardLock"});
}

TEST_F(GlobalEventMonitorTest, ShiftDeleteIsTheLayoutHotkeyButControlShiftDeleteTheSnippetHotkey) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"hotkey"});
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kControl | kShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"snippetExpander"});
}

TEST_F(GlobalEventMonitorTest, AnExtraHeldModifierPreventsAMatch) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift | kOption)), kPass);
    EXPECT_EQ(fired(), Names{"backspace"});
    EXPECT_EQ(deliver(sim::keyDown(kKeyK, kControlShift | kOption, "k")), kPass);
    EXPECT_EQ(fired(), Names{"char:k"});
    // A missing modifier as well. Control-K types U+000B, whitespace by the Unicode property.
    EXPECT_EQ(deliver(sim::keyDown(kKeyK, kControl, "\x0b")), kPass);
    EXPECT_EQ(fired(), Names{"whitespace"});
}

TEST_F(GlobalEventMonitorTest, CapsLockAndDeviceBitsDoNotStopAHotkeyFromMatching) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift | kCapsLock)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kKeyK, kControlShift | kCapsLock | kDeviceBits)), kSwallow);
    EXPECT_EQ(fired(), (Names{"hotkey", "caffeine"}));
}

TEST_F(GlobalEventMonitorTest, StoredModifierBitsOutsideTheMaskAreIgnoredToo) {
    monitor().updateTranslationHotkey({kKeyQ, kControlShift | kCapsLock | 0x8});
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kControlShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"translation"});
    EXPECT_TRUE(GlobalEventMonitor::matches({kKeyQ, kShift}, kKeyQ, kShift | kCapsLock));
    EXPECT_FALSE(GlobalEventMonitor::matches({kKeyQ, kShift}, kKeyQ, kShift | kCommand));
    EXPECT_FALSE(GlobalEventMonitor::matches({kKeyQ, kShift}, kKeyX, kShift));
}

TEST_F(GlobalEventMonitorTest, KeyUpOfAMatchedHotkeyIsNotSwallowed) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyUp(kDelete, kShift)), kPass);
    EXPECT_EQ(deliver(sim::keyDown(kKeyK, kControlShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyUp(kKeyK, kControlShift)), kPass);
    EXPECT_EQ(fired(), (Names{"hotkey", "caffeine"}));
}

TEST_F(GlobalEventMonitorTest, AnOrdinaryHotkeyFiresForEachAutorepeat) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift, {}, true)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift, {}, true)), kSwallow);
    EXPECT_EQ(fired(), (Names{"hotkey", "hotkey", "hotkey"}));
}

TEST_F(GlobalEventMonitorTest, AHotkeyWithoutClosureIsStillSwallowed) {
    monitor();
    subs_.clear();  // every slot empty
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kKeyH, kControlShift)), kSwallow);
    EXPECT_TRUE(monitor().hotkeyOverlayActive());
    EXPECT_EQ(deliver(sim::keyDown('a', 0, "a")), kPass);
    EXPECT_EQ(fired(), Names{});
}

// --- Hold-type overlay hotkey --------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, HoldingTheOverlayHotkeyPressesOnceAndSwallowsEveryRepeat) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyH, kControlShift, "\x08")), kSwallow);
    EXPECT_TRUE(monitor().hotkeyOverlayActive());
    for (int i = 0; i < 5; ++i) EXPECT_EQ(deliver(sim::keyDown(kKeyH, kControlShift, "\x08", true)), kSwallow);
    EXPECT_EQ(fired(), Names{"overlayPressed"});
    EXPECT_EQ(deliver(sim::keyUp(kKeyH, kControlShift)), kPass);
    EXPECT_FALSE(monitor().hotkeyOverlayActive());
    EXPECT_EQ(fired(), Names{"overlayReleased"});
    // The modifiers let go afterwards find the overlay inactive.
    EXPECT_EQ(deliver(sim::flagsChanged(kControl)), kPass);
    EXPECT_EQ(deliver(sim::flagsChanged(0)), kPass);
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, ReleasingAModifierOfTheOverlayFirstReleasesOnceAndTheLaterKeyUpPasses) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyH, kControlShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"overlayPressed"});
    // A modifier change that keeps both modifiers ends nothing.
    EXPECT_EQ(deliver(sim::flagsChanged(kControlShift | kCapsLock)), kPass);
    EXPECT_TRUE(monitor().hotkeyOverlayActive());
    EXPECT_EQ(deliver(sim::flagsChanged(kControl)), kPass);
    EXPECT_FALSE(monitor().hotkeyOverlayActive());
    EXPECT_EQ(fired(), Names{"overlayReleased"});
    EXPECT_EQ(deliver(sim::keyUp(kKeyH, kControl)), kPass);
    EXPECT_EQ(deliver(sim::flagsChanged(0)), kPass);
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, AfterAReleaseTheOverlayCanBePressedAgain) {
    running();
    deliver(sim::keyDown(kKeyH, kControlShift));
    deliver(sim::keyUp(kKeyH, kControlShift));
    deliver(sim::keyDown(kKeyH, kControlShift));
    EXPECT_EQ(fired(), (Names{"overlayPressed", "overlayReleased", "overlayPressed"}));
}

TEST_F(GlobalEventMonitorTest, KeyUpOfAnotherKeyDoesNotEndTheOverlay) {
    running();
    deliver(sim::keyDown(kKeyH, kControlShift));
    EXPECT_EQ(deliver(sim::keyUp(kKeyQ, kControlShift)), kPass);
    EXPECT_TRUE(monitor().hotkeyOverlayActive());
    EXPECT_EQ(fired(), Names{"overlayPressed"});
}

// --- Keys that match no hotkey -------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, APrintableKeyReportsItsCharacterAndPasses) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(5, 0, "g")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(5, kShift, "G")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(5, 0, "п")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(5, 0, "ab")), kPass);  // only the first unit counts
    EXPECT_EQ(fired(), (Names{"char:g", "char:G", "char:п", "char:a"}));
}

TEST_F(GlobalEventMonitorTest, ModifiersDoNotKeepACharacterFromBeingReported) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(8, kCommand, "c")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(8, kControl, "c")), kPass);
    EXPECT_EQ(fired(), (Names{"char:c", "char:c"}));
}

TEST_F(GlobalEventMonitorTest, AutorepeatOfAPrintableKeyReportsEachRepeat) {
    running();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(deliver(sim::keyDown(0, 0, "a", i > 0)), kPass);
    EXPECT_EQ(fired(), (Names{"char:a", "char:a", "char:a"}));
}

TEST_F(GlobalEventMonitorTest, ReturnTabAndSpaceReportWhitespaceNeverACharacter) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(36, 0, "\r")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(48, 0, "\t")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(49, 0, " ")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(76, 0, "\n")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(49, kOption, "\u00A0")), kPass);  // no-break space
    EXPECT_EQ(fired(), (Names{"whitespace", "whitespace", "whitespace", "whitespace", "whitespace"}));
}

TEST_F(GlobalEventMonitorTest, AnEmojiOfASurrogatePairReportsNothing) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(0, 0, "😀")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(0, 0, "😀a")), kPass);
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, KeysWithoutTextOrWithIllFormedTextReportNothing) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(122, 0, "")), kPass);  // F1
    EXPECT_EQ(deliver(sim::keyDown(0, 0, "\xFF")), kPass);
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, CursorKeysReportCursorMovedWhateverTheirModifiers) {
    running();
    for (std::uint16_t code : {123, 124, 125, 126, 115, 119, 116, 121}) {
        EXPECT_EQ(deliver(sim::keyDown(code, code == 123 ? kShift | kCommand : 0)), kPass) << code;
    }
    EXPECT_EQ(fired(), Names(8, "cursorMoved"));
}

TEST_F(GlobalEventMonitorTest, BackspaceReportsBackspaceAndPasses) {
    running();
    EXPECT_EQ(deliver(sim::keyDown(kDelete, 0, "\x7f")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kControl, "\x7f")), kPass);
    EXPECT_EQ(fired(), (Names{"backspace", "backspace"}));
}

TEST_F(GlobalEventMonitorTest, MouseButtonsReportMouseDownAndPass) {
    running();
    EXPECT_EQ(deliver(sim::mouseDown(false)), kPass);
    EXPECT_EQ(deliver(sim::mouseDown(true)), kPass);
    EXPECT_EQ(fired(), (Names{"mouseDown", "mouseDown"}));
}

TEST_F(GlobalEventMonitorTest, SystemDefinedEventsAndKeyUpsPassSilentlyWhileUnlocked) {
    running();
    EXPECT_EQ(deliver(sim::systemDefined(KeyEvent::kMediaKeySubtype)), kPass);
    EXPECT_EQ(deliver(sim::keyUp(0)), kPass);
    EXPECT_EQ(deliver(sim::flagsChanged(kShift)), kPass);
    EXPECT_EQ(fired(), Names{});
}

// --- Finder cut ----------------------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, TheFinderCutHandlerDecidesCommandPressesSynchronously) {
    std::vector<std::pair<std::uint16_t, std::uint64_t>> asked;
    bool answer = true;
    Subscription finder = monitor().setFinderCutHandler([&](std::uint16_t keyCode, std::uint64_t flags) {
        asked.emplace_back(keyCode, flags);
        return answer;
    });
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyX, kCommand, "x")), kSwallow);
    ASSERT_EQ(asked.size(), 1u);  // before the main loop ran
    EXPECT_EQ(asked[0], (std::pair<std::uint16_t, std::uint64_t>{kKeyX, kCommand}));
    EXPECT_EQ(fired(), Names{});

    answer = false;
    EXPECT_EQ(deliver(sim::keyDown(kKeyV, kCommand | kCapsLock, "v")), kPass);
    EXPECT_EQ(fired(), Names{"char:v"});
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[1].second, kCommand | kCapsLock);
}

TEST_F(GlobalEventMonitorTest, TheFinderCutHandlerIsNotAskedWithoutCommandOrForAHotkey) {
    int asked = 0;
    Subscription finder = monitor().setFinderCutHandler([&](std::uint16_t, std::uint64_t) {
        ++asked;
        return true;
    });
    monitor().updateCaffeineHotkey({kKeyK, kCommand});
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyX, kControl, "x")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(kKeyK, kCommand, "k")), kSwallow);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(fired(), (Names{"char:x", "caffeine"}));
    finder.reset();
    EXPECT_EQ(deliver(sim::keyDown(kKeyX, kCommand, "x")), kPass);
    EXPECT_EQ(asked, 0);
}

// --- Keyboard lock -------------------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, WhileLockedTheLockHotkeyItselfIsSwallowedWithoutEffect) {
    running();
    monitor().setKeyboardLockActive(true);
    EXPECT_EQ(deliver(sim::keyDown(kKeyL, kControlShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyUp(kKeyL, kControlShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kKeyH, kControlShift)), kSwallow);
    EXPECT_FALSE(monitor().hotkeyOverlayActive());
    EXPECT_EQ(fired(), Names{});
    EXPECT_TRUE(monitor().keyboardLockActive());
}

TEST_F(GlobalEventMonitorTest, WhileLockedTypedKeysAndModifiersAreSwallowedAndReachNoCoordinator) {
    int finderAsked = 0;
    Subscription finder = monitor().setFinderCutHandler([&](std::uint16_t, std::uint64_t) {
        ++finderAsked;
        return false;
    });
    running();
    monitor().setKeyboardLockActive(true);
    EXPECT_EQ(deliver(sim::keyDown(0, 0, "a")), kSwallow);
    EXPECT_EQ(deliver(sim::keyUp(0)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kDelete)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(123)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(49, 0, " ")), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kKeyX, kCommand, "x")), kSwallow);
    EXPECT_EQ(deliver(sim::flagsChanged(kShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyUp(kEscape)), kSwallow);  // Escape up without a reported press
    EXPECT_EQ(finderAsked, 0);
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, WhileLockedMediaKeysAreSwallowedOtherSystemEventsAndTheMousePass) {
    running();
    monitor().setKeyboardLockActive(true);
    EXPECT_EQ(deliver(sim::systemDefined(KeyEvent::kMediaKeySubtype)), kSwallow);
    EXPECT_EQ(deliver(sim::systemDefined(7)), kPass);
    EXPECT_EQ(deliver(sim::systemDefined(KeyEvent::kUnknownSubtype)), kPass);
    EXPECT_EQ(deliver(sim::mouseDown(false)), kPass);
    EXPECT_EQ(deliver(sim::mouseDown(true)), kPass);
    EXPECT_EQ(fired(), Names{});  // no mouseDown while locked
}

TEST_F(GlobalEventMonitorTest, WhileLockedHoldingEscapeReportsOnePressAndOneRelease) {
    running();
    monitor().setKeyboardLockActive(true);
    EXPECT_EQ(deliver(sim::keyDown(kEscape, 0, "\x1b")), kSwallow);
    EXPECT_TRUE(monitor().keyboardLockEscDown());
    for (int i = 0; i < 20; ++i) EXPECT_EQ(deliver(sim::keyDown(kEscape, 0, "\x1b", true)), kSwallow);
    EXPECT_EQ(fired(), Names{"escPressed"});
    EXPECT_EQ(deliver(sim::keyUp(kEscape)), kSwallow);
    EXPECT_FALSE(monitor().keyboardLockEscDown());
    EXPECT_EQ(fired(), Names{"escReleased"});
}

TEST_F(GlobalEventMonitorTest, WhileLockedASecondEscapeDownWithoutAutorepeatIsIgnoredWhileHeld) {
    running();
    monitor().setKeyboardLockActive(true);
    deliver(sim::keyDown(kEscape));
    EXPECT_EQ(deliver(sim::keyDown(kEscape)), kSwallow);
    EXPECT_EQ(fired(), Names{"escPressed"});
}

TEST_F(GlobalEventMonitorTest, WhileLockedAnAutorepeatedFirstEscapeIsNotAPress) {
    running();
    monitor().setKeyboardLockActive(true);
    EXPECT_EQ(deliver(sim::keyDown(kEscape, 0, {}, true)), kSwallow);
    EXPECT_FALSE(monitor().keyboardLockEscDown());
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, EscapeKeyUpAfterTheLockEndedPassesNormally) {
    running();
    monitor().setKeyboardLockActive(true);
    deliver(sim::keyDown(kEscape));
    EXPECT_EQ(fired(), Names{"escPressed"});
    monitor().setKeyboardLockActive(false);  // the coordinator unlocks while Escape is held
    EXPECT_FALSE(monitor().keyboardLockEscDown());
    EXPECT_EQ(deliver(sim::keyUp(kEscape)), kPass);
    EXPECT_EQ(deliver(sim::keyDown(0, 0, "a")), kPass);
    EXPECT_EQ(fired(), Names{"char:a"});
}

TEST_F(GlobalEventMonitorTest, LockingAgainKeepsTheEscapeStateAndUnlockingClearsIt) {
    running();
    monitor().setKeyboardLockActive(true);
    deliver(sim::keyDown(kEscape));
    monitor().setKeyboardLockActive(true);
    EXPECT_TRUE(monitor().keyboardLockEscDown());
    EXPECT_EQ(deliver(sim::keyDown(kEscape)), kSwallow);
    EXPECT_EQ(fired(), Names{"escPressed"});
    monitor().setKeyboardLockActive(false);
    EXPECT_FALSE(monitor().keyboardLockActive());
    EXPECT_FALSE(monitor().keyboardLockEscDown());
}

TEST_F(GlobalEventMonitorTest, TheLockGrabsTheWholeKeyboardAndUnlockingReleasesIt) {
    running();
    EXPECT_FALSE(tap_.wholeKeyboardGrabbed());
    monitor().setKeyboardLockActive(true);
    EXPECT_TRUE(tap_.wholeKeyboardGrabbed());
    EXPECT_TRUE(tap_.isGrabbed(sim::keyDown(0, 0, "a")));
    deliver(sim::keyDown(0, 0, "a"));
    deliver(sim::mouseDown());
    EXPECT_EQ(tap_.applicationEvents().size(), 1u);  // only the mouse got through
    monitor().setKeyboardLockActive(false);
    EXPECT_FALSE(tap_.wholeKeyboardGrabbed());
}

// --- Scheduling ----------------------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, NoClosureRunsInsideTheTapHandler) {
    running();
    deliver(sim::keyDown(kDelete, kShift));
    deliver(sim::keyDown(0, 0, "a"));
    deliver(sim::mouseDown());
    EXPECT_TRUE(fired_.empty());
    EXPECT_EQ(fired(), (Names{"hotkey", "char:a", "mouseDown"}));
}

TEST_F(GlobalEventMonitorTest, TheScheduledBlockReadsTheClosureWhenItRunsNotWhenTheEventCame) {
    running();
    deliver(sim::keyDown(kDelete, kShift));
    int replaced = 0;
    Subscription later = monitor().onHotkey([&] { ++replaced; });
    EXPECT_EQ(fired(), Names{});
    EXPECT_EQ(replaced, 1);

    deliver(sim::keyDown(kDelete, kShift));
    later.reset();
    EXPECT_EQ(fired(), Names{});
    EXPECT_EQ(replaced, 1);
}

TEST_F(GlobalEventMonitorTest, ARegistrationReplacesTheSlotAndTheOldSubscriptionNoLongerClearsIt) {
    running();
    int first = 0, second = 0;
    Subscription a = monitor().onCaffeineHotkey([&] { ++first; });
    Subscription b = monitor().onCaffeineHotkey([&] { ++second; });
    a.reset();
    deliver(sim::keyDown(kKeyK, kControlShift));
    loop_.runUntilIdle();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
    b.reset();
    deliver(sim::keyDown(kKeyK, kControlShift));
    loop_.runUntilIdle();
    EXPECT_EQ(second, 1);
}

TEST_F(GlobalEventMonitorTest, ClosuresPostedBeforeTheMonitorIsDestroyedDoNothing) {
    running();
    deliver(sim::keyDown(kDelete, kShift));
    deliver(sim::keyDown(0, 0, "a"));
    monitor_.reset();
    EXPECT_FALSE(tap_.isRunning());  // the destructor removed the tap
    EXPECT_EQ(fired(), Names{});
    EXPECT_EQ(tap_.deliver(sim::keyDown(kDelete, kShift)), kPass);
}

TEST_F(GlobalEventMonitorTest, SubscriptionsMayOutliveTheMonitor) {
    monitor();
    Subscription s = monitor().onHotkey([] {});
    monitor_.reset();
    s.reset();
    subs_.clear();
    SUCCEED();
}

// --- Start, stop, tap disabled -------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, StartFailsSilentlyWithoutPermissionAndSucceedsOnceGranted) {
    tap_.setPermitted(false);
    monitor().start();
    EXPECT_FALSE(monitor().isRunning());
    EXPECT_FALSE(tap_.isRunning());
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kPass);
    EXPECT_EQ(fired(), Names{});

    tap_.setPermitted(true);
    monitor().start();
    EXPECT_TRUE(monitor().isRunning());
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"hotkey"});
}

TEST_F(GlobalEventMonitorTest, StartInstallsUnconditionallyEvenWhenRunning) {
    running();
    monitor().start();
    EXPECT_EQ(tap_.startCount(), 2u);
    EXPECT_TRUE(monitor().isRunning());
}

TEST_F(GlobalEventMonitorTest, StopRemovesTheTapAndEventsPassUntouched) {
    EXPECT_FALSE(monitor().isRunning());
    monitor().stop();  // nothing to do
    running();
    monitor().stop();
    EXPECT_FALSE(monitor().isRunning());
    EXPECT_FALSE(tap_.isRunning());
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kPass);
    EXPECT_EQ(fired(), Names{});
}

TEST_F(GlobalEventMonitorTest, UpdateHotkeyInstallsTheTapOnceThePermissionIsThere) {
    tap_.setPermitted(false);
    monitor().start();
    monitor().updateHotkey({kKeyQ, kOption});
    EXPECT_FALSE(monitor().isRunning());

    tap_.setPermitted(true);
    monitor().updateTranslationHotkey({kKeyQ, kControl});  // only the layout hotkey revives
    EXPECT_FALSE(monitor().isRunning());
    monitor().updateHotkey({kKeyQ, kOption});
    EXPECT_TRUE(monitor().isRunning());
    EXPECT_EQ(tap_.startCount(), 1u);
    monitor().updateHotkey({kKeyQ, kOption});
    EXPECT_EQ(tap_.startCount(), 1u);  // already running
    EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kOption)), kSwallow);
    EXPECT_EQ(fired(), Names{"hotkey"});
}

TEST_F(GlobalEventMonitorTest, ADisabledTapIsLoggedReenabledAndTheEventPasses) {
    running();
    tap_.disable(KeyEvent::Type::tapDisabledByTimeout);
    EXPECT_TRUE(tap_.isEnabled());
    EXPECT_EQ(tap_.reenableCount(), 1u);
    tap_.disable(KeyEvent::Type::tapDisabledByUserInput);
    EXPECT_EQ(tap_.reenableCount(), 2u);
    EXPECT_EQ(logLines_, (std::vector<std::string>{
                             "error App: globalEventMonitor: tap disabled (4294967294), re-enabling",
                             "error App: globalEventMonitor: tap disabled (4294967295), re-enabling",
                         }));
    KeyEvent disabled;
    disabled.type = KeyEvent::Type::tapDisabledByTimeout;
    EXPECT_EQ(monitor().handle(disabled), kPass);
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kSwallow);
    EXPECT_EQ(fired(), Names{"hotkey"});
}

TEST_F(GlobalEventMonitorTest, ADisabledNoticeIsHandledBeforeTheLock) {
    running();
    monitor().setKeyboardLockActive(true);
    tap_.disable();
    EXPECT_TRUE(tap_.isEnabled());
    EXPECT_EQ(logLines_.size(), 1u);
}

TEST_F(GlobalEventMonitorTest, ADisabledNoticeWhileNotRunningOnlyLogs) {
    KeyEvent disabled;
    disabled.type = KeyEvent::Type::tapDisabledByUserInput;
    EXPECT_EQ(monitor().handle(disabled), kPass);
    EXPECT_EQ(tap_.reenableCount(), 0u);
    EXPECT_EQ(logLines_.size(), 1u);
}

TEST_F(GlobalEventMonitorTest, OrdinaryEventsWriteNoLogLine) {
    running();
    deliver(sim::keyDown(kDelete, kShift));
    deliver(sim::keyDown(0, 0, "a"));
    deliver(sim::mouseDown());
    EXPECT_TRUE(logLines_.empty());
}

// --- Hotkeys from the settings and their updates -------------------------------------------

TEST_F(GlobalEventMonitorTest, HotkeysAreReadFromTheSettingsOnceAtConstruction) {
    settings().setHotkey({kKeyQ, kOption});
    EXPECT_EQ(monitor().current(Hotkey::layoutSwitch), (HotkeyDescriptor{kKeyQ, kOption}));
    EXPECT_EQ(monitor().current(Hotkey::caffeine), (HotkeyDescriptor{kKeyK, kControlShift}));
    settings().setCaffeineHotkey({kKeyQ, kControl});  // not pushed: no effect
    running();
    EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kControl, "q")), kPass);
    EXPECT_EQ(deliver(sim::keyDown(kKeyK, kControlShift)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kKeyQ, kOption)), kSwallow);
    EXPECT_EQ(deliver(sim::keyDown(kDelete, kShift)), kPass);
    EXPECT_EQ(fired(), (Names{"char:q", "caffeine", "hotkey", "backspace"}));
}

TEST_F(GlobalEventMonitorTest, EachUpdateStoresItsOwnHotkey) {
    GlobalEventMonitor& m = monitor();
    const std::vector<std::pair<void (GlobalEventMonitor::*)(const HotkeyDescriptor&), Hotkey>> updates = {
        {&GlobalEventMonitor::updateHotkey, Hotkey::layoutSwitch},
        {&GlobalEventMonitor::updateTranslationHotkey, Hotkey::translation},
        {&GlobalEventMonitor::updateDirectTranslationHotkey, Hotkey::directTranslation},
        {&GlobalEventMonitor::updateClipboardHistoryHotkey, Hotkey::clipboardHistory},
        {&GlobalEventMonitor::updatePomodoroHotkey, Hotkey::pomodoro},
        {&GlobalEventMonitor::updatePasswordHotkey, Hotkey::password},
        {&GlobalEventMonitor::updateSnippetExpanderHotkey, Hotkey::snippetExpander},
        {&GlobalEventMonitor::updateTextTransformerHotkey, Hotkey::textTransformer},
        {&GlobalEventMonitor::updateHotkeyOverlayHotkey, Hotkey::hotkeyOverlay},
        {&GlobalEventMonitor::updateKeyboardLockHotkey, Hotkey::keyboardLock},
        {&GlobalEventMonitor::updateMenuBarHiderHotkey, Hotkey::menuBarHider},
        {&GlobalEventMonitor::updateCaffeineHotkey, Hotkey::caffeine},
    };
    std::uint16_t code = 80;
    for (const auto& [update, which] : updates) {
        (m.*update)({code, kCommand | kOption});
        EXPECT_EQ(m.current(which), (HotkeyDescriptor{code, kCommand | kOption})) << int(which);
        ++code;
    }
    // Each update touched its own hotkey only.
    code = 80;
    for (const auto& [update, which] : updates) EXPECT_EQ(m.current(which).keyCode, code++);
}

TEST_F(GlobalEventMonitorTest, TheTapGrabsTheHotkeysInMatchOrderOnceEachWithMaskedModifiers) {
    monitor();
    const std::vector<GrabbedKey> expected = {
        {kDelete, kShift},           {kKeyX, kControlShift}, {kKeyX, kControl | kOption},
        {kKeyV, kControlShift},      {46, kControlShift},    {35, kControlShift},
        {kDelete, kControlShift},    {17, kControlShift},    {kKeyL, kControlShift},
        {11, kControlShift},         {kKeyK, kControlShift}, {kKeyH, kControlShift},
    };
    EXPECT_EQ(tap_.grabbedHotkeys(), expected);
    EXPECT_EQ(tap_.grabUpdates(), 1u);
}

TEST_F(GlobalEventMonitorTest, UpdatesArePushedToTheGrabList) {
    monitor();
    monitor().updateTranslationHotkey({kKeyQ, kControlShift | kCapsLock});
    EXPECT_EQ(tap_.grabUpdates(), 2u);
    const auto& grabs = tap_.grabbedHotkeys();
    EXPECT_EQ(grabs[1], (GrabbedKey{kKeyQ, kControlShift}));
    EXPECT_EQ(std::count(grabs.begin(), grabs.end(), GrabbedKey{kKeyX, kControlShift}), 0);

    monitor().updateCaffeineHotkey({kKeyQ, kControlShift});  // shared: grabbed once
    EXPECT_EQ(tap_.grabUpdates(), 3u);
    EXPECT_EQ(std::count(tap_.grabbedHotkeys().begin(), tap_.grabbedHotkeys().end(), GrabbedKey{kKeyQ, kControlShift}),
              1);
    EXPECT_EQ(tap_.grabbedHotkeys().size(), 11u);
}

TEST_F(GlobalEventMonitorTest, SwallowedHotkeysAreGrabbedSoTheyNeverReachTheApplication) {
    running();
    deliver(sim::keyDown(kDelete, kShift | kCapsLock));
    deliver(sim::keyDown(0, 0, "a"));
    deliver(sim::keyDown(kKeyH, kControlShift, {}, true));
    ASSERT_EQ(tap_.applicationEvents().size(), 1u);
    EXPECT_EQ(tap_.applicationEvents()[0].characters, "a");
}

// --- The interface -------------------------------------------------------------------------

TEST_F(GlobalEventMonitorTest, CoordinatorsCanWorkThroughTheInterface) {
    GlobalEventMonitorProtocol& protocol = monitor();
    std::string typed;
    Subscription s = protocol.onCharacterTyped([&](std::string_view c) { typed += c; });
    protocol.start();
    EXPECT_TRUE(protocol.isRunning());
    for (const char* c : {"g", "h", "b", "d", "t", "n"}) deliver(sim::keyDown(0, 0, c));
    loop_.runUntilIdle();
    EXPECT_EQ(typed, "ghbdtn");
    protocol.stop();
    EXPECT_FALSE(protocol.isRunning());
}

}  // namespace
}  // namespace orvantis
