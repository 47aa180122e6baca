#pragma once

// A system-log sink for tests: keeps each line as "level category: message".

#include <string>
#include <string_view>
#include <vector>

#include "core/log/app_logger.h"

namespace orvantis::testing {

/// Appends every line the logger hands to the system log to `lines`, which the test owns and
/// which outlives the sink. Levels are written "debug", "info" or "error".
class RecordingLogSink final : public SystemLogSink {
public:
    explicit RecordingLogSink(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type type, std::string_view category, std::string_view message) override {
        const char* name = type == Type::Debug ? "debug" : type == Type::Info ? "info" : "error";
        lines_.push_back(std::string(name) + " " + std::string(category) + ": " + std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

}  // namespace orvantis::testing
