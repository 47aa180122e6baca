#include "app/x11_desktop.h"

#include <optional>
#include <string>

#include "app/selection_key_output.h"
#include "build_info.h"
#include "core/log/app_logger.h"
#include "platform/curl/curl_http_client.h"
#include "platform/freedesktop/atspi_accessibility.h"
#include "platform/freedesktop/autostart_entry.h"
#include "platform/freedesktop/desktop_entries.h"
#include "platform/freedesktop/desktop_notifications.h"
#include "platform/freedesktop/focus_command_directory.h"
#include "platform/freedesktop/logind_sleep_events.h"
#include "platform/freedesktop/os_release.h"
#include "platform/freedesktop/power_inhibitors.h"
#include "platform/freedesktop/xdg_mail_composer.h"
#include "platform/x11/x11_applications.h"
#include "platform/x11/x11_clipboard.h"
#include "platform/x11/x11_event_tap.h"
#include "platform/x11/x11_permissions.h"
#include "platform/x11/xinput_pointer_devices.h"
#include "platform/x11/xkb_input_sources.h"
#include "platform/x11/xtest_key_output.h"

#include <QApplication>
#include "ui/clipboard_history_popup.h"
#include "ui/keyboard_grab.h"
#include "ui/password_popup_controller.h"
#include "ui/keyboard_lock_overlay.h"
#include "ui/qt_translation_popup.h"
#include "ui/text_transformer_window_controller.h"
#include "ui/hotkey_overlay_panel.h"
#include "ui/onboarding_window_controller.h"
#include "ui/toast_panel.h"
#include "ui/translation_popup_controller.h"

namespace orvantis::app {

void X11Desktop::openPomodoroServices(AppLogger& logger) {
    // Banners over the session bus, the bell through the toolkit's display connection.
    userNotifications_ = std::make_unique<freedesktop::DesktopNotifications>(loop_, logger.log(),
                                                                            [] { QApplication::beep(); });
    services_.userNotifications = userNotifications_.get();
    sleepEvents_ = std::make_unique<freedesktop::LogindSleepEvents>(loop_, logger.log());
    services_.sleepEvents = sleepEvents_.get();
    focusCommands_ = std::make_unique<freedesktop::FocusCommandDirectory>(
        freedesktop::FocusCommandDirectory::defaultFolder(), logger.log());
    services_.focusCommands = focusCommands_.get();
}

X11Desktop::X11Desktop(AppLogger& logger, platform::MainLoop& loop) : loop_(loop) {
    services_.systemVersion = freedesktop::OsRelease::readSystem().systemVersion();
    permissions_ = std::make_unique<x11::X11Permissions>();
    services_.permissions = permissions_.get();
    // The focused text field of other applications; without an accessibility bus the layout
    // switcher retypes from what it saw typed.
    accessibility_ = std::make_unique<freedesktop::AtspiAccessibility>(&logger.log().app);
    services_.accessibility = accessibility_.get();
    openKeyboard(logger);
    openPomodoroServices(logger);

    applications_ = x11::X11Applications::open();
    if (!applications_) return;  // no display: nothing below would work either
    services_.applications = applications_.get();
    services_.applicationWatch = applications_.get();
    applicationsWatch_ = loop_.watchReadable(applications_->fileDescriptor(), [this] { applications_->dispatchPending(); });
    // Keep-awake through the session's screen saver (and the login manager's idle
    // inhibitor), lid-close sleep through the login manager's lid-switch inhibitor.
    powerAssertions_ = std::make_unique<freedesktop::ScreenSaverInhibitor>(logger.log().app);
    services_.powerAssertions = powerAssertions_.get();
    lidSleep_ = std::make_unique<freedesktop::LogindLidInhibitor>(logger.log().app);
    services_.lidSleep = lidSleep_.get();
    // Launch at login as an XDG autostart entry, starting the installed program when that is
    // the one running, else this build's binary.
    loginItem_ = std::make_unique<freedesktop::AutostartEntry>(
        freedesktop::AutostartEntry::defaultFile(),
        freedesktop::AutostartEntry::launchTarget(freedesktop::AutostartEntry::runningExecutable(),
                                                  build::kInstalledBinary));
    services_.loginItem = loginItem_.get();
    mailComposer_ = std::make_unique<freedesktop::XdgMailComposer>(loop_);
    services_.mailComposer = mailComposer_.get();
    // Scroll direction per device, where libinput drives the device.
    pointerDevices_ = x11::XInputPointerDevices::open(nullptr, &logger.log());
    if (pointerDevices_) {
        services_.pointerDevices = pointerDevices_.get();
        pointerDevicesWatch_ =
            loop_.watchReadable(pointerDevices_->fileDescriptor(), [this] { pointerDevices_->dispatchPending(); });
    }
    services_.makeKeyboardLockOverlay = []() -> std::unique_ptr<KeyboardLockOverlay> {
        return std::make_unique<ui::QtKeyboardLockOverlay>();
    };
    openClipboard(logger);
    pointer_ = std::make_unique<ui::QtPointer>();
    services_.pointer = pointer_.get();
    httpClient_ = std::make_unique<curl::CurlHttpClient>(loop_);
    services_.httpClient = httpClient_.get();
    if (keyOutput_ && pasteboard_) {
        selectionKeys_ = std::make_unique<SelectionKeyOutput>(*keyOutput_, *pasteboard_, *pasteboard_);
        services_.selectionKeys = selectionKeys_.get();
    }

    services_.makeTranslationPopup = [this]() -> std::unique_ptr<TranslationPopup> {
        translationPopupController_ =
            std::make_unique<ui::TranslationPopupController>(loop_, ui::KeyboardGrab::forPlatform());
        return std::make_unique<ui::QtTranslationPopup>(*translationPopupController_);
    };
    services_.makeClipboardPopup = [this]() -> std::unique_ptr<ClipboardHistoryPopup> {
        clipboardPopupController_ = std::make_unique<ui::ClipboardPopupController>(
            loop_, ui::KeyboardGrab::forPlatform(),
            [this](const std::string& bundleID) -> std::optional<std::string> {
                if (!desktopEntries_) desktopEntries_ = std::make_unique<freedesktop::DesktopEntries>();
                const freedesktop::DesktopEntry* entry = desktopEntries_->byID(bundleID);
                if (!entry) entry = desktopEntries_->forWindowClass(bundleID, bundleID);
                if (!entry || entry->name.empty()) return std::nullopt;
                return entry->name;
            });
        return std::make_unique<ui::QtClipboardHistoryPopup>(*clipboardPopupController_);
    };
    services_.makePasswordPopup = [this](const PasswordConfig& initial, PasswordGenerator& generator,
                                         AppSettings& settings,
                                         PasswordPopup::Callbacks callbacks) -> std::unique_ptr<PasswordPopup> {
        return std::make_unique<ui::PasswordPopupController>(initial, generator, settings, std::move(callbacks), loop_,
                                                             ui::KeyboardGrab::forPlatform());
    };
    services_.makeToast = [this]() -> std::unique_ptr<Toast> { return std::make_unique<ui::ToastPanel>(loop_); };
    services_.makeOnboardingWindow = [](OnboardingModel& model,
                                        SettingsLanguage language) -> std::unique_ptr<OnboardingWindow> {
        return std::make_unique<ui::OnboardingWindowController>(model, language);
    };
    services_.makeHotkeyOverlay = []() -> std::unique_ptr<HotkeyOverlayView> {
        return std::make_unique<ui::HotkeyOverlayPanel>();
    };
    if (pasteboard_) {
        services_.makeTextTransformerWindow = [this](AppSettings& settings, std::function<void()> onClosed)
            -> std::unique_ptr<TextTransformerWindow> {
            return std::make_unique<ui::QtTextTransformerWindow>(settings, *pasteboard_, std::move(onClosed));
        };
    }
}

void X11Desktop::openKeyboard(AppLogger& logger) {
    eventTap_ = x11::X11EventTap::open(nullptr, &logger.log());
    keyOutput_ = x11::XTestKeyOutput::open();
    inputSources_ = x11::XkbInputSources::open();
    if (!eventTap_ || !keyOutput_ || !inputSources_) {
        eventTap_.reset();
        return;
    }
    // Watching the keyboard counts as granted with the accessibility bus on, the text path's
    // need; until then the tray shows the banner and retries.
    eventTap_->setPermissionCheck([this] { return permissions_->hasAccessibility(); });
    eventTapWatch_ = loop_.watchReadable(eventTap_->fileDescriptor(), [this] {
        eventTap_->dispatchPending();
        // A broken connection stays readable with nothing to read.
        if (eventTap_->connectionLost()) eventTapWatch_ = {};
    });
    // Events read off the connection while launch sets the tap up wait in the library's queue,
    // where the watch would not see them: the first turn of the event loop hands them on.
    loop_.post([this] { eventTap_->dispatchPending(); });
    services_.eventTap = eventTap_.get();
    services_.keyOutput = keyOutput_.get();
    services_.inputSources = inputSources_.get();
}

void X11Desktop::openClipboard(AppLogger& logger) {
    pasteboard_ = x11::X11Clipboard::open(nullptr, loop_, &logger.log().clipboard);
    if (!pasteboard_) return;
    // The clipboard's own connection, read whenever the server has something for it.
    pasteboardWatch_ = loop_.watchReadable(pasteboard_->fileDescriptor(), [this] {
        pasteboard_->dispatchPending();
        if (pasteboard_->connectionLost()) pasteboardWatch_ = {};
    });
    services_.pasteboard = pasteboard_.get();
}

X11Desktop::~X11Desktop() {
    // The popups' controllers and the watch go before the backends they use.
    clipboardPopupController_.reset();
    translationPopupController_.reset();
    eventTapWatch_ = {};
    pasteboardWatch_ = {};
    applicationsWatch_ = {};
    pointerDevicesWatch_ = {};
}

}  // namespace orvantis::app
