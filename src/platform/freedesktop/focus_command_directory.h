#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/focus_commands.h"
#include "platform/serial_queue.h"

namespace orvantis {
struct AppLog;
}

namespace orvantis::freedesktop {

/// The Focus commands as executable files the user makes in one folder
/// ($XDG_CONFIG_HOME/orvantis/focus/): the listing is the folder's executable regular files
/// (symbolic links followed), one name a line; running one executes the file with no
/// arguments, standard input from /dev/null, in a process group of its own. Runs happen one
/// after another on a thread of their own (started at the first run), never on the main thread; a command still running
/// after `timeout` is ended with its group (SIGKILL) and logged, as is one that fails.
/// Destruction waits for the runs still queued, each at most `timeout`.
class FocusCommandDirectory final : public platform::FocusCommands {
public:
    static constexpr std::chrono::milliseconds kDefaultTimeout{5000};

    FocusCommandDirectory(std::filesystem::path folder, const AppLog& log,
                          std::chrono::milliseconds timeout = kDefaultTimeout);
    ~FocusCommandDirectory() override;

    std::optional<std::string> list() override;
    void run(const std::string& name) override;

    /// $XDG_CONFIG_HOME/orvantis/focus
    static std::filesystem::path defaultFolder();

private:
    std::filesystem::path folder_;
    const AppLog& log_;
    std::chrono::milliseconds timeout_;
    std::unique_ptr<platform::SerialQueue> runner_;
};

}  // namespace orvantis::freedesktop
