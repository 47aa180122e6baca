#include "platform/sim/mail_composer.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvantis::sim {

void MailComposer::compose(const platform::MailDraft& draft, std::function<void(bool)> done) {
    Draft kept{draft, false, {}};
    if (draft.attachment && std::filesystem::is_regular_file(*draft.attachment)) {
        kept.attachmentExisted = true;
        std::ifstream in(*draft.attachment, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        kept.attachmentText = text.str();
    }
    drafts_.push_back(std::move(kept));
    loop_.post([done = std::move(done), ok = composerWorks_] { done(ok); });
}

void MailComposer::openURL(const std::string& url, std::function<void(bool)> done) {
    urls_.push_back(url);
    loop_.post([done = std::move(done), ok = linksWork_] { done(ok); });
}

}  // namespace orvantis::sim
