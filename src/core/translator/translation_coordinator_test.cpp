#include "core/translator/translation_coordinator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/preference_store.h"
#include "core/strings/settings_strings.h"
#include "platform/sim/desktop.h"
#include "platform/sim/http_client.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using platform::key_code::kDelete;

/// The popup as the coordinator sees it, recording what it was told.
class FakePopup final : public TranslationPopup {
public:
    void setOnConfirm(std::function<void(const std::string&)> callback) override { onConfirm_ = std::move(callback); }
    void setOnDismiss(std::function<void()> callback) override { onDismiss_ = std::move(callback); }
    void setOnTabPressed(std::function<void()> callback) override { onTab_ = std::move(callback); }
    void show(platform::ScreenPoint pointer) override {
        visible = true;
        loading = true;
        shownAt = pointer;
        ++shows;
        options.clear();
        error.reset();
    }
    void showOptions(std::vector<PopupOption> list) override {
        loading = false;
        options = std::move(list);
    }
    void setFooterHint(std::optional<std::string> text) override { hint = std::move(text); }
    void showError(const std::string& message) override {
        loading = false;
        error = message;
    }
    void dismiss() override {
        if (!visible) return;
        visible = false;
        ++dismissals;
        if (onDismiss_) onDismiss_();
    }
    bool isVisible() const override { return visible; }

    /// The user picks `value`: the popup closes, then hands it over.
    void confirm(const std::string& value) {
        dismiss();
        if (onConfirm_) onConfirm_(value);
    }
    void pressTab() {
        if (onTab_) onTab_();
    }
    std::vector<std::string> values() const {
        std::vector<std::string> out;
        for (const auto& option : options) out.push_back(option.value);
        return out;
    }

    bool visible = false;
    bool loading = false;
    int shows = 0;
    int dismissals = 0;
    platform::ScreenPoint shownAt;
    std::vector<PopupOption> options;
    std::optional<std::string> hint;
    std::optional<std::string> error;

private:
    std::function<void(const std::string&)> onConfirm_;
    std::function<void()> onDismiss_;
    std::function<void()> onTab_;
};

class FrontmostOfDesktop final : public platform::Applications {
public:
    explicit FrontmostOfDesktop(sim::Desktop& desktop) : desktop_(desktop) {}
    std::optional<platform::ApplicationInfo> frontmostApplication() const override {
        if (desktop_.focusedApplication().empty()) return std::nullopt;
        return platform::ApplicationInfo{desktop_.focusedApplication(), desktop_.focusedApplication(), 4242};
    }

private:
    sim::Desktop& desktop_;
};

class FixedPointer final : public platform::Pointer {
public:
    platform::ScreenPoint location() const override { return {640, 400}; }
};

std::string translationReply(const std::string& text) { return R"([[[")" + text + R"(","x",null,null]],null,"ru"])"; }

std::string alternatesReply(const std::vector<std::string>& terms) {
    std::string list;
    for (const auto& term : terms) list += (list.empty() ? "\"" : ",\"") + term + "\"";
    return R"([[[")" + terms.front() + R"(","x",null,null]],[["noun",[)" + list + "]]]]";
}

class TranslationCoordinatorTest : public ::testing::Test {
protected:
    TranslationCoordinatorTest() { monitor_.start(); }

    /// A focused field of `text` with all of it selected.
    sim::TextField& selectInField(const std::string& text) {
        sim::TextField& field = desktop_.focusTextField(text);
        field.selectAll();
        return field;
    }
    void settle() { desktop_.loop().runUntilIdle(); }
    void variantsHotkey() {
        coordinator_.handleTranslationHotkey(false);
        settle();
    }
    void directHotkey() {
        coordinator_.handleTranslationHotkey(true);
        settle();
    }
    /// Answers request `index` and lets the result arrive.
    void answer(std::size_t index, int status, const std::string& body) {
        ASSERT_TRUE(http_.respond(index, status, body));
        settle();
    }
    std::string url(std::size_t index) const { return http_.requestedUrls().at(index); }

    testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = desktop_.loop().makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    AppLogger logger_{dir_.path() / "logs", *logQueue_, desktop_.loop()};
    AppLog log_{logger_};
    GlobalEventMonitor monitor_{settings_, desktop_.eventTap(), desktop_.loop(), log_};
    sim::HttpClient http_{desktop_.loop()};
    TranslationService service_{http_, desktop_.loop(), log_.translate, [] { return std::string("https://tr.example"); }};
    FakePopup popup_;
    FrontmostOfDesktop applications_{desktop_};
    FixedPointer pointer_;
    TranslationCoordinator coordinator_{settings_, monitor_, popup_, service_, applications_,
                                        desktop_.accessibility(), desktop_.pasteboard(), desktop_.keyOutput(),
                                        pointer_, desktop_.loop()};
};

TEST_F(TranslationCoordinatorTest, TwoRussianWordsGiveNamesOfTheirTranslationAndAPrefetch) {
    selectInField("имя пользователя");
    variantsHotkey();
    ASSERT_TRUE(popup_.visible);
    EXPECT_TRUE(popup_.loading) << "the popup is up before the reply";
    EXPECT_EQ(popup_.shownAt, (platform::ScreenPoint{640, 400}));
    ASSERT_EQ(http_.requests().size(), 1u);
    EXPECT_NE(url(0).find("sl=ru&tl=en&dt=t&q="), std::string::npos) << url(0);

    answer(0, 200, translationReply("user name"));
    ASSERT_EQ(popup_.options.size(), 11u);
    EXPECT_EQ(popup_.values().front(), "userName");
    EXPECT_EQ(popup_.options[2].displayText, "user_name");
    EXPECT_EQ(popup_.hint, std::string(SettingsStrings::make(SettingsLanguage::en).translationPopupHintVariants));
    // The synonyms of the two source words, looked up one by one.
    ASSERT_EQ(http_.requests().size(), 3u);
    EXPECT_NE(url(1).find("dt=at&dt=bd&q=%D0%B8%D0%BC%D1%8F"), std::string::npos) << url(1);
    EXPECT_TRUE(coordinator_.prefetchInFlight());
}

TEST_F(TranslationCoordinatorTest, TheHotkeysReachTheCoordinatorThroughTheMonitor) {
    selectInField("get user name");
    desktop_.press(7, platform::key_flags::kControl | platform::key_flags::kShift);  // the variants hotkey
    settle();
    EXPECT_EQ(popup_.shows, 1);
    EXPECT_EQ(popup_.options.size(), 11u);
    popup_.dismiss();
    desktop_.press(7, platform::key_flags::kControl | platform::key_flags::kOption);  // the direct one
    settle();
    EXPECT_EQ(popup_.shows, 2);
    EXPECT_EQ(http_.requests().size(), 1u);
}

TEST_F(TranslationCoordinatorTest, AnEnglishSelectionGivesNamesWithoutARequest) {
    selectInField("get user name");
    variantsHotkey();
    EXPECT_TRUE(http_.requests().empty());
    ASSERT_EQ(popup_.options.size(), 11u);
    EXPECT_EQ(popup_.values().front(), "getUserName");
    EXPECT_FALSE(coordinator_.prefetchInFlight());
}

TEST_F(TranslationCoordinatorTest, ElevenWordsOnTheVariantsHotkeyTranslateDirectlyBetweenThePair) {
    selectInField("one two three four five six seven eight nine ten eleven");
    variantsHotkey();
    ASSERT_EQ(http_.requests().size(), 1u);
    EXPECT_NE(url(0).find("sl=en&tl=ru&dt=t&q="), std::string::npos) << url(0);
    answer(0, 200, translationReply("раз два три"));
    ASSERT_EQ(popup_.options.size(), 1u);
    EXPECT_EQ(popup_.options[0], (PopupOption{"раз два три", "раз два три"}));
    EXPECT_EQ(popup_.hint, std::string(SettingsStrings::make(SettingsLanguage::en).translationPopupHintDirect));
}

TEST_F(TranslationCoordinatorTest, TheDirectHotkeyOnOneWordGivesOneOption) {
    selectInField("пользователя");
    directHotkey();
    ASSERT_EQ(http_.requests().size(), 1u);
    answer(0, 200, translationReply("user"));
    EXPECT_EQ(popup_.values(), std::vector<std::string>{"user"});
}

TEST_F(TranslationCoordinatorTest, AFailedNamingTranslationGivesNamesOfTheSelectionItself) {
    selectInField("имя пользователя");
    variantsHotkey();
    answer(0, 429, "");
    ASSERT_EQ(popup_.options.size(), 11u);
    EXPECT_EQ(popup_.values().front(), "имяПользователя");
    EXPECT_FALSE(popup_.error);
}

TEST_F(TranslationCoordinatorTest, AFailedDirectTranslationShowsTheError) {
    selectInField("пользователя");
    directHotkey();
    answer(0, 500, "");
    EXPECT_EQ(popup_.error, "Translation failed");
    EXPECT_TRUE(popup_.options.empty());
}

TEST_F(TranslationCoordinatorTest, ADirectTranslationThatSaysTheSameClosesThePopup) {
    selectInField("one two three four five six seven eight nine ten eleven");
    directHotkey();
    answer(0, 200, translationReply("One Two Three Four Five Six Seven Eight Nine Ten Eleven"));
    EXPECT_FALSE(popup_.visible);
    EXPECT_EQ(popup_.dismissals, 1);
    EXPECT_TRUE(popup_.options.empty());
}

TEST_F(TranslationCoordinatorTest, UndetectedTextOnTheDirectHotkeyGoesOutPrimaryToPrimary) {
    // Digits and marks are no language's.
    selectInField("42 + 17 = ?");
    directHotkey();
    ASSERT_EQ(http_.requests().size(), 1u);
    EXPECT_NE(url(0).find("sl=en&tl=en&"), std::string::npos) << url(0);
}

TEST_F(TranslationCoordinatorTest, AShortEnglishSelectionOnTheVariantsHotkeyStaysOffTheNetwork) {
    selectInField("user name");
    variantsHotkey();
    EXPECT_TRUE(http_.requests().empty());
    ASSERT_EQ(popup_.options.size(), 11u);
    EXPECT_EQ(popup_.values().front(), "userName");
}

TEST_F(TranslationCoordinatorTest, ARussianWordOnTheDirectHotkeyIsTranslatedIntoThePrimaryLanguage) {
    selectInField("Привет");
    directHotkey();
    ASSERT_EQ(http_.requests().size(), 1u);
    EXPECT_NE(url(0).find("sl=ru&tl=en&"), std::string::npos) << url(0);
    answer(0, 200, translationReply("Hello"));
    EXPECT_TRUE(popup_.visible);
    EXPECT_EQ(popup_.values(), std::vector<std::string>{"Hello"});

    // Russian outside the pair goes into the primary language all the same.
    popup_.dismiss();
    settings_.setTranslatorPrimaryLanguage("de");
    settings_.setTranslatorSecondaryLanguage("fr");
    directHotkey();
    ASSERT_EQ(http_.requests().size(), 2u);
    EXPECT_NE(url(1).find("sl=ru&tl=de&"), std::string::npos) << url(1);
}

TEST_F(TranslationCoordinatorTest, ALateReplyNeverTouchesADismissedPopup) {
    selectInField("имя пользователя");
    variantsHotkey();
    popup_.dismiss();
    EXPECT_FALSE(http_.respond(0, 200, translationReply("user name"))) << "the request was cancelled";
    settle();
    EXPECT_TRUE(popup_.options.empty());
    EXPECT_FALSE(popup_.visible);
}

TEST_F(TranslationCoordinatorTest, TheTranslatorSwitchedOffOrNoFrontmostApplicationDoNothing) {
    selectInField("имя пользователя");
    settings_.setTranslationEnabled(false);
    variantsHotkey();
    EXPECT_EQ(popup_.shows, 0);
    settings_.setTranslationEnabled(true);
    desktop_.clearFocus();
    variantsHotkey();
    EXPECT_EQ(popup_.shows, 0);
    EXPECT_TRUE(http_.requests().empty());
}

TEST_F(TranslationCoordinatorTest, AMegabyteSelectionGoesDirectAndFailsQuietlyAsAnError) {
    std::string huge;
    while (huge.size() < 1'000'000) huge += "слово ";
    selectInField(huge);
    variantsHotkey();
    ASSERT_EQ(http_.requests().size(), 1u);
    EXPECT_NE(url(0).find("&dt=t&q="), std::string::npos);
    answer(0, 414, "");
    EXPECT_EQ(popup_.error, "Translation failed");
    // Nothing of the text reached the log.
    logger_.flush();
    EXPECT_EQ(logger_.recentLogs(1).find("слово"), std::string::npos);
}

TEST_F(TranslationCoordinatorTest, PunctuationAloneGivesElevenEmptyNames) {
    selectInField("?!");
    variantsHotkey();
    ASSERT_EQ(http_.requests().size(), 1u);
    answer(0, 200, translationReply("?!"));
    ASSERT_EQ(popup_.options.size(), 11u);
    for (const auto& option : popup_.options) EXPECT_EQ(option.value, "");
    EXPECT_FALSE(coordinator_.prefetchInFlight()) << "an answer that says the same starts no prefetch";
}

// --- The synonym cycle ------------------------------------------------------------------------

class SynonymCycleTest : public TranslationCoordinatorTest {
protected:
    /// "имя пользователя" translated, then the two words' alternatives answered.
    void prefetch(const std::vector<std::string>& first, const std::vector<std::string>& second) {
        selectInField("имя пользователя");
        variantsHotkey();
        answer(0, 200, translationReply("user name"));
        ASSERT_EQ(http_.requests().size(), 3u);
        answer(1, 200, first.empty() ? std::string("[[]]") : alternatesReply(first));
        answer(2, 200, second.empty() ? std::string("[[]]") : alternatesReply(second));
    }
};

TEST_F(SynonymCycleTest, TabWalksTheSynonymsOneWordAtATime) {
    prefetch({"name", "title"}, {"user", "member", "person"});
    ASSERT_EQ(coordinator_.cycleSequence().size(), 6u);
    popup_.pressTab();
    // Step 1 changes the first word only.
    EXPECT_EQ(popup_.values().front(), "titleUser");
    popup_.pressTab();
    EXPECT_EQ(popup_.values().front(), "titleMember");
    for (int i = 0; i < 4; ++i) popup_.pressTab();
    EXPECT_EQ(coordinator_.cycleStep(), 0u) << "the cycle wraps";
    EXPECT_EQ(popup_.values().front(), "nameUser");
    EXPECT_TRUE(popup_.hint.has_value()) << "the hint stays";
}

TEST_F(SynonymCycleTest, EightAlternativesAtMostPerWordAndSixtyStepsAtMost) {
    const std::vector<std::string> ten{"a1", "a2", "a3", "a4", "a5", "a6", "a7", "a8", "a9", "a10"};
    prefetch(ten, ten);
    ASSERT_EQ(coordinator_.perWordAlternates().size(), 2u);
    EXPECT_EQ(coordinator_.perWordAlternates()[0].size(), 8u);
    EXPECT_EQ(coordinator_.cycleSequence().size(), 60u);
    for (int i = 0; i < 60; ++i) popup_.pressTab();
    EXPECT_EQ(coordinator_.cycleStep(), 0u);
}

TEST_F(SynonymCycleTest, AWordWithoutAlternativesLeavesTabInactive) {
    prefetch({"name", "title"}, {});
    EXPECT_TRUE(coordinator_.cycleSequence().empty());
    const auto before = popup_.values();
    popup_.pressTab();
    EXPECT_EQ(popup_.values(), before);
}

TEST_F(SynonymCycleTest, TabBeforeThePrefetchHasFinishedDoesNothing) {
    selectInField("имя пользователя");
    variantsHotkey();
    answer(0, 200, translationReply("user name"));
    answer(1, 200, alternatesReply({"name", "title"}));
    const auto before = popup_.values();
    popup_.pressTab();
    EXPECT_EQ(popup_.values(), before);
    EXPECT_TRUE(coordinator_.cycleSequence().empty());
}

TEST_F(SynonymCycleTest, ANewPressStartsOver) {
    prefetch({"name", "title"}, {"user", "member"});
    ASSERT_FALSE(coordinator_.cycleSequence().empty());
    selectInField("get user name");
    variantsHotkey();
    EXPECT_TRUE(coordinator_.cycleSequence().empty());
    EXPECT_EQ(coordinator_.cycleStep(), 0u);
}

// --- The answer -------------------------------------------------------------------------------

TEST_F(TranslationCoordinatorTest, TheChoiceReplacesTheSelectionThroughTheElement) {
    sim::TextField& field = desktop_.focusTextField("let имя пользователя be");
    ASSERT_TRUE(field.select({4, 16}));
    variantsHotkey();
    answer(0, 200, translationReply("user name"));
    popup_.confirm("userName");
    EXPECT_EQ(field.text(), "let userName be");
    EXPECT_EQ(desktop_.keyOutput().log().size(), 0u);
}

TEST_F(TranslationCoordinatorTest, AnElementThatRefusesTheWriteGetsDeletesAndTyping) {
    sim::TextField& field = selectInField("имя пользователя");
    field.setWritable(false);
    variantsHotkey();
    answer(0, 200, translationReply("user name"));
    popup_.confirm("user_name");
    EXPECT_EQ(desktop_.keyOutput().count(kDelete), 16u) << "the selection's length in deletes";
    EXPECT_EQ(desktop_.keyOutput().typedText(), "user_name");
}

TEST_F(TranslationCoordinatorTest, WithoutAnElementTheTextGoesThroughTheClipboardAndStaysThere) {
    sim::TextField& field = selectInField("имя пользователя");
    field.setReadable(false);
    variantsHotkey();
    EXPECT_EQ(popup_.shows, 0) << "nothing shows before the copy had its time";
    desktop_.loop().runFor(TranslationCoordinator::kCopyWait);
    settle();
    ASSERT_EQ(popup_.shows, 1);
    EXPECT_EQ(coordinator_.selectedText(), "имя пользователя");
    answer(0, 200, translationReply("user name"));
    popup_.confirm("userName");
    settle();
    EXPECT_EQ(field.text(), "userName");
    EXPECT_EQ(desktop_.pasteboard().text(), "userName");
}

TEST_F(TranslationCoordinatorTest, AnEmptyClipboardEndsTheClipboardRouteSilently) {
    desktop_.focusNonTextElement();
    desktop_.pasteboard().clear();
    variantsHotkey();
    desktop_.loop().runFor(TranslationCoordinator::kCopyWait);
    settle();
    EXPECT_EQ(popup_.shows, 0);
    EXPECT_TRUE(http_.requests().empty());
}

TEST_F(TranslationCoordinatorTest, APasswordFieldIsNotReadAndItsCopyIsRefused) {
    desktop_.pasteboard().writeFromOtherApp(platform::PasteboardItem::text("earlier text"));
    sim::TextField& field = selectInField("secret words");
    field.setSecure(true);
    variantsHotkey();
    desktop_.loop().runFor(TranslationCoordinator::kCopyWait);
    settle();
    // The clipboard still held what it held before: that is what gets translated.
    EXPECT_EQ(coordinator_.selectedText(), "earlier text");
}

}  // namespace
}  // namespace orvantis
