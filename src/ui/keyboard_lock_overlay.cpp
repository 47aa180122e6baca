#include "ui/keyboard_lock_overlay.h"

#include <QCursor>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>

#include "ui/keyboard_icon.h"

namespace orvantis::ui {
namespace {

QString toQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

/// The overlay's surface: a dark, slightly translucent veil over the whole screen.
class OverlaySurface final : public QWidget {
public:
    OverlaySurface()
        : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                               Qt::X11BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus) {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setObjectName(QStringLiteral("keyboardLockOverlay"));
        setWindowTitle(QStringLiteral("Orvantis"));
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), QColor(24, 26, 30, 225));
    }
};

QLabel* label(QWidget* parent, int pixelSize, QFont::Weight weight, const QColor& colour, bool monospaced = false) {
    auto* l = new QLabel(parent);
    QFont font = monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : l->font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    l->setFont(font);
    l->setAlignment(Qt::AlignCenter);
    QPalette palette = l->palette();
    palette.setColor(QPalette::WindowText, colour);
    l->setPalette(palette);
    return l;
}

}  // namespace

QtKeyboardLockOverlay::QtKeyboardLockOverlay() : window_(std::make_unique<OverlaySurface>()) {
    QWidget* w = window_.get();
    auto* layout = new QVBoxLayout(w);
    layout->setSpacing(14);
    layout->addStretch(1);

    iconView_ = new QLabel(w);
    iconView_->setFixedSize(120, 100);
    iconView_->setAlignment(Qt::AlignCenter);
    // An icon theme may stop at 48 or 64 pixels: the picture is brought to 88 all the same.
    iconView_->setPixmap(KeyboardIcon::load().icon.pixmap(88, 88).scaled(88, 88, Qt::KeepAspectRatio,
                                                                          Qt::SmoothTransformation));
    titleLabel_ = label(w, 28, QFont::DemiBold, QColor(245, 245, 245));
    subtitleLabel_ = label(w, 15, QFont::Normal, QColor(200, 200, 205));
    escHintLabel_ = label(w, 13, QFont::Normal, QColor(160, 160, 168));
    countdownLabel_ = label(w, 13, QFont::Normal, QColor(160, 160, 168), true);
    unlockButton_ = new QPushButton(w);
    unlockButton_->setFocusPolicy(Qt::NoFocus);
    unlockButton_->setMinimumHeight(36);
    unlockButton_->setObjectName(QStringLiteral("keyboardLockUnlockButton"));
    QObject::connect(unlockButton_, &QPushButton::clicked, w, [this] { clickUnlock(); });

    layout->addWidget(iconView_, 0, Qt::AlignHCenter);
    layout->addWidget(titleLabel_);
    layout->addWidget(subtitleLabel_);
    layout->addSpacing(22 - 14);
    layout->addWidget(escHintLabel_);
    layout->addSpacing(6 - 14);
    layout->addWidget(countdownLabel_);
    layout->addSpacing(26 - 14);
    layout->addWidget(unlockButton_, 0, Qt::AlignHCenter);
    layout->addStretch(1);
}

QtKeyboardLockOverlay::~QtKeyboardLockOverlay() = default;

void QtKeyboardLockOverlay::show(const SettingsStrings& strings, int autoUnlockMinutes) {
    titleLabel_->setText(toQString(strings.keyboardLockOverlayTitle));
    subtitleLabel_->setText(toQString(strings.keyboardLockOverlaySubtitle));
    escHintLabel_->setText(toQString(strings.keyboardLockOverlayEscHint));
    unlockButton_->setText(QStringLiteral("  ") + toQString(strings.keyboardLockOverlayUnlockButton) +
                           QStringLiteral("  "));
    countdownTemplate_ = std::string(strings.keyboardLockOverlayAutoUnlockTemplate);
    updateCountdown(autoUnlockMinutes * 60);
    // The screen under the pointer, else the primary one.
    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    if (screen != nullptr) window_->setGeometry(screen->geometry());
    window_->show();
    window_->raise();
}

void QtKeyboardLockOverlay::updateCountdown(int secondsRemaining) {
    countdownLabel_->setText(toQString(lockCountdownText(countdownTemplate_, secondsRemaining)));
}

void QtKeyboardLockOverlay::dismiss() { window_->hide(); }

QString QtKeyboardLockOverlay::countdownText() const { return countdownLabel_->text(); }

void QtKeyboardLockOverlay::clickUnlock() {
    if (onUnlockClicked_) onUnlockClicked_();
}

}  // namespace orvantis::ui
