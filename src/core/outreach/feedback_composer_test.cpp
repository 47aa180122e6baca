#include "core/outreach/feedback_composer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/log/app_logger.h"
#include "platform/sim/mail_composer.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using Result = FeedbackComposer::SendResult;

class KeptLines final : public SystemLogSink {
public:
    explicit KeptLines(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type type, std::string_view, std::string_view message) override {
        lines_.push_back(std::string(type == Type::Error ? "error " : "info ") + std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

/// 2026-11-29T22:13:20Z.
constexpr std::chrono::seconds kNow{1795990400};

class FeedbackComposerTest : public ::testing::Test {
protected:
    FeedbackComposerTest() {
        loop_.setWallTime(std::chrono::system_clock::time_point(kNow));
        std::filesystem::create_directories(temp_);
        FeedbackEnvironment environment;
        environment.appVersion = "0.1.0";
        environment.appBuild = "412";
        environment.systemVersion = "Debian GNU/Linux 12 (bookworm)";
        environment.accessibilityGranted = [this] { return accessibility_; };
        environment.syncFolderAvailable = [this] { return syncFolder_; };
        environment.interfaceLanguage = [this] { return language_; };
        environment.recentLogs = [this](int days) {
            askedDays_ = days;
            return std::string("2026-11-23 22:00:00.000 INFO  [App] launch: Orvantis\n");
        };
        environment.logsDirectory = "/home/u/.local/state/orvantis/logs";
        environment.temporaryDirectory = temp_;
        composer_ = std::make_unique<FeedbackComposer>(mail_, loop_, loop_, std::move(environment),
                                                       logger_.log().app);
    }

    std::optional<Result> send(std::string body, bool attachLogs) {
        std::optional<Result> result;
        composer_->send("Orvantis feedback", std::move(body), attachLogs, [&](Result r) { result = r; });
        loop_.runUntilIdle();
        return result;
    }
    std::vector<std::filesystem::path> tempFiles() const {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(temp_)) files.push_back(entry.path());
        return files;
    }

    testing::TemporaryDirectory dir_;
    std::filesystem::path temp_ = dir_.path() / "tmp";
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    std::vector<std::string> lines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<KeptLines>(lines_)};
    sim::MailComposer mail_{loop_};
    bool accessibility_ = true;
    bool syncFolder_ = false;
    std::string language_ = "ru";
    int askedDays_ = 0;
    std::unique_ptr<FeedbackComposer> composer_;
};

TEST_F(FeedbackComposerTest, TheAttachmentHoldsTheDiagnosticsInTheirOrder) {
    ASSERT_EQ(send("It works", true), Result::success);
    ASSERT_EQ(mail_.drafts().size(), 1u);
    const auto& kept = mail_.drafts()[0];
    ASSERT_TRUE(kept.attachmentExisted);
    EXPECT_EQ(kept.draft.attachment, temp_ / "Orvantis-feedback-1795990400.txt");
    EXPECT_EQ(kept.attachmentText,
              "Orvantis feedback diagnostics\n"
              "===============================\n"
              "App version:   0.1.0 (build 412)\n"
              "System:        Debian GNU/Linux 12 (bookworm)\n"
              "Accessibility: granted\n"
              "Synced folder: unavailable\n"
              "UI language:   ru\n"
              "Sent at:       2026-11-29T22:13:20Z\n"
              "\n"
              "------- LOG (last 3 days, from /home/u/.local/state/orvantis/logs) -------\n"
              "2026-11-23 22:00:00.000 INFO  [App] launch: Orvantis\n");
    EXPECT_EQ(askedDays_, 3);
    EXPECT_EQ(kept.draft.recipient, "feedback@orvantis.org");
    EXPECT_EQ(kept.draft.subject, "Orvantis feedback");
    EXPECT_EQ(kept.draft.body, "It works");
}

TEST_F(FeedbackComposerTest, MissingVersionsShowAsQuestionMarksAndTheStatesFollowTheirSources) {
    accessibility_ = false;
    syncFolder_ = true;
    language_ = "en";
    FeedbackEnvironment bare;
    bare.accessibilityGranted = [this] { return accessibility_; };
    bare.syncFolderAvailable = [this] { return syncFolder_; };
    bare.interfaceLanguage = [this] { return language_; };
    bare.temporaryDirectory = temp_;
    FeedbackComposer composer(mail_, loop_, loop_, bare, logger_.log().app);
    const std::string text = composer.gatherEnvironment();
    EXPECT_NE(text.find("App version:   ? (build ?)\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Accessibility: missing\n"), std::string::npos);
    EXPECT_NE(text.find("Synced folder: available\n"), std::string::npos);
    EXPECT_NE(text.find("UI language:   en\n"), std::string::npos);
    EXPECT_FALSE(text.ends_with("\n"));
}

TEST_F(FeedbackComposerTest, SendingWithoutLogsMakesNoFile) {
    ASSERT_EQ(send("No logs", false), Result::success);
    EXPECT_TRUE(tempFiles().empty());
    ASSERT_EQ(mail_.drafts().size(), 1u);
    EXPECT_EQ(mail_.drafts()[0].draft.attachment, std::nullopt);
}

TEST_F(FeedbackComposerTest, TwoSendsWithinASecondShareTheFileAndTheSecondReplacesTheFirst) {
    accessibility_ = false;
    ASSERT_EQ(send("one", true), Result::success);
    loop_.setWallTime(std::chrono::system_clock::time_point(kNow) + 900ms);
    accessibility_ = true;
    ASSERT_EQ(send("two", true), Result::success);
    ASSERT_EQ(mail_.drafts().size(), 2u);
    EXPECT_EQ(mail_.drafts()[0].draft.attachment, mail_.drafts()[1].draft.attachment);
    const auto files = tempFiles();
    ASSERT_EQ(files.size(), 1u);
    std::ifstream in(files[0]);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("Accessibility: granted"), std::string::npos);
}

TEST_F(FeedbackComposerTest, TheAttachmentIsGoneThirtySecondsAfterTheComposerOpened) {
    ASSERT_EQ(send("hello", true), Result::success);
    ASSERT_EQ(tempFiles().size(), 1u);
    loop_.runFor(29s);
    EXPECT_EQ(tempFiles().size(), 1u);
    loop_.runFor(1s);
    EXPECT_TRUE(tempFiles().empty());
}

TEST_F(FeedbackComposerTest, WithoutAComposerTheAttachmentGoesAtOnceAndALinkCarriesTheMessage) {
    mail_.setComposerWorks(false);
    std::optional<Result> result;
    composer_->send("Orvantis feedback", "a & b\nline two", true, [&](Result r) { result = r; });
    // The composer has been asked and has not answered yet: the file is there for it.
    ASSERT_EQ(tempFiles().size(), 1u);
    loop_.runUntilIdle();
    EXPECT_TRUE(tempFiles().empty());
    EXPECT_EQ(result, Result::success);
    ASSERT_EQ(mail_.urls().size(), 1u);
    EXPECT_EQ(mail_.urls()[0],
              "mailto:feedback@orvantis.org?subject=Orvantis%20feedback&body=a%20%26%20b%0D%0Aline%20two");
}

TEST_F(FeedbackComposerTest, WhenNeitherPathWorksTheResultIsFailure) {
    mail_.setComposerWorks(false);
    mail_.setLinksWork(false);
    EXPECT_EQ(send("hello", false), Result::failure);
    EXPECT_EQ(mail_.urls().size(), 1u);
}

TEST_F(FeedbackComposerTest, TheLinkEncodesEverythingButTheUnreservedCharacters) {
    EXPECT_EQ(FeedbackComposer::mailtoURL("feedback@orvantis.org", "Отзыв об Orvantis", "x=1?&#%+\r\ny~._-"),
              "mailto:feedback@orvantis.org?subject=%D0%9E%D1%82%D0%B7%D1%8B%D0%B2%20%D0%BE%D0%B1%20Orvantis"
              "&body=x%3D1%3F%26%23%25%2B%0D%0Ay~._-");
}

TEST_F(FeedbackComposerTest, AnAttachmentThatCannotBeWrittenIsLoggedAndTheMailGoesWithout) {
    std::filesystem::remove_all(temp_);
    std::ofstream(temp_) << "a file where the folder should be";
    ASSERT_EQ(send("hello", true), Result::success);
    ASSERT_EQ(mail_.drafts().size(), 1u);
    EXPECT_EQ(mail_.drafts()[0].draft.attachment, std::nullopt);
    ASSERT_FALSE(lines_.empty());
    EXPECT_TRUE(lines_[0].starts_with("error feedback: failed to write attachment at " +
                                      (temp_ / "Orvantis-feedback-1795990400.txt").string() + " — "))
        << lines_[0];
}

TEST_F(FeedbackComposerTest, TheMessageNeverReachesTheLog) {
    mail_.setComposerWorks(false);
    mail_.setLinksWork(false);
    send("my secret words", true);
    ASSERT_FALSE(lines_.empty());
    for (const auto& line : lines_) EXPECT_EQ(line.find("secret"), std::string::npos) << line;
}

TEST_F(FeedbackComposerTest, NoAnswerArrivesOnceTheComposerIsGone) {
    bool called = false;
    composer_->send("s", "b", false, [&](Result) { called = true; });
    composer_.reset();
    loop_.runUntilIdle();
    EXPECT_FALSE(called);
}

}  // namespace
}  // namespace orvantis
