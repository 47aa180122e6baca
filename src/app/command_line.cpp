#include "app/command_line.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>

#include <nlohmann/json.hpp>

#include "app/caffeine_command.h"
#include "app/clipboard_command.h"
#include "app/password_command.h"
#include "app/pomodoro_command.h"
#include "app/show_command.h"
#include "app/transform_command.h"
#include "app/translate_command.h"
#include "build_info.h"
#include "core/language/language_detector.h"
#include "core/layout/layout_translator.h"
#include "core/layout/text_switch_coordinator.h"
#include "core/layout/transliteration_map.h"
#include "core/log/app_logger.h"
#include "core/names/name_variants.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/settings/setting_properties.h"
#include "core/settings/hotkey_names.h"
#include "core/shell/settings_form.h"
#include "core/text/graphemes.h"
#include "core/passwords/random_source.h"
#include "core/text/utf.h"
#include "core/text/character_class.h"
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
    "  orvantis settings set HOTKEY Super+Shift+X\n"
    "                                  a hotkey by its name (Ctrl, Super, Alt, Shift, then the key)\n"
    "  orvantis settings reset NAME    remove the stored value: the default answers again\n"
    "  orvantis convert [--table fixed|system] TEXT\n"
    "                                  what the layout hotkey would retype for TEXT, a word\n"
    "                                  or a selection (the session's layouts by default)\n"
    "  orvantis variants PHRASE        the eleven identifier names for PHRASE: style, a tab, name\n"
    "  orvantis detect TEXT            the language of TEXT (- for none), a tab, its word count\n"
    "  orvantis translate [--from CODE] [--to CODE] [--alternates] TEXT\n"
    "                                  TEXT translated (from auto, to en by default); with\n"
    "                                  --alternates the alternatives too, one a line\n"
    "  orvantis clipboard list [--json]\n"
    "                                  the clipboard history, pinned entries first: position,\n"
    "                                  a tab, * if pinned or -, a tab, the preview\n"
    "  orvantis clipboard search [--json] TEXT\n"
    "                                  the entries that the clipboard popup's search keeps\n"
    "  orvantis clipboard clear        empty the clipboard history, pinned entries too\n"
    "  orvantis transform NAME         standard input through the text tool NAME (md5, base64Decode,\n"
    "                                  jsonPretty, unixToISO...), the result on standard output\n"
    "                                  as it is, with no line break added\n"
    "  orvantis transform --list       the text tools: name, a tab, what it does\n"
    "  orvantis pomodoro start|stop|pause|resume|skip|reset|status\n"
    "                                  the running program's Pomodoro; status prints idle, or\n"
    "                                  running/paused with the phase and the seconds left, then\n"
    "                                  the session of the cycle and today's sessions, tab-separated\n"
    "  orvantis password [--length N] [--[no-]uppercase] [--[no-]lowercase] [--[no-]digits]\n"
    "                  [--[no-]symbols] [--count K]\n"
    "                                  K new passwords (1 by default), one a line, made as the\n"
    "                                  password hotkey makes them; what is not given comes from\n"
    "                                  the settings\n"
    "  orvantis caffeine on [MINUTES]  keep the computer awake, as the hotkey does (MINUTES from\n"
    "                                  0, no limit, to 1440 instead of the default duration)\n"
    "  orvantis caffeine off           stop keeping it awake\n"
    "  orvantis caffeine status        active|inactive, a tab, seconds left or -, a tab,\n"
    "                                  held|released\n"
    "  orvantis lock                   lock the keyboard for cleaning\n"
    "  orvantis show settings|onboarding|help|overlay|feedback\n"
    "                                  the running program opens that window, or raises it\n"
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

// `settings set <hotkey> Super+Shift+X`: the name parser and the conflict rule of the
// settings window's capture. A conflict is a warning: the hotkey is written all the same.
int setHotkeyByName(const SettingProperty& property, const std::string& name) {
    const auto parsed = parseLinuxHotkeyName(name);
    if (const auto* problem = std::get_if<HotkeyParseError>(&parsed)) {
        std::cerr << "orvantis: " << property.name << ": " << problem->message
                  << " (write it like Super+Shift+X); nothing was written\n";
        return 2;
    }
    const HotkeyDescriptor hotkey = std::get<HotkeyDescriptor>(parsed);
    SettingsSession session;
    const HotkeySetting* setting = nullptr;
    for (std::size_t i = 0; i < kHotkeyFieldCount; ++i)
        if (settingOf(static_cast<HotkeyField>(i)).name == property.name) setting = &settingOf(static_cast<HotkeyField>(i));
    if (setting == nullptr) return usageError("unknown hotkey " + std::string(property.name));
    SettingsForm form(session.settings());
    form.set(*setting, hotkey);
    if (form.checkConflict(hotkey))
        std::cerr << "orvantis: warning: " << linuxHotkeyName(hotkey)
                  << (isReservedHotkey(hotkey) ? " is reserved by the system or the desktop"
                                               : " is already used by another hotkey")
                  << "; it is stored all the same\n";
    session.settings().set(*setting, hotkey);
    std::cout << property.name << '\t' << hotkey.toJson() << '\t' << linuxHotkeyName(hotkey) << '\n';
    return 0;
}

int runSettings(const std::vector<std::string>& args) {
    if (args.size() < 2) return usageError("settings needs a command: list, get, set or reset");
    const std::string& command = args[1];
    if (command == "list") {
        if (args.size() != 2) return usageError("settings list takes no arguments");
        SettingsSession session;
        for (const auto& property : settingProperties()) {
            const auto value = property.get(session.settings());
            std::cout << property.name << '\t' << toJsonText(value);
            if (property.type == "hotkey")
                if (auto hotkey = HotkeyDescriptor::fromJson(value.dump())) std::cout << '\t' << linuxHotkeyName(*hotkey);
            std::cout << '\n';
        }
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
    if (property->type == "hotkey" && !args[3].empty() && args[3].front() != '{') return setHotkeyByName(*property, args[3]);
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

enum class ConversionTable { automatic, fixed, system };

int runConvert(const std::vector<std::string>& args, const CommandLineEnvironment& environment) {
    ConversionTable table = ConversionTable::automatic;
    std::optional<std::string> input;
    bool optionsEnded = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (!optionsEnded && arg == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && (arg == "--table" || arg.starts_with("--table="))) {
            std::string name;
            if (arg == "--table") {
                if (i + 1 >= args.size()) return usageError("convert --table needs fixed or system");
                name = args[++i];
            } else {
                name = arg.substr(std::string_view("--table=").size());
            }
            if (name == "fixed") table = ConversionTable::fixed;
            else if (name == "system") table = ConversionTable::system;
            else return usageError("convert --table takes fixed or system, not \"" + name + "\"");
        } else if (!optionsEnded && arg.starts_with("--")) {
            return usageError("unknown option \"" + arg + "\" for convert");
        } else if (input) {
            return usageError("convert takes one TEXT (quote a selection with spaces)");
        } else {
            input = arg;
        }
    }
    if (!input) return usageError("convert needs TEXT");
    if (!text::isValidUtf8(*input)) {
        std::cerr << "orvantis: convert: TEXT is not valid UTF-8\n";
        return 2;
    }

    std::unique_ptr<platform::InputSources> sources;
    if (table != ConversionTable::fixed && environment.sessionInputSources) {
        sources = environment.sessionInputSources();
    }
    if (table == ConversionTable::system && !sources) {
        std::cerr << "orvantis: convert: no desktop keyboard layouts to read (is DISPLAY set?); "
                     "--table fixed works without one\n";
        return 1;
    }
    std::optional<LayoutTranslator> translator;
    if (sources) translator.emplace(*sources);
    const TransliterationMap map = translator ? TransliterationMap(*translator) : TransliterationMap();
    if (translator && !translator->buildPair()) {
        std::cerr << "orvantis: convert: the session has no English and Russian pair of layouts; "
                     "the fixed table was used\n";
    }

    const std::vector<std::string> chars = text::graphemes(*input);
    const bool selection = std::any_of(chars.begin(), chars.end(),
                                       [](const std::string& c) { return text::isWhitespace(c); });
    // A selection of mixed scripts is left alone, as the hotkey leaves it.
    const bool convertible = !selection || TextSwitchCoordinator::isConvertibleSelection(chars);
    const std::vector<std::string> result =
        convertible ? TextSwitchCoordinator::converted(map, chars) : chars;
    for (const std::string& c : result) std::cout << c;
    std::cout << '\n';
    return 0;
}

/// The one TEXT argument of a command, checked; sets `status` when it is missing or bad.
std::optional<std::string> singleTextArgument(const std::vector<std::string>& args, std::string_view what, int& status) {
    std::size_t first = 1;
    if (args.size() > 1 && args[1] == "--") first = 2;
    if (args.size() != first + 1) {
        status = usageError(args[0] + " takes one " + std::string(what) + " (quote one with spaces)");
        return std::nullopt;
    }
    if (!text::isValidUtf8(args[first])) {
        std::cerr << "orvantis: " << args[0] << ": " << what << " is not valid UTF-8\n";
        status = 2;
        return std::nullopt;
    }
    return args[first];
}

int runVariants(const std::vector<std::string>& args) {
    int status = 0;
    const std::optional<std::string> phrase = singleTextArgument(args, "PHRASE", status);
    if (!phrase) return status;
    for (const NameVariant& variant : NameVariantGenerator::generate(*phrase))
        std::cout << nameStyleName(variant.style) << '\t' << variant.value << '\n';
    return 0;
}

int runDetect(const std::vector<std::string>& args) {
    int status = 0;
    const std::optional<std::string> input = singleTextArgument(args, "TEXT", status);
    if (!input) return status;
    std::cout << LanguageDetector::detect(*input).value_or("-") << '\t' << LanguageDetector::wordCount(*input) << '\n';
    return 0;
}

}  // namespace

bool isCommandLineInvocation(const std::vector<std::string>& args) { return !args.empty(); }

int runCommandLine(const std::vector<std::string>& args, const CommandLineEnvironment& environment) {
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
    if (args[0] == "convert") return runConvert(args, environment);
    if (args[0] == "variants") return runVariants(args);
    if (args[0] == "detect") return runDetect(args);
    if (args[0] == "translate") return runTranslateCommand(args);
    if (args[0] == "clipboard") return runClipboardCommand(args);
    if (args[0] == "pomodoro") return runPomodoroCommand(args, std::cout, std::cerr);
    if (args[0] == "caffeine") return runCaffeineCommand(args, std::cout, std::cerr);
    if (args[0] == "lock") return runLockCommand(args, std::cout, std::cerr);
    if (args[0] == "show") return runShowCommand(args, std::cerr);
    if (args[0] == "transform") {
        // The interface language gives the labels of the count; the store is opened only then.
        return runTransformCommand(args, std::cin, std::cout, std::cerr, [] {
            SettingsSession session;
            return session.settings().settingsLanguage();
        });
    }
    if (args[0] == "password") {
        KernelRandomSource random;
        return runPasswordCommand(args, std::cout, std::cerr, [] {
            SettingsSession session;
            return PasswordConfig::fromSettings(session.settings());
        }, random);
    }
    return usageError("unknown command \"" + args[0] + "\"");
}

}  // namespace orvantis::app
