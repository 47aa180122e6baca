#include "ui/feedback_window_controller.h"

#include <utility>

#include <QCheckBox>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include "ui/popup_look.h"

namespace orvantis::ui {
namespace {

constexpr int kWidth = 520;
constexpr int kHeight = 460;
constexpr int kBodyHeight = 180;

/// The widget's font at `size` pixels: the sizes of the form are those of a 1x screen.
QFont sizedFont(QWidget* widget, int size) {
    QFont font = widget->font();
    font.setPixelSize(size);
    return font;
}

QLabel* label(std::string_view text, int size = 0) {
    auto* l = new QLabel(toQString(text));
    l->setWordWrap(true);
    if (size > 0) l->setFont(sizedFont(l, size));
    return l;
}

/// Wide enough for the sheets' texts to read as paragraphs rather than a column.
constexpr int kSheetTextWidth = 380;

bool isBlank(const QString& text) {
    for (const QChar c : text)
        if (!c.isSpace()) return false;
    return true;
}

}  // namespace

FeedbackWindowController::FeedbackWindowController(SettingsStrings strings, Send send, std::function<void()> onClosed)
    : onClosed_(std::move(onClosed)), s_(strings), send_(std::move(send)) {
    setObjectName(QStringLiteral("feedbackWindow"));
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setWindowTitle(toQString(s_.feedbackWindowTitle));
    setFixedSize(kWidth, kHeight);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->setSpacing(10);
    layout->addWidget(label(s_.feedbackRecipientLabel, 12));

    auto* subjectRow = new QHBoxLayout;
    subjectRow->addWidget(label(s_.feedbackSubjectLabel));
    // The subject is fixed: Send always passes this text.
    subjectField_ = label(s_.feedbackSubjectDefault, 13);
    subjectField_->setObjectName(QStringLiteral("feedbackSubject"));
    subjectRow->addWidget(subjectField_, 1);
    layout->addLayout(subjectRow);

    layout->addWidget(label(s_.feedbackBodyLabel));
    bodyTextView_ = new QPlainTextEdit;
    bodyTextView_->setObjectName(QStringLiteral("feedbackBody"));
    bodyTextView_->setFixedHeight(kBodyHeight);
    bodyTextView_->setFont(sizedFont(bodyTextView_, 13));
    bodyTextView_->setStyleSheet(QStringLiteral("QPlainTextEdit { padding: 6px 4px; }"));
    layout->addWidget(bodyTextView_);
    bodyPlaceholder_ = new QLabel(toQString(s_.feedbackBodyPlaceholder), bodyTextView_->viewport());
    bodyPlaceholder_->setObjectName(QStringLiteral("feedbackBodyPlaceholder"));
    bodyPlaceholder_->setWordWrap(true);
    bodyPlaceholder_->setFont(bodyTextView_->font());
    bodyPlaceholder_->setAttribute(Qt::WA_TransparentForMouseEvents);
    QPalette grey = bodyPlaceholder_->palette();
    grey.setColor(QPalette::WindowText, grey.color(QPalette::Disabled, QPalette::WindowText));
    bodyPlaceholder_->setPalette(grey);
    // Over the first line of the text, where typing starts.
    bodyPlaceholder_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    bodyPlaceholder_->setGeometry(4, 4, kWidth - 40 - 24, 60);
    // Any character, a blank too, hides the placeholder.
    connect(bodyTextView_, &QPlainTextEdit::textChanged, this,
            [this] { bodyPlaceholder_->setVisible(bodyTextView_->document()->isEmpty()); });

    attachLogsCheckbox_ = new QCheckBox(toQString(s_.feedbackIncludeLogs));
    attachLogsCheckbox_->setObjectName(QStringLiteral("feedbackAttachLogs"));
    attachLogsCheckbox_->setChecked(true);
    layout->addWidget(attachLogsCheckbox_);
    QLabel* hint = label(s_.feedbackIncludeLogsHint, 11);
    hint->setObjectName(QStringLiteral("feedbackAttachLogsHint"));
    layout->addWidget(hint);
    layout->addStretch(1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    cancelButton_ = new QPushButton(toQString(s_.cancel));
    cancelButton_->setObjectName(QStringLiteral("feedbackCancel"));
    sendButton_ = new QPushButton(toQString(s_.feedbackSendButton));
    sendButton_->setObjectName(QStringLiteral("feedbackSend"));
    sendButton_->setDefault(true);
    buttons->addWidget(cancelButton_);
    buttons->addWidget(sendButton_);
    layout->addLayout(buttons);
    connect(cancelButton_, &QPushButton::clicked, this, [this] { cancelClicked(); });
    connect(sendButton_, &QPushButton::clicked, this, [this] { sendClicked(); });
}

FeedbackWindowController::~FeedbackWindowController() = default;

void FeedbackWindowController::showAndActivate() {
    if (!isVisible()) {
        if (const QScreen* screen = QGuiApplication::primaryScreen())
            move(screen->availableGeometry().center() - QPoint(kWidth / 2, kHeight / 2));
        show();
        // The message takes the keys once the window is up.
        QTimer::singleShot(0, this, [this] { bodyTextView_->setFocus(Qt::OtherFocusReason); });
    }
    raise();
    activateWindow();
}

void FeedbackWindowController::sendClicked() {
    if (!sendButton_->isEnabled()) return;
    const QString body = bodyTextView_->toPlainText().trimmed();
    const bool attachLogs = attachLogsCheckbox_->isChecked();
    if (body.isEmpty() || isBlank(body)) {
        showSheet(s_.feedbackEmptyBodyTitle, s_.feedbackEmptyBodyMessage, "feedbackEmptyBodySheet");
        return;
    }
    setButtonsEnabled(false);
    send_(std::string(s_.feedbackSubjectDefault), body.toStdString(), attachLogs,
          [self = QPointer<FeedbackWindowController>(this)](bool sent) {
              if (!self) return;
              if (sent) {
                  self->close();
                  return;
              }
              self->showSheet(self->s_.feedbackUnavailableTitle, self->s_.feedbackUnavailableBody,
                              "feedbackUnavailableSheet");
              self->setButtonsEnabled(true);
          });
}

void FeedbackWindowController::cancelClicked() { close(); }

void FeedbackWindowController::showSheet(std::string_view title, std::string_view message, const char* name) {
    if (sheet_) sheet_->close();
    auto* box = new QMessageBox(QMessageBox::Warning, toQString(title), toQString(title), QMessageBox::Ok, this);
    box->setObjectName(QString::fromLatin1(name));
    box->setInformativeText(toQString(message));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    if (auto* grid = qobject_cast<QGridLayout*>(box->layout()))
        grid->addItem(new QSpacerItem(kSheetTextWidth, 0, QSizePolicy::Minimum, QSizePolicy::Fixed), grid->rowCount(), 0,
                      1, grid->columnCount());
    sheet_ = box;
    box->open();  // does not hold up the event loop
}

void FeedbackWindowController::setButtonsEnabled(bool enabled) {
    sendButton_->setEnabled(enabled);
    cancelButton_->setEnabled(enabled);
}

void FeedbackWindowController::keyPressEvent(QKeyEvent* event) {
    // Escape is Cancel's. Return or Enter that no control took is the default button's: from
    // the checkbox or a button, and Ctrl+Return from the message, which keeps a plain Return
    // for a new line.
    if (event->key() == Qt::Key_Escape) {
        cancelClicked();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (focusWidget() == cancelButton_) cancelClicked();
        else sendClicked();
        return;
    }
    QWidget::keyPressEvent(event);
}

void FeedbackWindowController::closeEvent(QCloseEvent* event) {
    event->accept();
    if (sheet_) sheet_->close();
    if (!closing_) {
        closing_ = true;
        if (onClosed_) onClosed_();
    }
}

}  // namespace orvantis::ui
