#pragma once

#include <functional>
#include <string>

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

#include "core/strings/settings_strings.h"

class QCheckBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace orvantis::ui {

/// The feedback form: a fixed subject, the message, whether to attach the diagnostics, and
/// Cancel and Send. Send hands the trimmed message to `send`, which answers whether a mail
/// client took it: the window then closes, or a sheet says no mail client is configured and
/// the window stays with its text. An empty message gets a sheet of its own. Escape cancels;
/// Return sends from anywhere but the message itself, where it starts a new line and
/// Ctrl+Return sends. The strings are those of the interface language at creation.
/// `onClosed` runs when the window closes, however it closes. Main thread only.
class FeedbackWindowController final : public QWidget {
    Q_OBJECT
public:
    /// `done(true)` when a mail client took the message, `done(false)` when none could be reached.
    using Send = std::function<void(std::string subject, std::string body, bool attachLogs,
                                    std::function<void(bool sent)> done)>;

    FeedbackWindowController(SettingsStrings strings, Send send, std::function<void()> onClosed);
    ~FeedbackWindowController() override;

    /// Shows the window at the centre of the screen, or raises it, with the message focused.
    void showAndActivate();

    void sendClicked();
    void cancelClicked();

    QLabel* subjectField() const { return subjectField_; }
    QPlainTextEdit* bodyTextView() const { return bodyTextView_; }
    QLabel* bodyPlaceholder() const { return bodyPlaceholder_; }
    QCheckBox* attachLogsCheckbox() const { return attachLogsCheckbox_; }
    QPushButton* sendButton() const { return sendButton_; }
    QPushButton* cancelButton() const { return cancelButton_; }
    /// The sheet on show (the empty message or the missing mail client), or null.
    QMessageBox* sheet() const { return sheet_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void showSheet(std::string_view title, std::string_view message, const char* name);
    void setButtonsEnabled(bool enabled);

    std::function<void()> onClosed_;
    SettingsStrings s_;
    Send send_;
    QLabel* subjectField_ = nullptr;
    QPlainTextEdit* bodyTextView_ = nullptr;
    QLabel* bodyPlaceholder_ = nullptr;
    QCheckBox* attachLogsCheckbox_ = nullptr;
    QPushButton* sendButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
    QPointer<QMessageBox> sheet_;
    bool closing_ = false;
};

}  // namespace orvantis::ui
