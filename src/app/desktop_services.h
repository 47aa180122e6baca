#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/passwords/password_popup.h"
#include "core/settings/settings_language.h"

namespace orvantis {
class AppSettings;
class ClipboardHistoryPopup;
class HotkeyOverlayView;
class OnboardingModel;
class OnboardingWindow;
class KeyboardLockOverlay;
class TextTransformerWindow;
class Toast;
class TranslationPopup;
}  // namespace orvantis
namespace orvantis::platform {
class Accessibility;
class ApplicationWatch;
class Applications;
class LidSleepControl;
class PointerDevices;
class PowerAssertions;
class EventTap;
class FocusCommands;
class HttpClient;
class InputSources;
class KeyOutput;
class LoginItem;
class MailComposer;
class Pasteboard;
class Permissions;
class Pointer;
class SystemSleepEvents;
class UserNotifications;
}  // namespace orvantis::platform

namespace orvantis::app {

/// What the features need of the desktop, behind the platform seams: the program fills it with
/// the X11 backends (x11_desktop.h), tests with the simulated desktop. The members are borrowed
/// from whoever made them, who keeps them alive longer than every feature built on them. A null
/// member is a service this desktop lacks: the features that need it stay off, and say so in
/// the log.
struct DesktopServices {
    /// The keyboard: watched and hotkeys swallowed by the tap, keys sent by the output.
    platform::EventTap* eventTap = nullptr;
    platform::KeyOutput* keyOutput = nullptr;
    /// The keys for copying a selection and pasting over it, which on X11 go through the
    /// selections so that terminals take part; the plain key output where the desktop has none.
    platform::KeyOutput* selectionKeys = nullptr;
    platform::InputSources* inputSources = nullptr;
    platform::Permissions* permissions = nullptr;
    /// The focused text element of other applications.
    platform::Accessibility* accessibility = nullptr;
    platform::Applications* applications = nullptr;
    platform::Pasteboard* pasteboard = nullptr;
    platform::Pointer* pointer = nullptr;
    platform::HttpClient* httpClient = nullptr;
    /// The Pomodoro's banners (or bell), the system's sleep and wake, and the Focus commands.
    platform::UserNotifications* userNotifications = nullptr;
    platform::SystemSleepEvents* sleepEvents = nullptr;
    platform::FocusCommands* focusCommands = nullptr;
    /// The system utilities: the keep-awake assertion, lid-close sleep, the running
    /// applications and their changes, and the pointing devices' scroll direction.
    platform::PowerAssertions* powerAssertions = nullptr;
    platform::LidSleepControl* lidSleep = nullptr;
    platform::ApplicationWatch* applicationWatch = nullptr;
    platform::PointerDevices* pointerDevices = nullptr;
    /// The record that starts the program at login, and the mail composer for feedback.
    platform::LoginItem* loginItem = nullptr;
    platform::MailComposer* mailComposer = nullptr;
    /// The keyboard lock's overlay, made at the first lock.
    std::function<std::unique_ptr<KeyboardLockOverlay>()> makeKeyboardLockOverlay;
    /// The translator's and the clipboard history's popups, made once by their features.
    std::function<std::unique_ptr<TranslationPopup>()> makeTranslationPopup;
    std::function<std::unique_ptr<ClipboardHistoryPopup>()> makeClipboardPopup;
    /// A text tools window, made at each hotkey that finds none; it calls `onClosed` when closed.
    std::function<std::unique_ptr<TextTransformerWindow>(AppSettings& settings, std::function<void()> onClosed)>
        makeTextTransformerWindow;
    /// A password popup, made at each password hotkey that finds none open.
    PasswordPopupFactory makePasswordPopup;
    /// The passing notice at the top of the screen, made once.
    std::function<std::unique_ptr<Toast>()> makeToast;
    /// The first-run window over its model, in the interface language of the moment.
    std::function<std::unique_ptr<OnboardingWindow>(OnboardingModel& model, SettingsLanguage language)>
        makeOnboardingWindow;
    /// The hotkey overlay's panel, made at its first display.
    std::function<std::unique_ptr<HotkeyOverlayView>()> makeHotkeyOverlay;
    /// The operating system and its version, for the launch banner.
    std::string systemVersion;

    /// True when every service that watching and sending keys needs is there.
    bool hasKeyboard() const {
        return eventTap != nullptr && keyOutput != nullptr && inputSources != nullptr && accessibility != nullptr &&
               permissions != nullptr;
    }
};

}  // namespace orvantis::app
