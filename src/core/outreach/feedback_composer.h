#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/main_loop.h"

namespace orvantis {
class LogCategory;
}
namespace orvantis::platform {
class Clock;
class MailComposer;
}  // namespace orvantis::platform

namespace orvantis {

/// What the diagnostics attachment reports, each asked at the moment of sending.
struct FeedbackEnvironment {
    std::string appVersion;     ///< empty shows as "?"
    std::string appBuild;       ///< empty shows as "?"
    std::string systemVersion;  ///< the operating system's name and version
    /// Whether the accessibility bus is granted, as the permissions manager knows it.
    std::function<bool()> accessibilityGranted;
    /// Whether the synced folder is there; missing counts as unavailable.
    std::function<bool()> syncFolderAvailable;
    /// "en" or "ru".
    std::function<std::string()> interfaceLanguage;
    /// The log's last `days` days and its folder.
    std::function<std::string(int days)> recentLogs;
    std::filesystem::path logsDirectory;
    /// Where the attachment is written (the system's temporary folder).
    std::filesystem::path temporaryDirectory;
};

/// Hands a note for the developer to the desktop's mail composer, with an optional text file of
/// diagnostics (versions, permissions, the last days of the log; never clipboard contents or
/// selected text). When the composer cannot take it, a mailto: link without the attachment is
/// tried. Nothing is sent by the program: a compose window opens and the user sends it there.
/// The message text never reaches the log. Borrows its collaborators; main thread only.
class FeedbackComposer {
public:
    enum class SendResult { success, failure };

    /// The developer's address, the recipient on both paths.
    static constexpr std::string_view kRecipient = "feedback@orvantis.org";
    /// How long an attachment stays after the composer took it, for the client to read it.
    static constexpr platform::Duration kAttachmentLifetime = std::chrono::seconds(30);
    /// The days of log the attachment carries.
    static constexpr int kLogDays = 3;

    FeedbackComposer(platform::MailComposer& composer, platform::MainLoop& loop, const platform::Clock& clock,
                     FeedbackEnvironment environment, const LogCategory& log);
    ~FeedbackComposer();
    FeedbackComposer(const FeedbackComposer&) = delete;
    FeedbackComposer& operator=(const FeedbackComposer&) = delete;

    /// Opens a compose window for `subject` and `body`, with the diagnostics attached when
    /// `attachLogs`; `done` gets the result on the main thread (never once this is gone).
    void send(std::string subject, std::string body, bool attachLogs, std::function<void(SendResult)> done);

    /// The attachment's file for the current second: "Orvantis-feedback-<seconds since 1970>.txt".
    std::filesystem::path attachmentPath() const;
    /// Writes the diagnostics atomically; nullopt after logging when it cannot.
    std::optional<std::filesystem::path> buildAttachment();
    /// The header, versions, permission and folder states, language and time, without a final
    /// line feed.
    std::string gatherEnvironment() const;
    /// The log section: its heading, a line feed, and the log's last three days.
    std::string gatherLogs() const;
    /// mailto:<recipient>?subject=..&body=.. with every character but the unreserved ones
    /// percent-encoded as UTF-8, and each line break as %0D%0A.
    static std::string mailtoURL(std::string_view recipient, std::string_view subject, std::string_view body);

private:
    void fallBackToLink(const std::string& subject, const std::string& body, std::function<void(SendResult)> done);

    platform::MailComposer& composer_;
    platform::MainLoop& loop_;
    const platform::Clock& clock_;
    FeedbackEnvironment environment_;
    const LogCategory& log_;
    std::vector<platform::TimerHandle> removals_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis
