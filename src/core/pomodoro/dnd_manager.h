#pragma once

#include <string>
#include <string_view>

#include "platform/focus_commands.h"

namespace orvantis {

/// Switches the desktop's do-not-disturb mode through the user's two Focus commands, and
/// remembers whether this session switched it on so that the session can switch it off again.
/// Borrows the commands, which must outlive it. Main thread only.
class DNDManager {
public:
    static constexpr std::string_view kFocusOn = "Orvantis Focus On";
    static constexpr std::string_view kFocusOff = "Orvantis Focus Off";

    /// Queries availability at once.
    explicit DNDManager(platform::FocusCommands& commands);

    /// Queries again and remembers the answer.
    bool refreshAvailability();
    /// Forgets that this session switched Focus on (at a session's start).
    void snapshot() { sessionEnabledFocus_ = false; }
    /// Runs "Orvantis Focus On", querying once more first when the commands were missing;
    /// does nothing when they still are.
    void enable();
    /// Runs "Orvantis Focus Off" when the commands are there; otherwise does nothing.
    void disable();
    /// Switches Focus off if this session switched it on, and forgets it in any case.
    void restore();
    /// Both commands are listed now; remembers nothing.
    static bool isSetupComplete(platform::FocusCommands& commands);

    bool shortcutsAvailable() const { return shortcutsAvailable_; }
    bool sessionEnabledFocus() const { return sessionEnabledFocus_; }

private:
    static bool queryAvailability(platform::FocusCommands& commands);

    platform::FocusCommands& commands_;
    bool shortcutsAvailable_ = false;
    bool sessionEnabledFocus_ = false;
};

}  // namespace orvantis
