#include "platform/freedesktop/xdg_mail_composer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvantis::freedesktop {
namespace {

using ::testing::ElementsAre;

TEST(XdgMailComposerTest, TheDraftBecomesXdgEmailArgumentsWithTheAddressLast) {
    const platform::MailDraft draft{"feedback@orvantis.org", "Orvantis feedback", "a & b\n--body x",
                                    std::filesystem::path("/tmp/Orvantis-feedback-1.txt")};
    EXPECT_THAT(XdgMailComposer::emailArguments(draft),
                ElementsAre("xdg-email", "--subject", "Orvantis feedback", "--body", "a & b\n--body x", "--attach",
                            "/tmp/Orvantis-feedback-1.txt", "feedback@orvantis.org"));
}

TEST(XdgMailComposerTest, WithoutAnAttachmentThereIsNoAttachOption) {
    const platform::MailDraft draft{"feedback@orvantis.org", "S", "B", std::nullopt};
    EXPECT_THAT(XdgMailComposer::emailArguments(draft),
                ElementsAre("xdg-email", "--subject", "S", "--body", "B", "feedback@orvantis.org"));
}

}  // namespace
}  // namespace orvantis::freedesktop
