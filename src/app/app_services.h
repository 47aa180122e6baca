#pragma once

#include <filesystem>

#include "app/desktop_services.h"

namespace orvantis {
class AppLogger;
class AppSettings;
class NotificationCenter;
}  // namespace orvantis
namespace orvantis::platform {
class Clock;
class MainLoop;
}  // namespace orvantis::platform

namespace orvantis::app {

/// The collaborators that every feature's assembly takes: the log, the main loop and clock, the
/// settings, the notifications, the desktop, and the folder for the program's data. All are
/// owned elsewhere (the delegate and the process entry) and outlive every assembly.
struct AppServices {
    AppLogger& logger;
    platform::MainLoop& loop;
    const platform::Clock& clock;
    AppSettings& settings;
    NotificationCenter& notifications;
    const DesktopServices& desktop;
    std::filesystem::path dataDirectory;
};

}  // namespace orvantis::app
