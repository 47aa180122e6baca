#include "core/translator/translation_coordinator.h"

#include <algorithm>
#include <utility>

#include "core/language/language_detector.h"
#include "core/names/name_variants.h"
#include "core/strings/settings_strings.h"
#include "core/text/case_mapping.h"

namespace orvantis {

using platform::TextElement;
using platform::TextRange;

namespace {

/// The eleven names of `phrase` as rows, each showing what it inserts.
std::vector<PopupOption> nameOptions(std::string_view phrase) {
    std::vector<PopupOption> options;
    for (NameVariant& variant : NameVariantGenerator::generate(phrase))
        options.push_back(PopupOption{variant.value, std::move(variant.value)});
    return options;
}

}  // namespace

/// The synonym lookups of one selection: one request per word, all at once.
struct TranslationCoordinator::Prefetch {
    std::vector<std::vector<std::string>> alternates;
    std::vector<TranslationRequest> requests;
    std::size_t pending = 0;
};

TranslationCoordinator::TranslationCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                               TranslationPopup& popup, TranslationService& service,
                                               platform::Applications& applications,
                                               platform::Accessibility& accessibility,
                                               platform::Pasteboard& pasteboard, platform::KeyOutput& keyOutput,
                                               platform::Pointer& pointer, platform::MainLoop& loop)
    : settings_(settings), popup_(popup), service_(service), applications_(applications),
      accessibility_(accessibility), pasteboard_(pasteboard), keyOutput_(keyOutput), pointer_(pointer),
      loop_(loop) {
    subscriptions_.push_back(monitor.onTranslationHotkey([this] { handleTranslationHotkey(false); }));
    subscriptions_.push_back(monitor.onDirectTranslationHotkey([this] { handleTranslationHotkey(true); }));
    popup_.setOnConfirm([this](const std::string& text) { replace(text); });
    popup_.setOnDismiss([this] {
        cancelTranslationTask();
        prefetch_.reset();
    });
    popup_.setOnTabPressed([this] { handleTabInPopup(); });
}

TranslationCoordinator::~TranslationCoordinator() {
    popup_.setOnConfirm({});
    popup_.setOnDismiss({});
    popup_.setOnTabPressed({});
}

bool TranslationCoordinator::translationInFlight() const { return copying_ || translating_; }

// --- The press --------------------------------------------------------------------------------

void TranslationCoordinator::handleTranslationHotkey(bool forceDirect) {
    if (!settings_.translationEnabled()) return;
    const std::optional<platform::ApplicationInfo> frontmost = applications_.frontmostApplication();
    if (!frontmost) return;
    resetCycle();

    if (std::optional<Selection> selection = readViaAccessibility()) {
        targetElement_ = std::move(selection->element);
        targetPID_ = frontmost->processID;
        selectedText_ = std::move(selection->text);
        selectionRange_ = selection->range;
        popup_.show(pointer_.location());
        const TranslationPlan plan = planFor(selectedText_, forceDirect);
        cancelTranslationTask();
        runTranslation(plan, selectedText_);
        return;
    }

    // The clipboard route: copy, give the application a moment, read what the clipboard holds.
    // Whatever it holds then is translated: where the copy did nothing, that is the previous
    // clipboard text.
    targetElement_.reset();
    targetPID_ = frontmost->processID;
    selectionRange_ = TextRange{0, 0};
    const platform::ScreenPoint pointer = pointer_.location();
    keyOutput_.copy();
    cancelTranslationTask();
    copying_ = true;
    copyWait_ = loop_.postAfter(kCopyWait, [this, pointer, forceDirect] {
        copying_ = false;
        std::optional<std::string> text = pasteboard_.text();
        if (!text || text->empty()) return;
        selectedText_ = std::move(*text);
        popup_.show(pointer);
        runTranslation(planFor(selectedText_, forceDirect), selectedText_);
    });
}

std::optional<TranslationCoordinator::Selection> TranslationCoordinator::readViaAccessibility() {
    std::unique_ptr<TextElement> element = accessibility_.focusedTextElement();
    if (!element) return std::nullopt;
    // A password field is never read; its copy is refused too.
    if (element->isSecure()) return std::nullopt;
    std::optional<std::string> text = element->selectedText();
    if (!text || text->empty()) return std::nullopt;
    const std::optional<TextRange> range = element->selectedRange();
    if (!range || range->length < 1) return std::nullopt;
    return Selection{std::move(element), std::move(*text), *range};
}

TranslationPlan TranslationCoordinator::planFor(const std::string& text, bool forceDirect) const {
    return translationPlan(LanguageDetector::detect(text), LanguageDetector::wordCount(text), forceDirect,
                           settings_.translatorPrimaryLanguage(), settings_.translatorSecondaryLanguage());
}

// --- The translation --------------------------------------------------------------------------

void TranslationCoordinator::runTranslation(const TranslationPlan& plan, const std::string& text) {
    if (plan.mode == TranslationMode::namingVariants && plan.source == plan.target) {
        // An English selection: its own words give the names, with no request.
        if (popup_.isVisible()) showNamingVariants(text, variantsHint());
        return;
    }
    translating_ = true;
    translation_ = service_.translate(
        text, plan.source, plan.target, [this, plan, text](TranslationResult<std::string> result) {
            translating_ = false;
            if (!popup_.isVisible()) return;
            const bool naming = plan.mode == TranslationMode::namingVariants;
            if (!result) {
                // The selection's own words still give names; only the direct road shows an error.
                if (naming) showNamingVariants(text, variantsHint());
                else popup_.showError(std::string(kTranslationFailed));
                return;
            }
            const std::string& translated = result.value();
            const bool same = text::lowercased(translated) == text::lowercased(text);
            if (naming) {
                if (!translated.empty() && !same) {
                    showNamingVariants(translated, variantsHint());
                    startAlternatesPrefetch(text, plan.source, plan.target);
                } else {
                    showNamingVariants(text, variantsHint());
                }
                return;
            }
            if (translated.empty() || same) {
                // A translation that says the same needs no popup.
                popup_.dismiss();
                return;
            }
            popup_.setFooterHint(directHint());
            popup_.showOptions({PopupOption{translated, translated}});
        });
}

void TranslationCoordinator::showNamingVariants(const std::string& phrase, const std::string& hint) {
    if (!popup_.isVisible()) return;
    popup_.setFooterHint(hint);
    popup_.showOptions(nameOptions(phrase));
}

void TranslationCoordinator::cancelTranslationTask() {
    translation_ = {};
    copyWait_ = {};
    translating_ = false;
    copying_ = false;
}

// --- The synonym cycle ------------------------------------------------------------------------

void TranslationCoordinator::resetCycle() {
    prefetch_.reset();
    perWordAlternates_.clear();
    cycleSequence_.clear();
    cycleStep_ = 0;
}

void TranslationCoordinator::startAlternatesPrefetch(const std::string& source, const std::string& sourceLang,
                                                     const std::string& targetLang) {
    const std::vector<std::string> words = tokenizeForAlternates(source);
    if (words.empty()) return;
    prefetch_ = std::make_unique<Prefetch>();
    prefetch_->alternates.assign(words.size(), {});
    prefetch_->pending = words.size();
    prefetch_->requests.reserve(words.size());
    Prefetch* prefetch = prefetch_.get();
    for (std::size_t index = 0; index < words.size(); ++index) {
        prefetch->requests.push_back(service_.translateWithAlternates(
            words[index], sourceLang, targetLang,
            [this, prefetch, index](TranslationResult<std::vector<std::string>> result) {
                // The requests die with their prefetch, so this one is still current.
                if (result) {
                    std::vector<std::string> list = std::move(result.value());
                    if (list.size() > kMaxAlternativesPerWord) list.resize(kMaxAlternativesPerWord);
                    prefetch->alternates[index] = std::move(list);
                }
                if (--prefetch->pending == 0) loop_.post([this, prefetch] {
                    if (prefetch_.get() == prefetch) finishPrefetch();
                });
            }));
    }
}

void TranslationCoordinator::finishPrefetch() {
    std::unique_ptr<Prefetch> prefetch = std::move(prefetch_);
    // The cycle needs every word: one without alternatives leaves Tab inactive.
    const bool complete = std::none_of(prefetch->alternates.begin(), prefetch->alternates.end(),
                                       [](const std::vector<std::string>& list) { return list.empty(); });
    if (!complete) return;
    perWordAlternates_ = std::move(prefetch->alternates);
    std::vector<int> dims;
    for (const auto& list : perWordAlternates_) dims.push_back(static_cast<int>(list.size()));
    cycleSequence_ = snakeSequence(dims, kCycleCap);
    cycleStep_ = 0;
}

void TranslationCoordinator::handleTabInPopup() {
    if (cycleSequence_.empty()) return;
    // Step 0, every word's first alternative, comes back only once the cycle has wrapped.
    cycleStep_ = (cycleStep_ + 1) % cycleSequence_.size();
    const std::optional<std::string> phrase = cyclePhrase(perWordAlternates_, cycleSequence_[cycleStep_]);
    if (!phrase || phrase->empty()) return;
    popup_.showOptions(nameOptions(*phrase));
}

// --- The answer -------------------------------------------------------------------------------

void TranslationCoordinator::replace(const std::string& text) {
    if (!targetElement_) {
        // The clipboard is left holding the text.
        pasteboard_.write(platform::PasteboardItem::text(text));
        keyOutput_.paste();
        return;
    }
    if (targetElement_->replaceSelectedText(text)) return;
    for (std::size_t i = 0; i < selectionRange_.length; ++i)
        keyOutput_.postKey(platform::key_code::kDelete, 0);
    keyOutput_.typeText(text);
}

std::string TranslationCoordinator::variantsHint() const {
    return std::string(SettingsStrings::make(settings_.settingsLanguage()).translationPopupHintVariants);
}

std::string TranslationCoordinator::directHint() const {
    return std::string(SettingsStrings::make(settings_.settingsLanguage()).translationPopupHintDirect);
}

}  // namespace orvantis
