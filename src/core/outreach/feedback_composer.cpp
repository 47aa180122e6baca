#include "core/outreach/feedback_composer.h"

#include <ctime>
#include <system_error>
#include <utility>

#include "core/files/file_io.h"
#include "core/log/app_logger.h"
#include "platform/clock.h"
#include "platform/mail_composer.h"

namespace orvantis {
namespace {

std::string orQuestionMark(const std::string& value) { return value.empty() ? "?" : value; }

/// The date as an ISO 8601 stamp in UTC with whole seconds: 2026-11-23T23:05:00Z.
std::string isoDate(std::chrono::system_clock::time_point when) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

void appendEncoded(std::string& out, std::string_view text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool unreserved = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                                c == '-' || c == '.' || c == '_' || c == '~';
        if (unreserved) {
            out += static_cast<char>(c);
        } else if (c == '\n' || c == '\r') {
            // A line break of any kind is CR LF in a mailto: body.
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            out += "%0D%0A";
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 0xF];
        }
    }
}

}  // namespace

FeedbackComposer::FeedbackComposer(platform::MailComposer& composer, platform::MainLoop& loop,
                                   const platform::Clock& clock, FeedbackEnvironment environment,
                                   const LogCategory& log)
    : composer_(composer), loop_(loop), clock_(clock), environment_(std::move(environment)), log_(log) {}

FeedbackComposer::~FeedbackComposer() { *alive_ = false; }

std::filesystem::path FeedbackComposer::attachmentPath() const {
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(clock_.wallNow().time_since_epoch()).count();
    return environment_.temporaryDirectory / ("Orvantis-feedback-" + std::to_string(seconds) + ".txt");
}

std::string FeedbackComposer::gatherEnvironment() const {
    const auto ask = [](const std::function<bool()>& f) { return f && f(); };
    std::string text = "Orvantis feedback diagnostics\n";
    text += std::string(31, '=') + "\n";
    text += "App version:   " + orQuestionMark(environment_.appVersion) + " (build " +
            orQuestionMark(environment_.appBuild) + ")\n";
    text += "System:        " + environment_.systemVersion + "\n";
    text += std::string("Accessibility: ") + (ask(environment_.accessibilityGranted) ? "granted" : "missing") + "\n";
    text += std::string("Synced folder: ") + (ask(environment_.syncFolderAvailable) ? "available" : "unavailable") +
            "\n";
    text += "UI language:   " + (environment_.interfaceLanguage ? environment_.interfaceLanguage() : "en") + "\n";
    text += "Sent at:       " + isoDate(clock_.wallNow());
    return text;
}

std::string FeedbackComposer::gatherLogs() const {
    std::string text = "------- LOG (last " + std::to_string(kLogDays) + " days, from " +
                       environment_.logsDirectory.string() + ") -------\n";
    if (environment_.recentLogs) text += environment_.recentLogs(kLogDays);
    return text;
}

std::optional<std::filesystem::path> FeedbackComposer::buildAttachment() {
    const std::filesystem::path path = attachmentPath();
    const std::string text = gatherEnvironment() + "\n\n" + gatherLogs();
    if (const int error = files::replaceFile(path, text); error != 0) {
        log_.error("feedback: failed to write attachment at " + path.string() + " — " + files::errnoText(error));
        return std::nullopt;
    }
    return path;
}

std::string FeedbackComposer::mailtoURL(std::string_view recipient, std::string_view subject, std::string_view body) {
    std::string url = "mailto:";
    // The address keeps its @; anything else outside the unreserved set is encoded.
    for (const char c : recipient) {
        if (c == '@') url += c;
        else appendEncoded(url, std::string_view(&c, 1));
    }
    url += "?subject=";
    appendEncoded(url, subject);
    url += "&body=";
    appendEncoded(url, body);
    return url;
}

void FeedbackComposer::send(std::string subject, std::string body, bool attachLogs,
                            std::function<void(SendResult)> done) {
    std::optional<std::filesystem::path> attachment;
    if (attachLogs) attachment = buildAttachment();
    platform::MailDraft draft{std::string(kRecipient), subject, body, attachment};
    composer_.compose(draft, [this, alive = std::weak_ptr<bool>(alive_), attachment, subject, body,
                              done = std::move(done)](bool composed) mutable {
        if (alive.expired()) return;
        if (composed) {
            log_.info(std::string("feedback: the mail composer took the message") +
                      (attachment ? " with its diagnostics" : ""));
            if (attachment) {
                // Time for the client to read the file, then it goes; a failure is ignored.
                std::erase_if(removals_, [](const platform::TimerHandle& t) { return !t.isActive(); });
                removals_.push_back(loop_.postAfter(kAttachmentLifetime, [path = *attachment] {
                    std::error_code ignored;
                    std::filesystem::remove(path, ignored);
                }));
            }
            done(SendResult::success);
            return;
        }
        if (attachment) {
            std::error_code ignored;
            std::filesystem::remove(*attachment, ignored);
        }
        log_.info("feedback: no mail composer took the message; trying a mailto link without the diagnostics");
        fallBackToLink(subject, body, std::move(done));
    });
}

void FeedbackComposer::fallBackToLink(const std::string& subject, const std::string& body,
                                      std::function<void(SendResult)> done) {
    composer_.openURL(mailtoURL(kRecipient, subject, body),
                      [this, alive = std::weak_ptr<bool>(alive_), done = std::move(done)](bool opened) {
                          if (alive.expired()) return;
                          if (!opened) log_.warning("feedback: no mail client could be reached");
                          else log_.info("feedback: the mailto link was opened");
                          done(opened ? SendResult::success : SendResult::failure);
                      });
}

}  // namespace orvantis
