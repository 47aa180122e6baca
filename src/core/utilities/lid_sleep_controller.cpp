#include "core/utilities/lid_sleep_controller.h"

#include <utility>
#include <vector>

#include "core/log/app_logger.h"

namespace orvantis {
namespace {

constexpr std::string_view kSafeCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";

}  // namespace

LidSleepController::LidSleepController(platform::CommandRunner& runner, std::function<std::string()> loginName,
                                       const LogCategory& log)
    : runner_(runner), loginName_(std::move(loginName)), log_(log) {}

bool LidSleepController::setDisableSleep(bool disable) {
    const std::string value = disable ? "1" : "0";
    std::string launchError;
    const std::optional<int> status =
        runner_.run("/usr/bin/sudo", {"-n", "/usr/bin/pmset", "-a", "disablesleep", value}, launchError);
    if (!status) {
        log_.error("lid-sleep: failed to launch sudo: " + launchError);
        return false;
    }
    if (*status != 0) {
        log_.warning("lid-sleep: `sudo -n pmset disablesleep " + value + "` failed (rule missing?)");
        return false;
    }
    return true;
}

std::optional<std::string> LidSleepController::safeLoginName(std::string_view name) {
    if (name.empty()) return std::nullopt;
    // Byte by byte: any byte of a non-ASCII character is outside the set as well.
    if (name.find_first_not_of(kSafeCharacters) != std::string_view::npos) return std::nullopt;
    return std::string(name);
}

std::string LidSleepController::ruleLine(std::string_view login) {
    return std::string(login) +
           " ALL=(root) NOPASSWD: /usr/bin/pmset -a disablesleep 1, /usr/bin/pmset -a disablesleep 0";
}

std::string LidSleepController::provisionScript(std::string_view login) {
    const std::vector<std::string> steps = {
        "tmp=$(mktemp)",
        "printf '%s\\n' '" + ruleLine(login) + "' > \"$tmp\"",
        "chmod 0440 \"$tmp\"",
        "/usr/sbin/visudo -cf \"$tmp\"",
        "/usr/bin/install -m 0440 -o root -g wheel \"$tmp\" '" + std::string(kRuleFile) + "'",
        "rm -f \"$tmp\"",
    };
    std::string script;
    for (const auto& step : steps) {
        if (!script.empty()) script += " && ";
        script += step;
    }
    return script;
}

std::string LidSleepController::deprovisionScript() {
    return "/usr/bin/pmset -a disablesleep 0; rm -f '" + std::string(kRuleFile) + "'";
}

std::string LidSleepController::escapeForAppleScript(std::string_view script) {
    std::string doubled;
    for (char c : script) {
        if (c == '\\') doubled += "\\\\";
        else doubled += c;
    }
    std::string escaped;
    for (char c : doubled) {
        if (c == '"') escaped += "\\\"";
        else escaped += c;
    }
    return escaped;
}

std::string LidSleepController::adminScriptSource(std::string_view script) {
    return "do shell script \"" + escapeForAppleScript(script) + "\" with administrator privileges";
}

bool LidSleepController::provision() {
    const std::optional<std::string> login = safeLoginName(loginName_ ? loginName_() : std::string());
    if (!login) {
        log_.error("lid-sleep: refusing to provision — unsafe login name");
        return false;
    }
    const bool ok = runWithAdminPrivileges(provisionScript(*login));
    log_.info(std::string("lid-sleep: provision ") + (ok ? "succeeded" : "failed/cancelled"));
    return ok;
}

bool LidSleepController::deprovision() {
    const bool ok = runWithAdminPrivileges(deprovisionScript());
    log_.info(std::string("lid-sleep: deprovision ") + (ok ? "succeeded" : "failed/cancelled"));
    return ok;
}

bool LidSleepController::runWithAdminPrivileges(const std::string& script) {
    std::string launchError;
    const std::optional<int> status = runner_.run("/usr/bin/osascript", {"-e", adminScriptSource(script)}, launchError);
    if (!status) {
        log_.error("lid-sleep: failed to launch osascript: " + launchError);
        return false;
    }
    // A cancelled prompt and a failure look the same.
    return *status == 0;
}

}  // namespace orvantis
