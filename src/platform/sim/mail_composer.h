#pragma once

#include <string>
#include <vector>

#include "platform/mail_composer.h"
#include "platform/main_loop.h"

namespace orvantis::sim {

/// The simulated mail composer: keeps every draft and link it was given, with whether the
/// draft's attachment was a file at that moment and its text, and answers on the next turn of
/// the loop with what the test set (both succeed by default). Main thread only.
class MailComposer final : public platform::MailComposer {
public:
    explicit MailComposer(platform::MainLoop& loop) : loop_(loop) {}

    struct Draft {
        platform::MailDraft draft;
        bool attachmentExisted = false;
        std::string attachmentText;
    };

    void compose(const platform::MailDraft& draft, std::function<void(bool)> done) override;
    void openURL(const std::string& url, std::function<void(bool)> done) override;

    /// Whether a client takes drafts (the composer tool) and links (the link handler).
    void setComposerWorks(bool works) { composerWorks_ = works; }
    void setLinksWork(bool works) { linksWork_ = works; }

    const std::vector<Draft>& drafts() const { return drafts_; }
    const std::vector<std::string>& urls() const { return urls_; }

private:
    platform::MainLoop& loop_;
    bool composerWorks_ = true;
    bool linksWork_ = true;
    std::vector<Draft> drafts_;
    std::vector<std::string> urls_;
};

}  // namespace orvantis::sim
