#include "app/translate_command.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/text/utf.h"
#include "core/translation/translation_service.h"
#include "platform/clock.h"
#include "platform/curl/curl_http_client.h"
#include "platform/freedesktop/xdg_paths.h"
#include "platform/main_loop.h"
#include "platform/serial_queue.h"

namespace orvantis::app {
namespace {

constexpr std::string_view kTranslateUsage = "usage: orvantis translate [--from CODE] [--to CODE] [--alternates] TEXT\n";

int usageError(std::string_view message) {
    std::cerr << "orvantis: " << message << '\n' << kTranslateUsage;
    return 2;
}

/// Shows the log's errors on standard error too, except the translation's own lines: the
/// command prints the outcome itself.
class StandardErrorSink final : public SystemLogSink {
public:
    void log(Type type, std::string_view category, std::string_view message) override {
        if (type == Type::Error && category != "Translate") std::cerr << "orvantis: " << message << '\n';
    }
};

/// The main loop of one command: the calling thread runs posted tasks and due timers until the
/// command has its answer. Posting is safe from any thread; the rest is the calling thread's.
class CommandLoop final : public platform::MainLoop {
public:
    void post(platform::Task task) override {
        {
            std::lock_guard lock(mutex_);
            posted_.push_back(std::move(task));
        }
        wake_.notify_one();
    }

    platform::TimerHandle postAfter(platform::Duration delay, platform::Task task) override {
        return addTimer(delay, platform::Duration::zero(), std::move(task));
    }

    platform::TimerHandle every(platform::Duration interval, platform::Task task) override {
        return addTimer(interval, std::max(interval, platform::Duration(1)), std::move(task));
    }

    // A command lives for one answer and watches no file: whoever asks polls instead.
    Subscription watchReadable(int, platform::Task) override { return {}; }

    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string label) override {
        return std::make_unique<platform::ThreadSerialQueue>(std::move(label));
    }

    /// Runs tasks until `done()` holds.
    template <typename Done>
    void runUntil(Done done) {
        while (!done()) {
            platform::Task task;
            {
                std::unique_lock lock(mutex_);
                if (posted_.empty()) {
                    const auto next = nextDue();
                    if (next && *next <= Clock::now()) {
                        lock.unlock();
                        runDueTimer();
                        continue;
                    }
                    if (next) {
                        wake_.wait_until(lock, *next, [this] { return !posted_.empty(); });
                    } else {
                        wake_.wait(lock, [this] { return !posted_.empty(); });
                    }
                    continue;
                }
                task = std::move(posted_.front());
                posted_.pop_front();
            }
            task();
        }
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        Clock::time_point due;
        platform::Duration interval;
        std::shared_ptr<platform::TimerState> state;
        platform::Task task;
    };

    platform::TimerHandle addTimer(platform::Duration delay, platform::Duration interval, platform::Task task) {
        auto state = std::make_shared<platform::TimerState>();
        timers_.push_back({Clock::now() + std::chrono::duration_cast<Clock::duration>(delay), interval, state,
                           std::move(task)});
        return platform::TimerHandle(state);
    }

    std::optional<Clock::time_point> nextDue() {
        std::erase_if(timers_, [](const Timer& t) { return t.state->cancelled || t.state->finished; });
        std::optional<Clock::time_point> next;
        for (const auto& t : timers_)
            if (!next || t.due < *next) next = t.due;
        return next;
    }

    void runDueTimer() {
        auto it = std::min_element(timers_.begin(), timers_.end(),
                                   [](const Timer& a, const Timer& b) { return a.due < b.due; });
        if (it == timers_.end()) return;
        platform::Task task = it->task;
        if (it->interval > platform::Duration::zero()) {
            it->due += std::chrono::duration_cast<Clock::duration>(it->interval);
        } else {
            it->state->finished = true;
        }
        task();
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<platform::Task> posted_;
    std::vector<Timer> timers_;  // the calling thread's only
};

struct Options {
    std::string from = "auto";
    std::string to = "en";
    bool alternates = false;
    std::string text;
};

/// The options, or the exit status of a usage error.
std::variant<Options, int> parse(const std::vector<std::string>& args) {
    Options options;
    std::optional<std::string> text;
    bool optionsEnded = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (!optionsEnded && arg == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && arg == "--alternates") {
            options.alternates = true;
        } else if (!optionsEnded && (arg == "--from" || arg == "--to" || arg.starts_with("--from=") ||
                                     arg.starts_with("--to="))) {
            const bool from = arg.starts_with("--from");
            const std::string name = from ? "--from" : "--to";
            std::string code;
            if (arg == name) {
                if (i + 1 >= args.size()) return usageError("translate " + name + " needs a language code");
                code = args[++i];
            } else {
                code = arg.substr(name.size() + 1);
            }
            if (code.empty()) return usageError("translate " + name + " needs a language code");
            (from ? options.from : options.to) = code;
        } else if (!optionsEnded && arg.starts_with("--")) {
            return usageError("unknown option \"" + arg + "\" for translate");
        } else if (text) {
            return usageError("translate takes one TEXT (quote text with spaces)");
        } else {
            text = arg;
        }
    }
    if (!text) return usageError("translate needs TEXT");
    if (!text::isValidUtf8(*text)) {
        std::cerr << "orvantis: translate: TEXT is not valid UTF-8\n";
        return 2;
    }
    options.text = std::move(*text);
    return options;
}

}  // namespace

int runTranslateCommand(const std::vector<std::string>& args) {
    const auto parsed = parse(args);
    if (const int* status = std::get_if<int>(&parsed)) return *status;
    const Options& options = std::get<Options>(parsed);

    platform::SystemClock clock;
    platform::ThreadSerialQueue logQueue("MOLVEX.Orvantis.AppLogger");
    platform::ThreadSerialQueue writer("MOLVEX.Orvantis.Preferences");
    AppLogger logger(freedesktop::XdgPaths::logsDirectory(), logQueue, clock, std::make_unique<StandardErrorSink>());
    PreferenceStore store(freedesktop::XdgPaths::preferencesFile(), writer, &logger.log());
    AppSettings settings(store);

    int status = 1;
    {
        CommandLoop loop;
        curl::CurlHttpClient http(loop);
        TranslationService service(http, loop, logger.log().translate,
                                   [&settings] { return settings.translationEndpoint(); });
        bool done = false;
        auto fail = [&](const TranslationError& error) {
            std::cerr << "orvantis: translate: " << error.message() << '\n';
            status = 1;
            done = true;
        };
        TranslationRequest request;
        if (options.alternates) {
            request = service.translateWithAlternates(options.text, options.from, options.to,
                                                      [&](TranslationResult<std::vector<std::string>> result) {
                if (!result) return fail(result.error());
                for (const auto& line : result.value()) std::cout << line << '\n';
                status = 0;
                done = true;
            });
        } else {
            request = service.translate(options.text, options.from, options.to,
                                        [&](TranslationResult<std::string> result) {
                if (!result) return fail(result.error());
                std::cout << result.value() << '\n';
                status = 0;
                done = true;
            });
        }
        loop.runUntil([&done] { return done; });
    }
    std::cout.flush();
    store.flush();
    logger.flush();
    return status;
}

}  // namespace orvantis::app
