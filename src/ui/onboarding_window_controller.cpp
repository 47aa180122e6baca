#include "ui/onboarding_window_controller.h"

#include <array>
#include <string_view>

#include <QCloseEvent>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QKeySequence>
#include <QScreen>
#include <QShortcut>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include "core/shell/shell_texts.h"
#include "core/strings/settings_strings.h"

namespace orvantis::ui {
namespace {

QString toQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

QLabel* wrapped(std::string_view text, bool secondary = false) {
    auto* label = new QLabel(toQString(text));
    label->setWordWrap(true);
    if (secondary) {
        // Between the text colour and the background: readable, yet below the titles.
        QPalette palette = label->palette();
        const QColor text = palette.color(QPalette::WindowText);
        const QColor back = palette.color(QPalette::Window);
        palette.setColor(QPalette::WindowText, QColor((text.red() * 3 + back.red() * 2) / 5,
                                                      (text.green() * 3 + back.green() * 2) / 5,
                                                      (text.blue() * 3 + back.blue() * 2) / 5));
        label->setPalette(palette);
    }
    return label;
}

QLabel* bold(std::string_view text, double scale = 1.0) {
    auto* label = new QLabel(toQString(text));
    label->setWordWrap(true);
    QFont font = label->font();
    font.setBold(true);
    if (scale != 1.0) font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
    return label;
}

QIcon themed(const char* name, QStyle::StandardPixmap fallback, const QStyle* style) {
    return QIcon::fromTheme(QString::fromLatin1(name), style->standardIcon(fallback));
}

/// A rounded, slightly shaded box with a bold title.
QFrame* card(std::string_view title, QVBoxLayout*& body) {
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("onboardingCard"));
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setStyleSheet(QStringLiteral("#onboardingCard { border: 1px solid palette(mid); border-radius: 8px; "
                                        "background: palette(alternate-base); }"));
    body = new QVBoxLayout(frame);
    body->setContentsMargins(14, 12, 14, 12);
    body->setSpacing(8);
    body->addWidget(bold(title));
    return frame;
}

}  // namespace

OnboardingWindowController::OnboardingWindowController(OnboardingModel& model, SettingsLanguage language)
    : model_(model), language_(language) {
    const SettingsStrings s = SettingsStrings::make(language);
    const shell::OnboardingTexts extra = shell::OnboardingTexts::make(language);
    setObjectName(QStringLiteral("onboardingWindow"));
    setWindowTitle(toQString(s.onboardingWindowTitle));
    setAttribute(Qt::WA_DeleteOnClose, false);
    resize(kWidth, kHeight);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(20, 18, 20, 18);
    column->setSpacing(14);
    column->setAlignment(Qt::AlignTop);

    // The header.
    column->addWidget(bold(s.onboardingWelcomeTitle, 1.5));
    column->addWidget(wrapped(s.onboardingWelcomeSubtitle, true));

    // What Orvantis does: seven rows.
    QVBoxLayout* body = nullptr;
    column->addWidget(card(s.onboardingFeaturesTitle, body));
    struct Feature {
        const char* icon;
        QStyle::StandardPixmap fallback;
        std::string_view SettingsStrings::*title;
    };
    const std::array<Feature, 7> features{{
        {"input-keyboard", QStyle::SP_ComputerIcon, &SettingsStrings::layoutSwitcher},
        {"preferences-desktop-locale", QStyle::SP_DriveNetIcon, &SettingsStrings::translator},
        {"edit-paste", QStyle::SP_FileDialogContentsView, &SettingsStrings::clipboardHistory},
        {"alarm-symbolic", QStyle::SP_BrowserReload, &SettingsStrings::pomodoroTimer},
        {"dialog-password", QStyle::SP_DialogYesButton, &SettingsStrings::passwordSection},
        {"insert-text", QStyle::SP_FileIcon, &SettingsStrings::snippetsSection},
        {"tools-check-spelling", QStyle::SP_FileDialogDetailedView, &SettingsStrings::textTransformerSection},
    }};
    for (std::size_t i = 0; i < features.size(); ++i) {
        auto* row = new QHBoxLayout;
        row->setSpacing(10);
        auto* icon = new QLabel;
        icon->setPixmap(themed(features[i].icon, features[i].fallback, style()).pixmap(22, 22));
        icon->setFixedSize(22, 22);
        row->addWidget(icon, 0, Qt::AlignTop);
        auto* texts = new QVBoxLayout;
        texts->setSpacing(0);
        texts->addWidget(bold(s.*features[i].title));
        texts->addWidget(wrapped(extra.featureSubtitles[i], true));
        row->addLayout(texts, 1);
        body->addLayout(row);
    }

    // The permissions: the accessibility bus, the X input extension, a notification service.
    column->addWidget(card(s.onboardingPermissionsTitle, body));
    const auto block = [&](std::string_view name, std::string_view why, StatusRow& row, std::string_view buttonText,
                           QPushButton** button) {
        body->addWidget(bold(name));
        body->addWidget(wrapped(why, true));
        auto* status = new QHBoxLayout;
        row.icon = new QLabel;
        row.text = new QLabel;
        status->addWidget(row.icon);
        status->addWidget(row.text, 1);
        body->addLayout(status);
        if (button != nullptr) {
            // On a line of its own: beside the status, a long title (the Russian one) left
            // only a few pixels to spare, and a larger font pushed it out of the card.
            *button = new QPushButton(toQString(buttonText));
            auto* buttonRow = new QHBoxLayout;
            buttonRow->addWidget(*button);
            buttonRow->addStretch();
            body->addLayout(buttonRow);
        }
        row.note = wrapped({}, true);
        body->addWidget(row.note);
    };
    block(s.onboardingAccessibilityName, s.onboardingAccessibilityWhy, rows_[0], s.onboardingOpenAccessibility,
          &accessibilityButton_);
    block(s.onboardingInputMonitoringName, s.onboardingInputMonitoringWhy, rows_[1],
          s.onboardingOpenInputMonitoring, &inputMonitoringButton_);
    block(s.onboardingNotificationsName, s.onboardingNotificationsWhy, rows_[2], {}, nullptr);
    connect(accessibilityButton_, &QPushButton::clicked, this, [this] { model_.openAccessibilitySettings(); });
    connect(inputMonitoringButton_, &QPushButton::clicked, this, [this] { model_.openInputMonitoringSettings(); });
    // Where there is no page to open (X11), the row shows its status and no button.
    inputMonitoringButton_->setVisible(model_.hasInputMonitoringSettings());

    // First steps.
    column->addWidget(card(s.onboardingTipsTitle, body));
    body->addWidget(wrapped(s.onboardingTipsBody));

    scroll->setWidget(content);
    outer->addWidget(scroll, 1);

    // The bottom bar, fixed below the column.
    auto* bar = new QFrame;
    bar->setFrameShape(QFrame::NoFrame);
    auto* buttons = new QHBoxLayout(bar);
    buttons->setContentsMargins(20, 10, 20, 12);
    buttons->addStretch();
    skip_ = new QPushButton(toQString(s.onboardingSkip));
    skip_->setObjectName(QStringLiteral("onboardingSkip"));
    getStarted_ = new QPushButton(toQString(s.onboardingGetStarted));
    getStarted_->setObjectName(QStringLiteral("onboardingGetStarted"));
    getStarted_->setDefault(true);
    getStarted_->setAutoDefault(true);
    buttons->addWidget(skip_);
    buttons->addWidget(getStarted_);
    outer->addWidget(bar);
    const auto finish = [this] {
        model_.finish();
        close();
    };
    connect(skip_, &QPushButton::clicked, this, finish);
    // Return and Enter press the default button, as in a dialog.
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(QKeySequence(key), this);
        connect(shortcut, &QShortcut::activated, getStarted_, &QPushButton::click);
    }
    connect(getStarted_, &QPushButton::clicked, this, finish);

    model_.setOnChanged([this] { updateStatuses(); });
    updateStatuses();
}

OnboardingWindowController::~OnboardingWindowController() { model_.setOnChanged({}); }

void OnboardingWindowController::applyStatus(StatusRow& row, PermissionStatus status, QPushButton* button) {
    const bool granted = status == PermissionStatus::granted;
    const QIcon icon = status == PermissionStatus::unknown
                           ? themed("content-loading-symbolic", QStyle::SP_BrowserReload, style())
                       : granted ? themed("emblem-ok-symbolic", QStyle::SP_DialogApplyButton, style())
                                 : themed("dialog-warning", QStyle::SP_MessageBoxWarning, style());
    row.icon->setPixmap(icon.pixmap(16, 16));
    QPalette palette = row.text->palette();
    palette.setColor(QPalette::WindowText, status == PermissionStatus::unknown ? palette.color(QPalette::Disabled, QPalette::WindowText)
                                           : granted ? QColor(0x2e, 0x9e, 0x5b)
                                                     : QColor(0xd9, 0x7a, 0x00));
    row.text->setPalette(palette);
    if (button != nullptr) button->setEnabled(!granted);
}

void OnboardingWindowController::updateStatuses() {
    const SettingsStrings s = SettingsStrings::make(language_);
    const shell::OnboardingTexts extra = shell::OnboardingTexts::make(language_);
    const auto word = [&](PermissionStatus status) {
        return toQString(status == PermissionStatus::granted ? extra.granted
                         : status == PermissionStatus::missing ? extra.missing
                                                               : extra.checking);
    };
    applyStatus(rows_[0], model_.accessibility(), accessibilityButton_);
    rows_[0].text->setText(word(model_.accessibility()));
    rows_[0].note->setText(toQString(model_.accessibility() == PermissionStatus::granted
                                         ? s.onboardingAccessibilityGrantedNote
                                         : s.onboardingAccessibilityMissingNote));
    rows_[0].note->setVisible(model_.accessibility() != PermissionStatus::granted);

    applyStatus(rows_[1], model_.inputMonitoring(), inputMonitoringButton_);
    rows_[1].text->setText(word(model_.inputMonitoring()));
    rows_[1].note->setText(toQString(model_.inputMonitoring() == PermissionStatus::granted
                                         ? s.onboardingInputMonitoringGrantedNote
                                         : s.onboardingInputMonitoringMissingNote));
    rows_[1].note->setVisible(model_.inputMonitoring() != PermissionStatus::granted);

    const PermissionStatus service = model_.notificationService();
    applyStatus(rows_[2], service, nullptr);
    rows_[2].text->setText(toQString(service == PermissionStatus::granted ? extra.serviceFound
                                     : service == PermissionStatus::missing ? extra.serviceAbsent
                                                                             : extra.checking));
    rows_[2].note->setText(toQString(extra.serviceAbsentNote));
    rows_[2].note->setVisible(service == PermissionStatus::missing);
}

QString OnboardingWindowController::statusText(int row) const { return rows_[row].text->text(); }

void OnboardingWindowController::showAndActivate() {
    if (!isVisible()) {
        if (const QScreen* screen = QGuiApplication::primaryScreen()) {
            const QRect area = screen->availableGeometry();
            move(area.center() - QPoint(width() / 2, height() / 2));
        }
    }
    show();
    raise();
    activateWindow();
}

void OnboardingWindowController::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    model_.windowClosed();
}

}  // namespace orvantis::ui
