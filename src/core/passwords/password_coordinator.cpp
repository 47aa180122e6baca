#include "core/passwords/password_coordinator.h"

#include <algorithm>
#include <utility>

#include "core/strings/settings_strings.h"
#include "core/strings/string_format.h"

namespace orvantis {

PasswordCoordinator::PasswordCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                         platform::MainLoop& loop, platform::Pasteboard& pasteboard,
                                         platform::KeyOutput& keyOutput, PasswordGenerator& generator, Toast& toast,
                                         std::function<void()> acknowledge, PasswordPopupFactory makePopup)
    : settings_(settings), loop_(loop), pasteboard_(pasteboard), keyOutput_(keyOutput), generator_(generator),
      toast_(toast), acknowledge_(std::move(acknowledge)), makePopup_(std::move(makePopup)),
      hotkey_(monitor.onPasswordHotkey([this] { handleHotkey(); })) {}

PasswordCoordinator::~PasswordCoordinator() = default;

void PasswordCoordinator::handleHotkey() {
    if (!settings_.passwordEnabled()) return;
    const PasswordConfig config = PasswordConfig::fromSettings(settings_);
    switch (settings_.passwordMode()) {
        case PasswordMode::popup: showPopup(config); return;
        case PasswordMode::copyOnly: {
            const std::string password = generator_.generate(config);
            if (password.empty()) return;
            writeConcealed(password);
            showCopiedToast(password.size());
            return;
        }
        case PasswordMode::autoPaste: {
            std::string password = generator_.generate(config);
            if (password.empty()) return;
            const SettingsStrings s = SettingsStrings::make(settings_.settingsLanguage());
            const std::size_t length = password.size();
            typeLater(std::move(password));
            toast_.show(ToastContent{std::string(s.passwordToastTyped),
                                     formatString(s.passwordToastCopiedSubNoClear, {length}), "checkmark.circle.fill",
                                     ToastTint::green, std::chrono::milliseconds(2500)});
            return;
        }
    }
}

void PasswordCoordinator::showPopup(const PasswordConfig& config) {
    if (popup_ && popup_->isVisible()) {
        popup_->bringToFront();
        return;
    }
    if (!makePopup_) return;
    dropPopup_.cancel();
    PasswordPopup::Callbacks callbacks;
    callbacks.onCopy = [this](const std::string& password) { handlePopupCopy(password); };
    callbacks.onPaste = [this](const std::string& password) { handlePopupPaste(password); };
    callbacks.onDismiss = [this] {
        // Called from within the popup's own event: it goes on the next turn, unless a new
        // one has taken its place by then.
        PasswordPopup* closed = popup_.get();
        dropPopup_ = loop_.postAfter(platform::Duration::zero(), [this, closed] {
            if (popup_.get() == closed) popup_.reset();
        });
    };
    popup_.reset();
    popup_ = makePopup_(config, generator_, settings_, std::move(callbacks));
    if (popup_) popup_->show();
}

void PasswordCoordinator::handlePopupCopy(const std::string& password) {
    if (password.empty()) return;
    writeConcealed(password);
    showCopiedToast(password.size());
}

void PasswordCoordinator::handlePopupPaste(const std::string& password) {
    if (password.empty()) return;
    typeLater(password);
}

void PasswordCoordinator::writeConcealed(const std::string& password) {
    namespace type = platform::pasteboard_type;
    platform::PasteboardItem item = platform::PasteboardItem::text(password);
    item.representations.emplace_back(std::string(type::kConcealed), std::string(1, '\x01'));
    item.representations.emplace_back(std::string(type::kPasswordManagerHint),
                                      std::string(type::kPasswordManagerHintSecret));
    pasteboard_.write(item);
    lastWriteChangeCount_ = pasteboard_.changeCount();
    if (acknowledge_) acknowledge_();
    scheduleClearIfNeeded();
}

void PasswordCoordinator::scheduleClearIfNeeded() {
    // A newer password restarts the countdown.
    clearTimer_.cancel();
    const int seconds = settings_.passwordClipboardClearSeconds();
    if (seconds < 1) return;
    const std::int64_t written = lastWriteChangeCount_;
    clearTimer_ = loop_.postAfter(std::chrono::seconds(std::min(seconds, kMaximumClearSeconds)), [this, written] {
        // Something copied since is the user's: it stays.
        if (pasteboard_.changeCount() != written) return;
        pasteboard_.write(platform::PasteboardItem{});
        if (acknowledge_) acknowledge_();
    });
}

void PasswordCoordinator::typeLater(std::string password) {
    std::erase_if(typing_, [](const platform::TimerHandle& t) { return !t.isActive(); });
    typing_.push_back(loop_.postAfter(kTypingDelay, [this, password = std::move(password)] {
        keyOutput_.typeText(password);
    }));
}

void PasswordCoordinator::showCopiedToast(std::size_t length) {
    const SettingsStrings s = SettingsStrings::make(settings_.settingsLanguage());
    const int seconds = settings_.passwordClipboardClearSeconds();
    ToastContent content{std::string(s.passwordToastCopied), std::nullopt, "checkmark.circle.fill", ToastTint::green,
                         std::chrono::milliseconds(2500)};
    if (seconds < 1)
        content.subtitle = formatString(s.passwordToastCopiedSubNoClear, {length});
    else
        content.subtitle = formatString(s.passwordToastCopiedSub, {length, std::min(seconds, kMaximumClearSeconds)});
    toast_.show(content);
}

}  // namespace orvantis
