#pragma once

#include <memory>

#include "app/desktop_services.h"
#include "platform/subscription.h"

namespace orvantis {
class AppLogger;
}
namespace orvantis::platform {
class Accessibility;
class Applications;
class HttpClient;
class KeyOutput;
class MainLoop;
class Pointer;
}  // namespace orvantis::platform
namespace orvantis::x11 {
class X11Applications;
class X11Clipboard;
class X11EventTap;
class X11Permissions;
class XInputPointerDevices;
class XkbInputSources;
class XTestKeyOutput;
}  // namespace orvantis::x11
namespace orvantis::freedesktop {
class AutostartEntry;
class DesktopEntries;
class XdgMailComposer;
class LogindLidInhibitor;
class ScreenSaverInhibitor;
}  // namespace orvantis::freedesktop
namespace orvantis::ui {
class ClipboardPopupController;
class TranslationPopupController;
}  // namespace orvantis::ui

namespace orvantis::app {

/// The X11 desktop of the running program: the keyboard through XInput 2, XTest and XKB, the
/// text of other applications through the accessibility bus, the frontmost window and the
/// clipboard and selection through connections of their own, the pointer through Qt, and the
/// network through libcurl. Owns every backend and hands them out as DesktopServices; the
/// connections of the tap and of the clipboard are watched on the main loop. Made once by the process entry before the launch sequence, destroyed after the end sequence;
/// main thread only.
class X11Desktop {
public:
    /// Opens what the display offers. A part the display lacks (XInput 2 or XTest, say) is left
    /// out of services(); without any display the services are all null.
    X11Desktop(AppLogger& logger, platform::MainLoop& loop);
    ~X11Desktop();
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;

    const DesktopServices& services() const { return services_; }

private:
    void openKeyboard(AppLogger& logger);
    void openClipboard(AppLogger& logger);
    void openPomodoroServices(AppLogger& logger);

    platform::MainLoop& loop_;
    std::unique_ptr<x11::X11EventTap> eventTap_;
    std::unique_ptr<x11::XTestKeyOutput> keyOutput_;
    std::unique_ptr<x11::XkbInputSources> inputSources_;
    std::unique_ptr<x11::X11Permissions> permissions_;
    std::unique_ptr<platform::Accessibility> accessibility_;
    Subscription eventTapWatch_;
    std::unique_ptr<x11::X11Applications> applications_;
    Subscription applicationsWatch_;
    std::unique_ptr<freedesktop::ScreenSaverInhibitor> powerAssertions_;
    std::unique_ptr<freedesktop::LogindLidInhibitor> lidSleep_;
    std::unique_ptr<x11::XInputPointerDevices> pointerDevices_;
    Subscription pointerDevicesWatch_;
    std::unique_ptr<x11::X11Clipboard> pasteboard_;
    Subscription pasteboardWatch_;
    std::unique_ptr<platform::KeyOutput> selectionKeys_;
    std::unique_ptr<platform::Pointer> pointer_;
    std::unique_ptr<platform::HttpClient> httpClient_;
    std::unique_ptr<ui::TranslationPopupController> translationPopupController_;
    std::unique_ptr<ui::ClipboardPopupController> clipboardPopupController_;
    std::unique_ptr<platform::UserNotifications> userNotifications_;
    std::unique_ptr<platform::SystemSleepEvents> sleepEvents_;
    std::unique_ptr<platform::FocusCommands> focusCommands_;
    std::unique_ptr<freedesktop::AutostartEntry> loginItem_;
    std::unique_ptr<freedesktop::XdgMailComposer> mailComposer_;
    std::unique_ptr<freedesktop::DesktopEntries> desktopEntries_;  ///< read at the first name looked up
    DesktopServices services_;
};

}  // namespace orvantis::app
