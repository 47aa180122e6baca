#include "app/command_line.h"

#include <iostream>
#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include "build_info.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/settings/setting_properties.h"
#include "platform/clock.h"
#include "platform/freedesktop/xdg_paths.h"
#include "platform/serial_queue.h"

namespace orvantis::app {
namespace {

constexpr std::string_view kUsage =
    "Usage:\n"
    "  orvantis                        start Orvantis in the system tray\n"
    "  orvantis settings list          every setting: name, a tab, its value as JSON\n"
    "  orvantis settings get NAME      the value of one setting as JSON\n"
    "  orvantis settings set NAME JSON write one setting (numbers are kept in their range)\n"
    "  orvantis settings reset NAME    remove the stored value: the default answers again\n"
    "  orvantis --version              the version and build\n"
    "  orvantis --help                 this text\n"
    "\n"
    "NAME is a property name such as switchDelayMs, hotkey or keyboardLockAutoUnlockMinutes.\n"
    "Hotkeys are JSON objects such as {\"keyCode\":51,\"modifiers\":131072}.\n";

int usageError(std::string_view message) {
    std::cerr << "orvantis: " << message << "\n\n" << kUsage;
    return 2;
}

/// Shows the log's errors on standard error too, so that a command tells its user at once.
class StandardErrorSink final : public SystemLogSink {
public:
    void log(Type type, std::string_view, std::string_view message) override {
        if (type == Type::Error) std::cerr << "orvantis: " << message << '\n';
    }
};

/// The store and log of one command, closed (and written) when it goes.
class SettingsSession {
public:
    SettingsSession()
        : logQueue_("MOLVEX.Orvantis.AppLogger"), writer_("MOLVEX.Orvantis.Preferences"),
          logger_(freedesktop::XdgPaths::logsDirectory(), logQueue_, clock_, std::make_unique<StandardErrorSink>()),
          store_(freedesktop::XdgPaths::preferencesFile(), writer_, &logger_.log()), settings_(store_) {}
    ~SettingsSession() {
        store_.flush();
        logger_.flush();
    }
    AppSettings& settings() { return settings_; }

private:
    platform::SystemClock clock_;
    platform::ThreadSerialQueue logQueue_;
    platform::ThreadSerialQueue writer_;
    AppLogger logger_;
    PreferenceStore store_;
    AppSettings settings_;
};

int runSettings(const std::vector<std::string>& args) {
    if (args.size() < 2) return usageError("settings needs a command: list, get, set or reset");
    const std::string& command = args[1];
    if (command == "list") {
        if (args.size() != 2) return usageError("settings list takes no arguments");
        SettingsSession session;
        for (const auto& property : settingProperties())
            std::cout << property.name << '\t' << toJsonText(property.get(session.settings())) << '\n';
        return 0;
    }
    if (command != "get" && command != "set" && command != "reset") {
        return usageError("unknown settings command \"" + command + "\"");
    }
    const std::size_t expected = command == "set" ? 4 : 3;
    if (args.size() != expected) {
        return usageError(command == "set" ? "settings set needs NAME and JSON" : "settings " + command + " needs NAME");
    }
    const SettingProperty* property = findSettingProperty(args[2]);
    if (property == nullptr) {
        std::cerr << "orvantis: unknown setting \"" << args[2] << "\" (see: orvantis settings list)\n";
        return 2;
    }
    if (command == "get") {
        SettingsSession session;
        std::cout << toJsonText(property->get(session.settings())) << '\n';
        return 0;
    }
    if (command == "reset") {
        SettingsSession session;
        property->reset(session.settings());
        return 0;
    }
    const auto value = nlohmann::json::parse(args[3], nullptr, /*allow_exceptions=*/false);
    if (value.is_discarded()) {
        std::cerr << "orvantis: the value for " << property->name << " is not valid JSON\n";
        return 2;
    }
    SettingsSession session;
    if (auto problem = property->set(session.settings(), value)) {
        std::cerr << "orvantis: " << property->name << " " << *problem << "; nothing was written\n";
        return 2;
    }
    return 0;
}

}  // namespace

bool isCommandLineInvocation(const std::vector<std::string>& args) { return !args.empty(); }

int runCommandLine(const std::vector<std::string>& args) {
    if (args.empty()) return usageError("no command");
    if (args[0] == "--version" && args.size() == 1) {
        std::cout << "Orvantis " << build::kVersion << " (build " << build::kBuild << ")\n";
        return 0;
    }
    if ((args[0] == "--help" || args[0] == "-h") && args.size() == 1) {
        std::cout << kUsage;
        return 0;
    }
    if (args[0] == "settings") return runSettings(args);
    return usageError("unknown command \"" + args[0] + "\"");
}

}  // namespace orvantis::app
