#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/log/app_logger.h"

namespace orvantis::freedesktop {

/// The system log of a systemd desktop: each message becomes one journal entry of identifier
/// `orvantis`, priority debug, info or err by type, and the category in the field
/// ORVANTIS_CATEGORY (`journalctl -t orvantis ORVANTIS_CATEGORY=App`). Sends on the caller's
/// thread, one datagram a message, safe from any thread; a journal that refuses the entry
/// loses it silently.
class JournalSink final : public SystemLogSink {
public:
    /// Where journald listens on every systemd machine.
    static constexpr const char* kDefaultSocketPath = "/run/systemd/journal/socket";

    void log(Type type, std::string_view category, std::string_view message) override;

    /// The fields of the entry for one message, each "NAME=value", in the order sent.
    static std::vector<std::string> fields(Type type, std::string_view category, std::string_view message);
};

/// A JournalSink when a journal listens at the default socket, else nullptr (the logger then
/// writes its files alone).
std::unique_ptr<SystemLogSink> makeJournalSinkIfAvailable();
/// The same, looking for the journal's socket at `socketPath`.
std::unique_ptr<SystemLogSink> makeJournalSinkIfAvailable(const std::filesystem::path& socketPath);

}  // namespace orvantis::freedesktop
