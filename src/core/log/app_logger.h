#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/serial_queue.h"

namespace orvantis {

/// The second sink of the log: the desktop's system log. Called on the caller's thread of
/// each message; must not block for long.
class SystemLogSink {
public:
    virtual ~SystemLogSink() = default;
    enum class Type { Debug, Info, Error };
    virtual void log(Type type, std::string_view category, std::string_view message) = 0;
};

class AppLogger;

/// A named log category bound to its logger. Safe from any thread.
class LogCategory {
public:
    LogCategory(AppLogger& logger, std::string name) : logger_(logger), name_(std::move(name)) {}
    const std::string& name() const { return name_; }
    /// System log only.
    void debug(std::string_view message) const;
    void info(std::string_view message) const;
    /// "WARN " in the file, an error in the system log (which has no warning level).
    void warning(std::string_view message) const;
    void error(std::string_view message) const;

private:
    AppLogger& logger_;
    std::string name_;
};

/// The shared categories of the system.
struct AppLog {
    explicit AppLog(AppLogger& logger)
        : app(logger, "App"), launch(logger, "Launch"), translate(logger, "Translate"),
          clipboard(logger, "Clipboard"), icloud(logger, "iCloud") {}
    LogCategory app;
    LogCategory launch;
    LogCategory translate;
    LogCategory clipboard;
    LogCategory icloud;
};

/// The rolling diagnostic log: one text file per local calendar day, `orvantis-YYYY-MM-DD.log`
/// in `directory`, kept 7 days, each message mirrored to the system log. All file access runs
/// on `queue`; log calls take the time on the caller's thread and never wait for the disk.
/// File errors are ignored. Owned by the composition root, which outlives every user.
class AppLogger {
public:
    enum class Level { Debug = 0, Info = 1, Warn = 2, Error = 3 };
    static constexpr int kRetentionDays = 7;

    /// Creates `directory` (a failure is ignored) and schedules the pruning of old files.
    /// `systemSink` may be null: then that sink is dropped.
    AppLogger(std::filesystem::path directory, platform::SerialQueue& queue, const platform::Clock& clock,
              std::unique_ptr<SystemLogSink> systemSink = nullptr);
    ~AppLogger();
    AppLogger(const AppLogger&) = delete;
    AppLogger& operator=(const AppLogger&) = delete;

    /// The shared categories.
    AppLog& log() { return categories_; }

    /// By category name; `message` is evaluated only when needed.
    void debug(std::string_view category, const std::function<std::string()>& message);
    void info(std::string_view category, const std::function<std::string()>& message);
    void warning(std::string_view category, const std::function<std::string()>& message);
    void error(std::string_view category, const std::function<std::string()>& message);

    /// The files of the last `days` days, oldest first, each under a header line; blocks the
    /// caller until everything logged before the call is on disk. Not from `queue`.
    std::string recentLogs(int days);

    /// Writes the `Crash` line for an uncaught exception and waits until it is on disk.
    /// Not from `queue`.
    void logCrash(std::string_view name, std::optional<std::string_view> reason,
                  const std::vector<std::string>& frames);

    /// Waits until every line logged before the call is written and synced.
    void flush();

    const std::filesystem::path& logsDirectory() const { return directory_; }

    /// Label of the file for `day` ("orvantis-2026-11-15.log").
    static std::string fileNameForDay(std::string_view dayString);
    /// The five-character label of a level ("WARN ").
    static std::string_view label(Level level);

    // Used by LogCategory. write() never puts a Debug line in the file; mirror() does nothing
    // without a system sink.
    void write(Level level, std::string_view category, std::string_view message);
    void mirror(SystemLogSink::Type type, std::string_view category, std::string_view message);

private:
    struct FileState;
    using WallTime = std::chrono::system_clock::time_point;

    /// Runs `task` on `queue` after everything queued before it and waits for it; runs it at
    /// once when the caller is already one of this logger's tasks, so that a crash on the queue
    /// thread cannot wait for itself.
    void runOnQueueAndWait(const std::function<void(FileState&)>& task);
    static void appendLine(FileState& files, const std::string& line, WallTime date);
    static void syncToDisk(FileState& files);
    static void prune(FileState& files, WallTime now);
    static std::string readRecent(const FileState& files, int days, WallTime now);

    std::filesystem::path directory_;
    platform::SerialQueue& queue_;
    const platform::Clock& clock_;
    std::unique_ptr<SystemLogSink> systemSink_;
    AppLog categories_;
    // The open file and its day, confined to queue_. Tasks hold it weakly: a task that runs
    // after the logger is gone does nothing.
    std::shared_ptr<FileState> files_;
};

}  // namespace orvantis
