#include "core/log/app_logger.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace orvantis {

/// The open file of the current day. Lives on the logger's queue and is touched nowhere else.
struct AppLogger::FileState {
    explicit FileState(std::filesystem::path dir) : directory(std::move(dir)) {}
    ~FileState() { close(); }
    FileState(const FileState&) = delete;
    FileState& operator=(const FileState&) = delete;

    void close() {
        if (fd >= 0) ::close(fd);
        fd = -1;
        currentDay.reset();
    }

    const std::filesystem::path directory;
    int fd = -1;
    std::optional<std::string> currentDay;
};

namespace {

using WallTime = std::chrono::system_clock::time_point;

// A century of daily files is more than any caller means; the cap keeps a careless
// recentLogs(INT_MAX) from walking the calendar for hours.
constexpr int kMaxRecentDays = 36600;

// The FileState whose task runs on this thread right now, if any.
thread_local const void* tRunningFiles = nullptr;

/// Marks the current thread as running a task of one logger for the life of the scope.
class RunningScope {
public:
    explicit RunningScope(const void* files) : previous_(std::exchange(tRunningFiles, files)) {}
    ~RunningScope() { tRunningFiles = previous_; }
    RunningScope(const RunningScope&) = delete;
    RunningScope& operator=(const RunningScope&) = delete;

private:
    const void* previous_;
};

std::tm localTime(WallTime time) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t seconds = std::chrono::system_clock::to_time_t(whole);
    std::tm tm{};
    localtime_r(&seconds, &tm);
    return tm;
}

std::chrono::year_month_day localDate(WallTime time) {
    const std::tm tm = localTime(time);
    return std::chrono::year_month_day{std::chrono::year{tm.tm_year + 1900},
                                       std::chrono::month{static_cast<unsigned>(tm.tm_mon + 1)},
                                       std::chrono::day{static_cast<unsigned>(tm.tm_mday)}};
}

std::string dayString(const std::chrono::year_month_day& date) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return buffer;
}

/// The local calendar day `days` days before the day of `time`.
std::string dayStringBefore(WallTime time, int days) {
    const std::chrono::sys_days day = std::chrono::sys_days{localDate(time)} - std::chrono::days{days};
    return dayString(std::chrono::year_month_day{day});
}

/// "2026-11-15 14:00:57.123" in local time; milliseconds are cut, not rounded.
std::string timestamp(WallTime time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(time - seconds).count();
    const std::tm tm = localTime(time);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d.%03d", tm.tm_year + 1900, tm.tm_mon + 1,
                  tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(millis));
    return buffer;
}

/// The same local time of day `days` calendar days earlier (so 7 days across a change to
/// summer time is 7 × 24 h minus one hour).
WallTime calendarDaysBefore(WallTime time, int days) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    std::tm tm = localTime(time);
    tm.tm_mday -= days;
    tm.tm_isdst = -1;
    const std::time_t earlier = std::mktime(&tm);
    if (earlier == static_cast<std::time_t>(-1)) return time - std::chrono::days{days};
    return std::chrono::system_clock::from_time_t(earlier) + (time - seconds);
}

/// "2026-11-15 14:00:57.123 [WARN ] " followed by `tail`, which carries category, message
/// and line feed.
std::string formatLine(AppLogger::Level level, WallTime date, std::string_view tail) {
    std::string line = timestamp(date);
    line.reserve(line.size() + 10 + tail.size());
    line += " [";
    line += AppLogger::label(level);
    line += "] ";
    line += tail;
    return line;
}

std::string categoryTail(std::string_view category, std::string_view message) {
    std::string tail;
    tail.reserve(category.size() + message.size() + 3);
    tail.append(category).append(": ").append(message).push_back('\n');
    return tail;
}

/// Writes `bytes` at the end of `fd` as a whole. When the disk refuses part of it, the part
/// already written is cut off again, so the file never ends in half a line.
void appendWhole(int fd, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (written > 0) {
            done += static_cast<std::size_t>(written);
            continue;
        }
        if (written < 0 && errno == EINTR) continue;
        if (done > 0) {
            const off_t end = ::lseek(fd, 0, SEEK_END);
            if (end >= static_cast<off_t>(done)) {
                [[maybe_unused]] const int ignored = ::ftruncate(fd, end - static_cast<off_t>(done));
            }
        }
        return;
    }
}

/// The whole content of a regular file, or nullopt when it cannot be opened or read.
std::optional<std::string> readFile(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    std::string content;
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got > 0) {
            content.append(buffer, static_cast<std::size_t>(got));
            continue;
        }
        if (got < 0 && errno == EINTR) continue;
        ::close(fd);
        if (got < 0) return std::nullopt;
        return content;
    }
}

/// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        std::size_t length = 0;
        std::uint32_t codePoint = 0;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
            codePoint = lead & 0x1Fu;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            codePoint = lead & 0x0Fu;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            codePoint = lead & 0x07u;
        } else {
            return false;
        }
        if (text.size() - i < length) return false;
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0u) != 0x80u) return false;
            codePoint = (codePoint << 6) | (next & 0x3Fu);
        }
        if (length == 3 && (codePoint < 0x800 || (codePoint >= 0xD800 && codePoint <= 0xDFFF))) return false;
        if (length == 4 && (codePoint < 0x10000 || codePoint > 0x10FFFF)) return false;
        i += length;
    }
    return true;
}

std::string evaluate(const std::function<std::string()>& message) { return message ? message() : std::string(); }

}  // namespace

void LogCategory::debug(std::string_view message) const {
    logger_.mirror(SystemLogSink::Type::Debug, name_, message);
}

void LogCategory::info(std::string_view message) const {
    logger_.mirror(SystemLogSink::Type::Info, name_, message);
    logger_.write(AppLogger::Level::Info, name_, message);
}

void LogCategory::warning(std::string_view message) const {
    logger_.mirror(SystemLogSink::Type::Error, name_, message);
    logger_.write(AppLogger::Level::Warn, name_, message);
}

void LogCategory::error(std::string_view message) const {
    logger_.mirror(SystemLogSink::Type::Error, name_, message);
    logger_.write(AppLogger::Level::Error, name_, message);
}

AppLogger::AppLogger(std::filesystem::path directory, platform::SerialQueue& queue, const platform::Clock& clock,
                     std::unique_ptr<SystemLogSink> systemSink)
    : directory_(std::move(directory)), queue_(queue), clock_(clock), systemSink_(std::move(systemSink)),
      categories_(*this), files_(std::make_shared<FileState>(directory_)) {
    std::error_code ignored;
    std::filesystem::create_directories(directory_, ignored);
    const WallTime startedAt = clock_.wallNow();
    queue_.async([weak = std::weak_ptr<FileState>(files_), startedAt] {
        const auto files = weak.lock();
        if (!files) return;
        RunningScope running(files.get());
        try {
            prune(*files, startedAt);
        } catch (...) {
            // A logger must not disturb its host.
        }
    });
}

AppLogger::~AppLogger() {
    try {
        runOnQueueAndWait([](FileState& files) {
            syncToDisk(files);
            files.close();
        });
    } catch (...) {
        // Nothing more can be done for the file; the process goes on.
    }
}

void AppLogger::debug(std::string_view category, const std::function<std::string()>& message) {
    if (!systemSink_) return;
    mirror(SystemLogSink::Type::Debug, category, evaluate(message));
}

void AppLogger::info(std::string_view category, const std::function<std::string()>& message) {
    const std::string text = evaluate(message);
    mirror(SystemLogSink::Type::Info, category, text);
    write(Level::Info, category, text);
}

void AppLogger::warning(std::string_view category, const std::function<std::string()>& message) {
    const std::string text = evaluate(message);
    mirror(SystemLogSink::Type::Error, category, text);
    write(Level::Warn, category, text);
}

void AppLogger::error(std::string_view category, const std::function<std::string()>& message) {
    const std::string text = evaluate(message);
    mirror(SystemLogSink::Type::Error, category, text);
    write(Level::Error, category, text);
}

void AppLogger::write(Level level, std::string_view category, std::string_view message) {
    if (level == Level::Debug) return;  // debug lives in the system log alone
    const WallTime date = clock_.wallNow();
    queue_.async([weak = std::weak_ptr<FileState>(files_), level, date, tail = categoryTail(category, message)] {
        const auto files = weak.lock();
        if (!files) return;
        RunningScope running(files.get());
        try {
            appendLine(*files, formatLine(level, date, tail), date);
        } catch (...) {
            // The line is lost; the host goes on.
        }
    });
}

void AppLogger::mirror(SystemLogSink::Type type, std::string_view category, std::string_view message) {
    if (systemSink_) systemSink_->log(type, category, message);
}

std::string AppLogger::recentLogs(int days) {
    const WallTime now = clock_.wallNow();
    std::string result;
    runOnQueueAndWait([&](FileState& files) {
        syncToDisk(files);
        result = readRecent(files, days, now);
    });
    return result;
}

void AppLogger::logCrash(std::string_view name, std::optional<std::string_view> reason,
                         const std::vector<std::string>& frames) {
    const WallTime date = clock_.wallNow();
    std::string text = "uncaught exception ";
    text += name;
    text += ": ";
    text += reason ? *reason : std::string_view("<no reason>");
    text += "\n    ";
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (i > 0) text += "\n    ";
        text += frames[i];
    }
    const std::string line = formatLine(Level::Error, date, categoryTail("Crash", text));
    // One task both writes and syncs, so the line is on disk when this returns, after every
    // line logged before it.
    runOnQueueAndWait([&](FileState& files) {
        appendLine(files, line, date);
        syncToDisk(files);
    });
}

void AppLogger::flush() {
    runOnQueueAndWait([](FileState& files) { syncToDisk(files); });
}

std::string AppLogger::fileNameForDay(std::string_view dayString) {
    std::string name = "orvantis-";
    name += dayString;
    name += ".log";
    return name;
}

std::string_view AppLogger::label(Level level) {
    switch (level) {
    case Level::Debug:
        return "DEBUG";
    case Level::Info:
        return "INFO ";
    case Level::Warn:
        return "WARN ";
    case Level::Error:
        return "ERROR";
    }
    return "ERROR";
}

void AppLogger::runOnQueueAndWait(const std::function<void(FileState&)>& task) {
    FileState& files = *files_;
    const auto guarded = [&] {
        RunningScope running(&files);
        try {
            task(files);
        } catch (...) {
            // File trouble stays inside the logger.
        }
    };
    if (tRunningFiles == &files) {
        guarded();
    } else {
        queue_.sync(guarded);
    }
}

void AppLogger::appendLine(FileState& files, const std::string& line, WallTime date) {
    const std::string day = dayString(localDate(date));
    if (files.fd < 0 || files.currentDay != day) {
        files.close();
        const std::filesystem::path path = files.directory / fileNameForDay(day);
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (fd < 0) return;  // this line is lost; the next one tries again
        files.fd = fd;
        files.currentDay = day;
    }
    appendWhole(files.fd, line);
}

void AppLogger::syncToDisk(FileState& files) {
    if (files.fd >= 0) ::fsync(files.fd);
}

void AppLogger::prune(FileState& files, WallTime now) {
    const WallTime cutoff = calendarDaysBefore(now, kRetentionDays);
    std::vector<std::filesystem::path> expired;
    std::error_code error;
    for (std::filesystem::directory_iterator it(files.directory, error), end; !error && it != end;
         it.increment(error)) {
        const std::filesystem::path& path = it->path();
        const std::string name = path.filename().string();
        if (!name.starts_with("orvantis-") || path.extension() != ".log") continue;
        std::error_code timeError;
        const auto modified = std::filesystem::last_write_time(path, timeError);
        // A file without a date counts as older than any cut-off.
        if (timeError || std::chrono::file_clock::to_sys(modified) < cutoff) expired.push_back(path);
    }
    for (const auto& path : expired) {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }
}

std::string AppLogger::readRecent(const FileState& files, int days, WallTime now) {
    const int count = std::clamp(days, 1, kMaxRecentDays);
    std::vector<std::string> pieces;
    for (int offset = count - 1; offset >= 0; --offset) {
        const std::string name = fileNameForDay(dayStringBefore(now, offset));
        std::optional<std::string> text = readFile(files.directory / name);
        if (!text || text->empty() || !isValidUtf8(*text)) continue;
        pieces.push_back("------- " + name + " -------");
        pieces.push_back(std::move(*text));
    }
    if (pieces.empty()) return "(no log entries found in the last " + std::to_string(days) + " day(s))";
    std::string result;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0) result += '\n';
        result += pieces[i];
    }
    return result;
}

}  // namespace orvantis
