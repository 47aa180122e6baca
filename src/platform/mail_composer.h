#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace orvantis::platform {

/// A message for the desktop's mail client to show in a new compose window. Nothing is sent
/// without the user: they send it from there.
struct MailDraft {
    std::string recipient;
    std::string subject;
    std::string body;
    /// A file the client attaches; it must stay readable until the client has taken it.
    std::optional<std::filesystem::path> attachment;
};

/// The desktop's mail composer. Requests run off the main thread, as the desktop's tools may
/// take a while; `done` is called on the main thread with true when the client took the
/// request, false when no client could be reached (no tool, or it failed). `done` is not
/// called once the composer is gone. Main thread only.
class MailComposer {
public:
    virtual ~MailComposer() = default;
    /// Opens a compose window with every field of `draft`, the attachment included.
    virtual void compose(const MailDraft& draft, std::function<void(bool)> done) = 0;
    /// Opens `url` (a mailto: link) with the desktop's handler for it.
    virtual void openURL(const std::string& url, std::function<void(bool)> done) = 0;
};

}  // namespace orvantis::platform
