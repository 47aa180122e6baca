#include "ui/feedback_window_controller.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>

namespace orvantis::ui {
namespace {

struct SendCall {
    std::string subject;
    std::string body;
    bool attachLogs = false;
    std::function<void(bool)> done;
};

class FeedbackWindowTest : public ::testing::Test {
protected:
    std::unique_ptr<FeedbackWindowController> makeWindow(SettingsLanguage language = SettingsLanguage::en) {
        return std::make_unique<FeedbackWindowController>(
            SettingsStrings::make(language),
            [this](std::string subject, std::string body, bool attach, std::function<void(bool)> done) {
                calls_.push_back({std::move(subject), std::move(body), attach, std::move(done)});
            },
            [this] { ++closed_; });
    }
    static void key(QWidget* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent press(QEvent::KeyPress, key, modifiers, key == Qt::Key_Return ? QStringLiteral("\r") : QString());
        QApplication::sendEvent(target, &press);
    }

    std::vector<SendCall> calls_;
    int closed_ = 0;
};

TEST_F(FeedbackWindowTest, TheFormHasItsTextsSizeAndDefaults) {
    auto w = makeWindow();
    EXPECT_EQ(w->size(), QSize(520, 460));
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Send Feedback"));
    EXPECT_EQ(w->subjectField()->text(), QStringLiteral("Orvantis feedback"));
    EXPECT_EQ(w->bodyPlaceholder()->text().toStdString(),
              "Describe what you saw, what you expected, or what you’d like to see in the app…");
    EXPECT_TRUE(w->attachLogsCheckbox()->isChecked());
    EXPECT_EQ(w->attachLogsCheckbox()->text(), QStringLiteral("Attach diagnostic logs"));
    EXPECT_EQ(w->sendButton()->text(), QStringLiteral("Send"));
    EXPECT_EQ(w->cancelButton()->text(), QStringLiteral("Cancel"));
    EXPECT_EQ(w->bodyTextView()->height(), 180);
    bool recipient = false, hint = false;
    for (const auto* label : w->findChildren<QLabel*>()) {
        recipient = recipient || label->text() == QStringLiteral("Your message goes straight to the developer.");
        hint = hint || label->text().startsWith(QStringLiteral("Adds the last 3 days of app log entries"));
    }
    EXPECT_TRUE(recipient);
    EXPECT_TRUE(hint);
}

TEST_F(FeedbackWindowTest, TheRussianFormSpeaksRussian) {
    auto w = makeWindow(SettingsLanguage::ru);
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Обратная связь"));
    EXPECT_EQ(w->sendButton()->text(), QStringLiteral("Отправить"));
    EXPECT_EQ(w->cancelButton()->text(), QStringLiteral("Отмена"));
}

TEST_F(FeedbackWindowTest, BlanksHideThePlaceholderAndGetTheEmptyMessageSheet) {
    auto w = makeWindow();
    w->showAndActivate();
    EXPECT_TRUE(w->bodyPlaceholder()->isVisible());
    w->bodyTextView()->setPlainText(QStringLiteral("  \n\t "));
    EXPECT_FALSE(w->bodyPlaceholder()->isVisible());
    w->sendClicked();
    ASSERT_NE(w->sheet(), nullptr);
    EXPECT_EQ(w->sheet()->objectName(), QStringLiteral("feedbackEmptyBodySheet"));
    EXPECT_EQ(w->sheet()->text(), QStringLiteral("Message is empty"));
    EXPECT_EQ(w->sheet()->informativeText().toStdString(),
              "Add a few words about what you’d like to report before sending.");
    EXPECT_TRUE(calls_.empty());
    EXPECT_FALSE(w->bodyPlaceholder()->isVisible());
    EXPECT_TRUE(w->sendButton()->isEnabled());
    w->close();
}

TEST_F(FeedbackWindowTest, SendPassesTheFixedSubjectTheTrimmedTextAndTheCheckboxThenCloses) {
    auto w = makeWindow(SettingsLanguage::ru);
    w->showAndActivate();
    w->bodyTextView()->setPlainText(QStringLiteral("\n  Всё & работает \n"));
    w->attachLogsCheckbox()->setChecked(false);
    w->sendButton()->click();
    ASSERT_EQ(calls_.size(), 1u);
    EXPECT_EQ(calls_[0].subject, "Отзыв об Orvantis");
    EXPECT_EQ(calls_[0].body, "Всё & работает");
    EXPECT_FALSE(calls_[0].attachLogs);
    // Both buttons wait for the answer.
    EXPECT_FALSE(w->sendButton()->isEnabled());
    EXPECT_FALSE(w->cancelButton()->isEnabled());
    calls_[0].done(true);
    EXPECT_FALSE(w->isVisible());
    EXPECT_EQ(closed_, 1);
}

TEST_F(FeedbackWindowTest, NoMailClientShowsTheSheetAndKeepsTheText) {
    auto w = makeWindow();
    w->showAndActivate();
    w->bodyTextView()->setPlainText(QStringLiteral("keep me"));
    w->sendClicked();
    ASSERT_EQ(calls_.size(), 1u);
    calls_[0].done(false);
    EXPECT_TRUE(w->isVisible());
    ASSERT_NE(w->sheet(), nullptr);
    EXPECT_EQ(w->sheet()->objectName(), QStringLiteral("feedbackUnavailableSheet"));
    EXPECT_EQ(w->sheet()->text(), QStringLiteral("No mail client configured"));
    EXPECT_TRUE(w->sendButton()->isEnabled());
    EXPECT_TRUE(w->cancelButton()->isEnabled());
    EXPECT_EQ(w->bodyTextView()->toPlainText(), QStringLiteral("keep me"));
    EXPECT_EQ(closed_, 0);
    w->close();
}

TEST_F(FeedbackWindowTest, ReturnInTheMessageIsANewLineAndCtrlReturnSends) {
    auto w = makeWindow();
    w->showAndActivate();
    w->bodyTextView()->setPlainText(QStringLiteral("line"));
    w->bodyTextView()->moveCursor(QTextCursor::End);
    key(w->bodyTextView(), Qt::Key_Return);
    EXPECT_EQ(w->bodyTextView()->toPlainText(), QStringLiteral("line\n"));
    EXPECT_TRUE(calls_.empty());
    key(w->bodyTextView(), Qt::Key_Return, Qt::ControlModifier);
    ASSERT_EQ(calls_.size(), 1u);
    EXPECT_EQ(calls_[0].body, "line");
    calls_[0].done(true);
}

TEST_F(FeedbackWindowTest, ReturnOutsideTheMessageSendsAndEscapeCancels) {
    auto w = makeWindow();
    w->showAndActivate();
    w->bodyTextView()->setPlainText(QStringLiteral("x"));
    key(w->attachLogsCheckbox(), Qt::Key_Return);
    ASSERT_EQ(calls_.size(), 1u);
    calls_[0].done(false);
    if (w->sheet()) w->sheet()->close();
    key(w->bodyTextView(), Qt::Key_Escape);
    EXPECT_FALSE(w->isVisible());
    EXPECT_EQ(closed_, 1);
}

TEST_F(FeedbackWindowTest, CancelClosesOnceAndAnAnswerAfterTheWindowIsGoneIsIgnored) {
    auto w = makeWindow();
    w->showAndActivate();
    w->bodyTextView()->setPlainText(QStringLiteral("x"));
    w->sendClicked();
    auto done = calls_.at(0).done;
    w->cancelButton()->setEnabled(true);
    w->cancelButton()->click();
    w->close();
    EXPECT_EQ(closed_, 1);
    w.reset();
    done(false);  // nothing left to show it in
}

}  // namespace
}  // namespace orvantis::ui
