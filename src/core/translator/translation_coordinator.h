#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "core/translation/translation_service.h"
#include "core/translator/translation_plan.h"
#include "core/translator/translation_popup.h"
#include "platform/applications.h"
#include "platform/key_output.h"
#include "platform/main_loop.h"
#include "platform/pasteboard.h"
#include "platform/pointer.h"
#include "platform/subscription.h"
#include "platform/text_element.h"

namespace orvantis {

/// Runs the translator on the selected text of any application. The variants hotkey turns a
/// selection of up to ten words into the eleven identifier names of its English translation;
/// the direct hotkey translates between the user's two languages. The selection is read from
/// the focused text element, else copied through the clipboard; the chosen text goes back over
/// the selection, through the element, as keystrokes, or by pasting. In the names list Tab
/// walks the synonyms of the source's words, fetched word by word once the names are shown.
///
/// Borrows every collaborator, which must outlive it; keeps its closures in the monitor and
/// the popup and its timers and requests as members, so nothing calls it after destruction.
/// Main thread only.
class TranslationCoordinator {
public:
    /// How long the clipboard route waits for the copy before reading the pasteboard.
    static constexpr platform::Duration kCopyWait = std::chrono::milliseconds(150);
    /// The longest synonym cycle.
    static constexpr std::size_t kCycleCap = 60;
    /// The most alternatives kept for one word.
    static constexpr std::size_t kMaxAlternativesPerWord = 8;
    /// The one message the translator ever shows.
    static constexpr std::string_view kTranslationFailed = "Translation failed";

    TranslationCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor, TranslationPopup& popup,
                           TranslationService& service, platform::Applications& applications,
                           platform::Accessibility& accessibility, platform::Pasteboard& pasteboard,
                           platform::KeyOutput& keyOutput, platform::Pointer& pointer, platform::MainLoop& loop);
    ~TranslationCoordinator();
    TranslationCoordinator(const TranslationCoordinator&) = delete;
    TranslationCoordinator& operator=(const TranslationCoordinator&) = delete;

    /// The hotkeys' work; public for tests and for callers without a monitor.
    void handleTranslationHotkey(bool forceDirect);
    /// The popup's Tab.
    void handleTabInPopup();
    /// The popup's confirm: `text` goes over the selection.
    void replace(const std::string& text);

    /// The text being translated.
    const std::string& selectedText() const { return selectedText_; }
    /// The synonym cycle: one list of alternative indices per step, and the current step.
    const std::vector<std::vector<int>>& cycleSequence() const { return cycleSequence_; }
    std::size_t cycleStep() const { return cycleStep_; }
    const std::vector<std::vector<std::string>>& perWordAlternates() const { return perWordAlternates_; }
    /// Whether a translation or the wait of the clipboard route is under way.
    bool translationInFlight() const;
    /// Whether the synonym lookups are under way.
    bool prefetchInFlight() const { return prefetch_ != nullptr; }
    /// The plan for `text`, from the stored language pair.
    TranslationPlan planFor(const std::string& text, bool forceDirect) const;

private:
    struct Selection {
        std::unique_ptr<platform::TextElement> element;
        std::string text;
        platform::TextRange range;
    };
    struct Prefetch;

    std::optional<Selection> readViaAccessibility();
    void runTranslation(const TranslationPlan& plan, const std::string& text);
    void showNamingVariants(const std::string& phrase, const std::string& hint);
    void resetCycle();
    void startAlternatesPrefetch(const std::string& source, const std::string& sourceLang,
                                 const std::string& targetLang);
    void finishPrefetch();
    void cancelTranslationTask();
    std::string variantsHint() const;
    std::string directHint() const;

    AppSettings& settings_;
    TranslationPopup& popup_;
    TranslationService& service_;
    platform::Applications& applications_;
    platform::Accessibility& accessibility_;
    platform::Pasteboard& pasteboard_;
    platform::KeyOutput& keyOutput_;
    platform::Pointer& pointer_;
    platform::MainLoop& loop_;

    std::unique_ptr<platform::TextElement> targetElement_;
    std::int64_t targetPID_ = 0;
    std::string selectedText_;
    platform::TextRange selectionRange_;
    TranslationRequest translation_;
    platform::TimerHandle copyWait_;
    bool translating_ = false;
    bool copying_ = false;
    std::vector<std::vector<int>> cycleSequence_;
    std::size_t cycleStep_ = 0;
    std::vector<std::vector<std::string>> perWordAlternates_;
    std::unique_ptr<Prefetch> prefetch_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace orvantis
