#include "core/snippets/snippet_expander_coordinator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/preference_store.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;
namespace type = platform::pasteboard_type;

class NoApplications final : public platform::Applications {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return std::nullopt; }
};

const std::string kPngBytes = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);

class SnippetExpanderCoordinatorTest : public ::testing::Test {
protected:
    SnippetExpanderCoordinatorTest() {
        monitor_.start();
        clipboard_.start();
        setEntries({{"sig", "Best regards,\nAnna"}, {"foo", "FOO!"}, {"mail", "anna@example.org"}});
    }

    void setEntries(std::vector<std::pair<std::string, std::string>> pairs) {
        std::vector<SnippetEntry> entries;
        for (auto& [shortcut, expansion] : pairs) entries.push_back({ids_.generate(), shortcut, expansion});
        expander_.setEntries(entries);
    }
    /// The user presses Super+Shift+Backspace.
    void hotkey() {
        desktop_.press(key_code::kDelete, key_flags::kControl | key_flags::kShift);
        desktop_.loop().runUntilIdle();
    }
    /// The hotkey and everything it sets off, the restore included.
    void expand() {
        hotkey();
        desktop_.loop().runFor(500ms);
    }
    sim::TextField& field(std::string_view text) { return desktop_.focusTextField(text); }
    std::size_t pastes() { return desktop_.keyOutput().count(key_code::kV, key_flags::kCommand); }

    testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = desktop_.loop().makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    AppLogger logger_{dir_.path() / "logs", *logQueue_, desktop_.loop()};
    AppLog log_{logger_};
    GlobalEventMonitor monitor_{settings_, desktop_.eventTap(), desktop_.loop(), log_};
    NoApplications applications_;
    UuidGenerator ids_{7};
    ClipboardMonitor clipboard_{settings_,       desktop_.pasteboard(), applications_, desktop_.accessibility(),
                                desktop_.loop(), desktop_.loop(),       ids_,          dir_.path() / "clipboard.json",
                                nullptr};
    SnippetExpander expander_{store_};
    SnippetExpanderCoordinator coordinator_{settings_,
                                            monitor_,
                                            desktop_.loop(),
                                            expander_,
                                            desktop_.accessibility(),
                                            desktop_.pasteboard(),
                                            desktop_.keyOutput(),
                                            [this] { clipboard_.acknowledgeCurrentChangeCount(); }};
};

TEST_F(SnippetExpanderCoordinatorTest, TheTokenBeforeTheCaretIsReplacedAndTheClipboardComesBack) {
    desktop_.pasteboard().writeTextFromOtherApp("the user's clipboard");
    desktop_.loop().runFor(1s);
    const std::size_t historyBefore = clipboard_.history().count();
    field("hello sig");
    hotkey();
    // The expansion waits on the pasteboard, marked as secret both ways.
    EXPECT_EQ(desktop_.pasteboard().text(), "Best regards,\nAnna");
    EXPECT_EQ(desktop_.pasteboard().data(type::kConcealed), std::string(1, '\x01'));
    EXPECT_EQ(desktop_.pasteboard().data(type::kPasswordManagerHint), "secret");
    EXPECT_EQ(clipboard_.lastChangeCount(), desktop_.pasteboard().changeCount());
    // The token is selected, and Ctrl+V comes 30 ms later.
    EXPECT_EQ(desktop_.focusedField()->selectedText(), "sig");
    EXPECT_EQ(pastes(), 0u);
    desktop_.loop().runFor(30ms);
    EXPECT_EQ(pastes(), 1u);
    EXPECT_EQ(desktop_.focusedText(), "hello Best regards,\nAnna");
    // 0.35 s after the paste the user's clipboard is back, and acknowledged.
    desktop_.loop().runFor(340ms);
    EXPECT_EQ(desktop_.pasteboard().text(), "Best regards,\nAnna");
    desktop_.loop().runFor(10ms);
    EXPECT_EQ(desktop_.pasteboard().text(), "the user's clipboard");
    EXPECT_FALSE(desktop_.pasteboard().data(type::kConcealed).has_value());
    EXPECT_EQ(clipboard_.lastChangeCount(), desktop_.pasteboard().changeCount());
    // Neither the expansion nor the restored content is taken into the history.
    clipboard_.tick();
    desktop_.loop().runFor(1s);
    EXPECT_EQ(clipboard_.history().count(), historyBefore);
}

TEST_F(SnippetExpanderCoordinatorTest, EveryTypeOfTheClipboardComesBackAnImageToo) {
    platform::PasteboardItem image{{{std::string(type::kPNG), kPngBytes},
                                    {std::string(type::kHTML), "<img src=\"a.png\">"},
                                    {"application/x-custom", std::string("\0\1\2", 3)}}};
    desktop_.pasteboard().writeFromOtherApp(image);
    field("sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "Best regards,\nAnna");
    ASSERT_TRUE(desktop_.pasteboard().content().has_value());
    EXPECT_EQ(desktop_.pasteboard().content()->representations, image.representations);
}

TEST_F(SnippetExpanderCoordinatorTest, AnEmptyClipboardStaysEmpty) {
    field("sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "Best regards,\nAnna");
    EXPECT_TRUE(desktop_.pasteboard().types().empty());
}

TEST_F(SnippetExpanderCoordinatorTest, ACaretAtTheStartDoesNothing) {
    auto& f = field("sig");
    f.select({0, 0});
    expand();
    EXPECT_EQ(desktop_.focusedText(), "sig");
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
    EXPECT_TRUE(desktop_.keyOutput().log().empty());
}

TEST_F(SnippetExpanderCoordinatorTest, ACaretRightAfterABlankDoesNothing) {
    field("hello sig ");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "hello sig ");
    field("sig\n");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "sig\n");
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
}

TEST_F(SnippetExpanderCoordinatorTest, CaseMatters) {
    setEntries({{"Mail", "upper"}});
    field("mail");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "mail");
    setEntries({{"Mail", "upper"}, {"mail", "lower"}});
    field("mail");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "lower");
}

TEST_F(SnippetExpanderCoordinatorTest, TheEarlierOfTwoEqualShortcutsWins) {
    setEntries({{"sig", "first"}, {"sig", "second"}});
    field("sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "first");
}

TEST_F(SnippetExpanderCoordinatorTest, TheTokenEndsAtTheCaretAndTheRestStays) {
    auto& f = field("hello foobar");
    f.select({9, 0});  // between "foo" and "bar"
    expand();
    EXPECT_EQ(desktop_.focusedText(), "hello FOO!bar");
}

TEST_F(SnippetExpanderCoordinatorTest, WithASelectionItsStartCountsAsTheCaret) {
    auto& f = field("hello foobar");
    f.select({9, 3});  // "bar" selected
    expand();
    EXPECT_EQ(desktop_.focusedText(), "hello FOO!bar");
}

TEST_F(SnippetExpanderCoordinatorTest, ANewlineDelimitsATokenAtTheStartOfALine) {
    field("Dear Bob,\nthanks.\nsig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "Dear Bob,\nthanks.\nBest regards,\nAnna");
    field("a\tfoo");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "a\tFOO!");
}

TEST_F(SnippetExpanderCoordinatorTest, PunctuationBelongsToTheToken) {
    setEntries({{"foo,bar", "joined"}, {"bar", "BAR"}});
    field("x foo,bar");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "x joined");
}

TEST_F(SnippetExpanderCoordinatorTest, ABlobThatIsNotJsonDoesNothing) {
    store_.set(SnippetExpander::kKey, PreferenceData{"[{not json"});
    field("sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "sig");
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
    EXPECT_EQ(desktop_.accessibility().lookupCount(), 0u);
}

TEST_F(SnippetExpanderCoordinatorTest, AnEmptyShortcutNeverMatches) {
    setEntries({{"", "never"}});
    field("word ");
    expand();
    field("word");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "word");
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
}

TEST_F(SnippetExpanderCoordinatorTest, NothingIsExpandedIntoAPasswordField) {
    desktop_.pasteboard().writeTextFromOtherApp("keep");
    auto& f = field("sig");
    f.setSecure(true);
    expand();
    EXPECT_EQ(f.text(), "sig");
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
    EXPECT_TRUE(desktop_.keyOutput().log().empty());
    EXPECT_EQ(desktop_.pasteboard().text(), "keep");
}

/// A password field of a toolkit that shows its text as bullets to the accessibility layer.
class BulletPasswordField final : public platform::Accessibility {
public:
    class Element final : public platform::TextElement {
    public:
        explicit Element(BulletPasswordField& owner) : owner_(owner) {}
        bool isSecure() const override { return true; }
        std::optional<std::string> value() const override { return "\u2022\u2022\u2022"; }
        std::optional<platform::TextRange> selectedRange() const override { return platform::TextRange{3, 0}; }
        std::optional<std::string> selectedText() const override { return std::nullopt; }
        bool setSelectedRange(platform::TextRange) override { return ++owner_.writes, true; }
        bool replaceSelectedText(std::string_view) override { return ++owner_.writes, true; }

    private:
        BulletPasswordField& owner_;
    };
    std::unique_ptr<platform::TextElement> focusedTextElement() override { return std::make_unique<Element>(*this); }
    int writes = 0;
};

TEST_F(SnippetExpanderCoordinatorTest, APasswordFieldThatShowsBulletsIsLeftAloneToo) {
    setEntries({{"\u2022\u2022\u2022", "leaked"}});
    BulletPasswordField passwordField;
    GlobalEventMonitor unusedMonitor{settings_, desktop_.eventTap(), desktop_.loop(), log_};
    SnippetExpanderCoordinator coordinator{settings_, unusedMonitor, desktop_.loop(), expander_, passwordField,
                                           desktop_.pasteboard(), desktop_.keyOutput(), [] {}};
    coordinator.handleHotkey();
    desktop_.loop().runFor(1s);
    EXPECT_EQ(passwordField.writes, 0);
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
    EXPECT_TRUE(desktop_.keyOutput().log().empty());
}

TEST_F(SnippetExpanderCoordinatorTest, WhenTheSelectionCantBeSetTheTokenIsDeletedWithBackspace) {
    setEntries({{"☕️sig", "Best regards,\nAnna"}});
    auto& f = field("hi ☕️sig");
    f.setAccessibilityWrites(sim::AccessibilityWrites::refused);
    expand();
    // One Backspace per character of the token (four characters in five UTF-16 units).
    EXPECT_EQ(desktop_.keyOutput().count(key_code::kDelete, 0), 4u);
    EXPECT_EQ(f.text(), "hi Best regards,\nAnna");
}

TEST_F(SnippetExpanderCoordinatorTest, TextBeforeTheTokenWithEmojiAndMarksCountsRight) {
    field("😀 e\u0301t\u00e9 sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "😀 e\u0301t\u00e9 Best regards,\nAnna");
    setEntries({{"👍🏽ok", "fine"}});
    field("a 👍🏽ok");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "a fine");
}

TEST_F(SnippetExpanderCoordinatorTest, SwitchedOffNoEntriesOrNoTextFieldDoNothing) {
    settings_.setSnippetExpanderEnabled(false);
    field("sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "sig");
    settings_.setSnippetExpanderEnabled(true);
    expander_.setEntries({});
    expand();
    EXPECT_EQ(desktop_.focusedText(), "sig");
    setEntries({{"sig", "x"}});
    desktop_.focusNonTextElement();
    expand();
    desktop_.addTextField("other", "sig").setReadable(false);
    desktop_.focus(*desktop_.textField("other"));
    expand();
    EXPECT_EQ(desktop_.textField("other")->text(), "sig");
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
}

TEST_F(SnippetExpanderCoordinatorTest, TwoHotkeysWithinTheRestoreDelayLeaveTheFirstExpansion) {
    desktop_.pasteboard().writeTextFromOtherApp("original");
    setEntries({{"a", "AAA"}, {"b", "BBB"}});
    field("a");
    hotkey();
    desktop_.loop().runFor(100ms);
    desktop_.focusedField()->insertText(" b");
    hotkey();
    desktop_.loop().runFor(1s);
    EXPECT_EQ(desktop_.focusedText(), "AAA BBB");
    // The second snapshot held the first expansion; the two restores ran in order.
    EXPECT_EQ(desktop_.pasteboard().text(), "AAA");
}

TEST_F(SnippetExpanderCoordinatorTest, EmptyAndOneMegabyteExpansions) {
    const std::string huge(1 << 20, 'z');
    setEntries({{"nothing", ""}, {"big", huge}});
    desktop_.pasteboard().writeTextFromOtherApp("kept");
    const std::int64_t count = desktop_.pasteboard().changeCount();
    field("x nothing");
    expand();
    // An empty expansion deletes the token without touching the clipboard.
    EXPECT_EQ(desktop_.focusedText(), "x ");
    EXPECT_EQ(desktop_.pasteboard().changeCount(), count);
    auto& refusing = field("x nothing");
    refusing.setAccessibilityWrites(sim::AccessibilityWrites::refused);
    expand();
    EXPECT_EQ(desktop_.focusedText(), "x ");
    field("big");
    expand();
    EXPECT_EQ(desktop_.focusedText(), huge);
}

TEST_F(SnippetExpanderCoordinatorTest, AFiftyMegabyteClipboardComesBackWhole) {
    std::string big(50u << 20, '\0');
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>('a' + i % 26);
    desktop_.pasteboard().writeFromOtherApp(platform::PasteboardItem{{{std::string(type::kText), big}}});
    field("sig");
    expand();
    EXPECT_EQ(desktop_.focusedText(), "Best regards,\nAnna");
    EXPECT_TRUE(desktop_.pasteboard().text() == big);
}

TEST_F(SnippetExpanderCoordinatorTest, TheTokenReader) {
    using C = SnippetExpanderCoordinator;
    EXPECT_FALSE(C::tokenBeforeCaret("abc", 0));
    EXPECT_FALSE(C::tokenBeforeCaret("abc", 4));
    EXPECT_FALSE(C::tokenBeforeCaret("ab ", 3));
    EXPECT_FALSE(C::tokenBeforeCaret("ab\u00a0", 3));  // no-break space is white space too
    const auto t = C::tokenBeforeCaret("x 😀ab", 6);   // 😀 is two UTF-16 units
    ASSERT_TRUE(t);
    EXPECT_EQ(t->text, "😀ab");
    EXPECT_EQ(t->start, 2u);
    EXPECT_EQ(t->end, 6u);
    EXPECT_EQ(C::tokenBeforeCaret("x 😀ab", 5)->text, "😀a");
    EXPECT_EQ(t->characters, 3u);
}

}  // namespace
}  // namespace orvantis
