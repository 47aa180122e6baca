#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/system_utilities.h"

namespace orvantis {

class LogCategory;

/// Lid-close sleep through the power management tool, on a system where only root may turn it
/// off: a rule file in the sudoers folder, installed once through the administrator prompt,
/// lets this user run exactly the two fixed commands without a password, which are then run
/// with `sudo -n`. Stateless apart from its collaborators; every command runs on the calling
/// (main) thread and blocks it. The text of each command line is part of the behaviour: the
/// rule line, the six-step install script and its quoting for the script interpreter.
class LidSleepController final : public platform::LidSleepControl {
public:
    static constexpr std::string_view kRuleFile = "/etc/sudoers.d/orvantis-caffeine";

    /// `loginName` answers the user's login name. Both collaborators outlive the controller.
    LidSleepController(platform::CommandRunner& runner, std::function<std::string()> loginName,
                       const LogCategory& log);

    bool setDisableSleep(bool disable) override;
    bool provision() override;
    bool deprovision() override;

    /// The login name when every character is one of a-z A-Z 0-9 . _ -, else nothing: a name
    /// that could break out of a shell line or the rule syntax cannot use the feature.
    static std::optional<std::string> safeLoginName(std::string_view name);
    /// The one line of the rule file for `login`.
    static std::string ruleLine(std::string_view login);
    /// The install script: six steps joined with " && ", so a rule that fails the check is
    /// never installed.
    static std::string provisionScript(std::string_view login);
    /// The removal script.
    static std::string deprovisionScript();
    /// `script` escaped for a double-quoted string of the script interpreter: backslashes
    /// doubled first, then each double quote preceded by a backslash.
    static std::string escapeForAppleScript(std::string_view script);
    /// The source handed to the interpreter: run `script` as a shell line with the
    /// administrator prompt.
    static std::string adminScriptSource(std::string_view script);

private:
    bool runWithAdminPrivileges(const std::string& script);

    platform::CommandRunner& runner_;
    std::function<std::string()> loginName_;
    const LogCategory& log_;
};

}  // namespace orvantis
