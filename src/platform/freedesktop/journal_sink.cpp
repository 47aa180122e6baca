#include "platform/freedesktop/journal_sink.h"

#include <array>
#include <system_error>

#include <sys/uio.h>
#include <systemd/sd-journal.h>
#include <syslog.h>

namespace orvantis::freedesktop {
namespace {

int priorityOf(SystemLogSink::Type type) {
    switch (type) {
    case SystemLogSink::Type::Debug:
        return LOG_DEBUG;
    case SystemLogSink::Type::Info:
        return LOG_INFO;
    case SystemLogSink::Type::Error:
        return LOG_ERR;
    }
    return LOG_ERR;
}

std::string field(std::string_view name, std::string_view value) {
    std::string text;
    text.reserve(name.size() + 1 + value.size());
    text.append(name).push_back('=');
    text.append(value);
    return text;
}

}  // namespace

std::vector<std::string> JournalSink::fields(Type type, std::string_view category, std::string_view message) {
    return {field("MESSAGE", message), field("PRIORITY", std::to_string(priorityOf(type))),
            field("ORVANTIS_CATEGORY", category), field("SYSLOG_IDENTIFIER", "orvantis")};
}

void JournalSink::log(Type type, std::string_view category, std::string_view message) {
    // sd_journal_sendv takes the fields as they are: a message may hold line feeds, and
    // nothing in it is read as a format.
    const std::vector<std::string> entry = fields(type, category, message);
    std::array<iovec, 4> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        parts[i].iov_base = const_cast<char*>(entry[i].data());
        parts[i].iov_len = entry[i].size();
    }
    sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
}

std::unique_ptr<SystemLogSink> makeJournalSinkIfAvailable() {
    return makeJournalSinkIfAvailable(JournalSink::kDefaultSocketPath);
}

std::unique_ptr<SystemLogSink> makeJournalSinkIfAvailable(const std::filesystem::path& socketPath) {
    std::error_code error;
    if (!std::filesystem::is_socket(socketPath, error)) return nullptr;
    return std::make_unique<JournalSink>();
}

}  // namespace orvantis::freedesktop
