#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/events/global_event_monitor_protocol.h"
#include "core/passwords/password_config.h"
#include "core/passwords/password_generator.h"
#include "core/passwords/password_popup.h"
#include "core/settings/app_settings.h"
#include "core/shell/toast.h"

#include "platform/key_output.h"
#include "platform/main_loop.h"
#include "platform/pasteboard.h"
#include "platform/subscription.h"

namespace orvantis {

/// The password hotkey: a new password goes, by the password mode, into the popup, typed into
/// the focused field, or onto the pasteboard marked as secret and wiped after the set time
/// unless something else has been copied since. A copied password never enters the clipboard
/// history: it carries both secret markers and its write is acknowledged to the clipboard
/// monitor (through `acknowledge`).
///
/// Borrows every collaborator, which must outlive it; keeps its hotkey subscription and its
/// timers as members, so nothing calls it after destruction. Main thread only.
class PasswordCoordinator {
public:
    /// Time for the hotkey's keys to be let go, or for the popup to close and the previous
    /// application to take the focus back, before typing.
    static constexpr std::chrono::milliseconds kTypingDelay{120};
    /// The longest wipe delay, whatever the settings say.
    static constexpr int kMaximumClearSeconds = 600;

    PasswordCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor, platform::MainLoop& loop,
                        platform::Pasteboard& pasteboard, platform::KeyOutput& keyOutput,
                        PasswordGenerator& generator, Toast& toast, std::function<void()> acknowledge,
                        PasswordPopupFactory makePopup);
    ~PasswordCoordinator();
    PasswordCoordinator(const PasswordCoordinator&) = delete;
    PasswordCoordinator& operator=(const PasswordCoordinator&) = delete;

    /// The hotkey's work; public for tests and callers without a monitor.
    void handleHotkey();

    /// The popup's Copy: the password onto the pasteboard, and the copied toast.
    void handlePopupCopy(const std::string& password);
    /// The popup's Paste: the password typed into the application that has the focus again.
    void handlePopupPaste(const std::string& password);

    /// The open popup, or null.
    PasswordPopup* popup() const { return popup_.get(); }
    /// True while a wipe is scheduled.
    bool hasPendingWipe() const { return clearTimer_.isActive(); }

private:
    void showPopup(const PasswordConfig& config);
    void writeConcealed(const std::string& password);
    void scheduleClearIfNeeded();
    void typeLater(std::string password);
    void showCopiedToast(std::size_t length);

    AppSettings& settings_;
    platform::MainLoop& loop_;
    platform::Pasteboard& pasteboard_;
    platform::KeyOutput& keyOutput_;
    PasswordGenerator& generator_;
    Toast& toast_;
    std::function<void()> acknowledge_;
    PasswordPopupFactory makePopup_;
    std::unique_ptr<PasswordPopup> popup_;
    platform::TimerHandle clearTimer_;
    std::int64_t lastWriteChangeCount_ = 0;
    std::vector<platform::TimerHandle> typing_;
    platform::TimerHandle dropPopup_;
    Subscription hotkey_;
};

}  // namespace orvantis
