#include "core/pomodoro/pomodoro_history.h"

#include <cmath>
#include <utility>

#include <nlohmann/json.hpp>

#include "core/clipboard/reference_date.h"
#include "core/files/file_io.h"
#include "core/log/app_logger.h"

namespace orvantis {
namespace {

/// Larger files are not the program's: reading stops there.
constexpr std::size_t kMaxFileBytes = 64 * 1024 * 1024;

/// Walks records in time order and answers the start of each one's day, asking the calendar
/// only when a record leaves the day of the one before: a log of many records a day costs one
/// calendar question per day.
class DayCursor {
public:
    explicit DayCursor(const PomodoroCalendar& calendar) : calendar_(calendar) {}
    PomodoroHistory::TimePoint dayOf(PomodoroHistory::TimePoint t) {
        if (!valid_ || t < start_ || t >= next_) {
            start_ = calendar_.startOfDay(t);
            next_ = calendar_.startOfDay(calendar_.addDays(start_, 1));
            valid_ = true;
        }
        return start_;
    }

private:
    const PomodoroCalendar& calendar_;
    PomodoroHistory::TimePoint start_{}, next_{};
    bool valid_ = false;
};

}  // namespace

PomodoroHistory::PomodoroHistory(std::filesystem::path file, platform::SerialQueue& queue,
                                 const platform::Clock& clock, const AppLog* log, UuidGenerator uuids)
    : file_(std::move(file)), queue_(queue), clock_(clock), log_(log), uuids_(std::move(uuids)) {
    load();
}

void PomodoroHistory::load() {
    const files::FileRead read = files::readWholeFile(file_, kMaxFileBytes);
    if (read.status == files::FileRead::Status::Absent) return;
    if (read.status == files::FileRead::Status::Failed) {
        if (log_) log_->app.warning("pomodoro: the history file can't be read (" + files::errnoText(read.error) +
                                    "); starting with an empty log");
        return;
    }
    std::string error;
    auto records = decode(read.bytes, &error);
    if (!records) {
        if (log_) log_->app.warning("pomodoro: the history file is damaged (" + error +
                                    "); starting with an empty log, the file is replaced at the next session");
        return;
    }
    cached_ = std::move(*records);
}

void PomodoroHistory::record(int durationMinutes, TimePoint completedAt) {
    cached_.push_back({uuids_.generate(), completedAt, durationMinutes});
    const TimePoint cutoff = clock_.wallNow() - kRetention;
    std::erase_if(cached_, [cutoff](const PomodoroSessionRecord& r) { return r.completedAt < cutoff; });
    // The queue gets its own copy of the text; it never reaches back into this object.
    queue_.async([file = file_, text = encode(cached_), log = log_] {
        if (const int error = files::replaceFile(file, text); error != 0 && log)
            log->app.warning("pomodoro: the history file can't be written (" + files::errnoText(error) + ")");
    });
}

int PomodoroHistory::countToday(const PomodoroCalendar& calendar) const {
    const TimePoint today = calendar.startOfDay(clock_.wallNow());
    const TimePoint tomorrow = calendar.startOfDay(calendar.addDays(today, 1));
    int count = 0;
    for (const auto& r : cached_)
        if (r.completedAt >= today && r.completedAt < tomorrow) ++count;
    return count;
}

double PomodoroHistory::focusedSecondsToday(const PomodoroCalendar& calendar) const {
    const TimePoint today = calendar.startOfDay(clock_.wallNow());
    const TimePoint tomorrow = calendar.startOfDay(calendar.addDays(today, 1));
    double seconds = 0.0;
    for (const auto& r : cached_)
        if (r.completedAt >= today && r.completedAt < tomorrow) seconds += r.durationMinutes * 60.0;
    return seconds;
}

int PomodoroHistory::countThisWeek(const PomodoroCalendar& calendar) const {
    const auto week = calendar.weekInterval(clock_.wallNow());
    if (!week) return countToday(calendar);
    int count = 0;
    for (const auto& r : cached_)
        if (week->contains(r.completedAt)) ++count;
    return count;
}

std::map<PomodoroHistory::TimePoint, int> PomodoroHistory::sessionsPerDay(const PomodoroCalendar& calendar) const {
    std::map<TimePoint, int> counts;
    DayCursor days(calendar);
    auto hint = counts.end();
    for (const auto& r : cached_) {
        const TimePoint day = days.dayOf(r.completedAt);
        if (hint != counts.end() && hint->first == day) {
            ++hint->second;
        } else {
            hint = counts.try_emplace(day, 0).first;
            ++hint->second;
        }
    }
    return counts;
}

std::string PomodoroHistory::formatFocused(double seconds, SettingsLanguage language) {
    const bool ru = language == SettingsLanguage::ru;
    const char* hour = ru ? "ч" : "h";
    const char* minute = ru ? "м" : "m";
    double minutes = std::trunc(seconds / 60.0);
    if (!std::isfinite(minutes)) minutes = 0;
    const long long total = static_cast<long long>(minutes);
    const long long m = total % 60;
    if (total < 60) return std::to_string(m) + minute;
    return std::to_string(total / 60) + hour + " " + std::to_string(m) + minute;
}

std::string PomodoroHistory::encode(const std::vector<PomodoroSessionRecord>& records) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const auto& r : records) {
        nlohmann::ordered_json object;
        object["id"] = r.id.toString();
        object["completedAt"] = secondsSinceReferenceDate(r.completedAt);
        object["durationMinutes"] = r.durationMinutes;
        array.push_back(std::move(object));
    }
    return array.dump();
}

std::optional<std::vector<PomodoroSessionRecord>> PomodoroHistory::decode(std::string_view text, std::string* error) {
    auto fail = [error](std::string reason) -> std::optional<std::vector<PomodoroSessionRecord>> {
        if (error) *error = std::move(reason);
        return std::nullopt;
    };
    const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
    if (json.is_discarded()) return fail("not JSON");
    if (!json.is_array()) return fail("not a list of sessions");
    std::vector<PomodoroSessionRecord> records;
    records.reserve(json.size());
    for (std::size_t i = 0; i < json.size(); ++i) {
        const auto& item = json[i];
        const std::string where = "session " + std::to_string(i + 1);
        if (!item.is_object()) return fail(where + " is not an object");
        const auto id = item.find("id");
        const auto at = item.find("completedAt");
        const auto minutes = item.find("durationMinutes");
        if (id == item.end() || !id->is_string()) return fail(where + ": no text \"id\"");
        const auto uuid = Uuid::parse(id->get_ref<const std::string&>());
        if (!uuid) return fail(where + ": \"id\" is no UUID");
        if (at == item.end() || !at->is_number()) return fail(where + ": no number \"completedAt\"");
        const double seconds = at->get<double>();
        // Beyond ±10^11 s (some 3,000 years) the moment no longer fits the clock.
        if (!std::isfinite(seconds) || std::fabs(seconds) > 1e11) return fail(where + ": \"completedAt\" out of range");
        if (minutes == item.end() || !minutes->is_number()) return fail(where + ": no number \"durationMinutes\"");
        std::int64_t whole = 0;
        if (minutes->is_number_integer()) {
            whole = minutes->get<std::int64_t>();
        } else {
            const double d = minutes->get<double>();
            if (d != std::trunc(d) || std::fabs(d) > 1e9) return fail(where + ": \"durationMinutes\" is no whole number");
            whole = static_cast<std::int64_t>(d);
        }
        if (whole < INT32_MIN || whole > INT32_MAX) return fail(where + ": \"durationMinutes\" out of range");
        records.push_back({*uuid, timeFromReferenceDate(seconds), static_cast<int>(whole)});
    }
    return records;
}

}  // namespace orvantis
