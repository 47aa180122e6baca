#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/mail_composer.h"

namespace orvantis::platform {
class MainLoop;
class SerialQueue;
}  // namespace orvantis::platform

namespace orvantis::freedesktop {

/// The mail composer through xdg-utils: `xdg-email --subject S --body B --attach FILE ADDRESS`
/// for a draft, `xdg-open URL` for a link, each found on PATH. A tool that is missing, cannot
/// start or exits with a status other than 0 is a failure. Some clients keep the tool running
/// until the client itself ends: a tool still running after `patience` counts as a success and
/// is reaped later. The tools run on a queue of their own, started at the first request; results
/// come back through the loop.
/// Main thread only.
class XdgMailComposer final : public platform::MailComposer {
public:
    explicit XdgMailComposer(platform::MainLoop& loop, std::chrono::milliseconds patience = std::chrono::seconds(5));
    ~XdgMailComposer() override;

    void compose(const platform::MailDraft& draft, std::function<void(bool)> done) override;
    void openURL(const std::string& url, std::function<void(bool)> done) override;

    /// The arguments of xdg-email for `draft`, the program's name first.
    static std::vector<std::string> emailArguments(const platform::MailDraft& draft);

private:
    struct Shared;
    void run(std::vector<std::string> arguments, std::function<void(bool)> done);

    platform::MainLoop& loop_;
    std::chrono::milliseconds patience_;
    std::shared_ptr<Shared> shared_;
    std::unique_ptr<platform::SerialQueue> queue_;
};

}  // namespace orvantis::freedesktop
