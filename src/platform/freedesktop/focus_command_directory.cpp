#include "platform/freedesktop/focus_command_directory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/log/app_logger.h"
#include "platform/freedesktop/xdg_paths.h"

extern char** environ;

namespace orvantis::freedesktop {
namespace {

bool isExecutableFile(const std::filesystem::path& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

/// Runs `path` to its end or to `timeout`; answers a line for the log, empty on success.
std::string runToEnd(const std::filesystem::path& path, std::chrono::milliseconds timeout) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&attributes, 0);
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    std::string file = path.string();
    char* argv[] = {file.data(), nullptr};
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, file.c_str(), &actions, &attributes, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (spawned != 0) return std::string("could not be started: ") + std::strerror(spawned);

    const auto deadline = std::chrono::steady_clock::now() + timeout;
    auto pause = std::chrono::milliseconds(1);
    for (;;) {
        int status = 0;
        const pid_t done = ::waitpid(pid, &status, WNOHANG);
        if (done == pid) {
            if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
            if (WIFEXITED(status)) return "ended with status " + std::to_string(WEXITSTATUS(status));
            if (WIFSIGNALED(status)) return std::string("ended by signal ") + sigabbrev_np(WTERMSIG(status));
            return "ended abnormally";
        }
        if (done < 0 && errno != EINTR) return std::string("could not be waited for: ") + std::strerror(errno);
        if (std::chrono::steady_clock::now() >= deadline) {
            ::kill(-pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            return "was still running after " + std::to_string(timeout.count()) + " ms and was ended";
        }
        std::this_thread::sleep_for(pause);  // the runner's own thread, never the main one
        pause = std::min(pause * 2, std::chrono::milliseconds(50));
    }
}

}  // namespace

FocusCommandDirectory::FocusCommandDirectory(std::filesystem::path folder, const AppLog& log,
                                             std::chrono::milliseconds timeout)
    : folder_(std::move(folder)), log_(log), timeout_(timeout) {}

FocusCommandDirectory::~FocusCommandDirectory() = default;

std::filesystem::path FocusCommandDirectory::defaultFolder() { return XdgPaths::configHome() / "orvantis" / "focus"; }

std::optional<std::string> FocusCommandDirectory::list() {
    std::error_code error;
    std::filesystem::directory_iterator entries(folder_, error);
    if (error) return std::nullopt;
    std::vector<std::string> names;
    for (const auto& entry : entries)
        if (isExecutableFile(entry.path())) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    std::string listing;
    for (const auto& name : names) listing += name + "\n";
    return listing;
}

void FocusCommandDirectory::run(const std::string& name) {
    // Names come from the fixed pair; a separator would leave the folder.
    if (name.empty() || name.find('/') != std::string::npos || name == "." || name == "..") return;
    // The thread starts with the first run: most sessions never switch Focus.
    if (!runner_) runner_ = std::make_unique<platform::ThreadSerialQueue>("MOLVEX.Orvantis.FocusCommands");
    runner_->async([path = folder_ / name, name, timeout = timeout_, &log = log_] {
        const std::string failure = runToEnd(path, timeout);
        if (failure.empty())
            log.app.info("pomodoro: \"" + name + "\" ran");
        else
            log.app.warning("pomodoro: \"" + name + "\" " + failure);
    });
}

}  // namespace orvantis::freedesktop
