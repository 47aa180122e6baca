#include "platform/freedesktop/terminate_handler.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include <cxxabi.h>
#include <execinfo.h>

namespace orvantis::freedesktop {
namespace {

std::atomic<AppLogger*> gLogger{nullptr};
std::atomic<bool> gTerminating{false};

std::string demangle(const char* mangled) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    if (status == 0 && readable) return readable.get();
    return mangled;
}

/// The frames of the calling thread, innermost first, without this helper and the handler.
[[gnu::noinline]] std::vector<std::string> callStack() {
    constexpr int kMaxFrames = 128;
    constexpr int kOwnFrames = 2;
    void* addresses[kMaxFrames];
    const int count = ::backtrace(addresses, kMaxFrames);
    const std::unique_ptr<char*, decltype(&std::free)> symbols(::backtrace_symbols(addresses, count), &std::free);
    std::vector<std::string> frames;
    for (int i = kOwnFrames; i < count; ++i) {
        if (symbols) {
            frames.emplace_back(symbols.get()[i]);
        } else {
            char address[32];
            std::snprintf(address, sizeof address, "%p", addresses[i]);
            frames.emplace_back(address);
        }
    }
    return frames;
}

[[noreturn]] void onTerminate() {
    // A terminate from inside this handler, or from a second thread at the same time, ends
    // the process at once: one Crash line is all the log needs.
    if (gTerminating.exchange(true)) std::abort();
    if (AppLogger* logger = gLogger.load()) {
        try {
            std::string name = "std::terminate";
            std::optional<std::string> reason;
            if (const std::type_info* type = abi::__cxa_current_exception_type()) {
                name = demangle(type->name());
                try {
                    throw;
                } catch (const std::exception& exception) {
                    reason = exception.what();
                } catch (...) {
                    // Not a std::exception: it carries no reason.
                }
            }
            logger->logCrash(name, reason, callStack());
        } catch (...) {
            // Nothing is left to tell; end as promised.
        }
    }
    std::abort();
}

}  // namespace

void installTerminateHandler(AppLogger& logger) {
    gLogger.store(&logger);
    std::set_terminate(&onTerminate);
}

}  // namespace orvantis::freedesktop
