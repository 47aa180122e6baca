#include "ui/toast_panel.h"

#include <utility>

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>

#include "ui/popup_look.h"

namespace orvantis::ui {

namespace {

QColor tintColor(ToastTint tint) {
    switch (tint) {
        case ToastTint::green: break;
    }
    return QColor(52, 199, 89);  // the system green
}

/// The symbol of the notice, drawn so that no icon theme is needed: "checkmark.circle.fill" is a
/// filled circle with a white check mark; any other name a filled circle.
class SymbolView final : public QWidget {
public:
    explicit SymbolView(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("toastIcon"));
        setFixedSize(22, 22);
    }
    void set(std::string symbol, QColor tint) {
        symbol_ = std::move(symbol);
        tint_ = tint;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tint_);
        painter.drawEllipse(QRectF(1, 1, 20, 20));
        if (symbol_ == "checkmark.circle.fill") {
            painter.setPen(QPen(Qt::white, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.setBrush(Qt::NoBrush);
            QPainterPath check;
            check.moveTo(6.5, 11.5);
            check.lineTo(9.8, 14.6);
            check.lineTo(15.8, 7.8);
            painter.drawPath(check);
        }
    }

private:
    std::string symbol_;
    QColor tint_;
};

}  // namespace

/// The notice's window: frameless, above the others, never focused, transparent to input,
/// with rounded corners of radius 10.
class ToastWindow final : public QWidget {
public:
    ToastWindow()
        : QWidget(nullptr, kPopupWindowFlags | Qt::WindowTransparentForInput) {
        setObjectName(QStringLiteral("toastPanel"));
        setPopupWindowAttributes(*this);
        setAttribute(Qt::WA_TranslucentBackground);
        auto* row = new QHBoxLayout(this);
        row->setContentsMargins(14, 6, 14, 6);
        row->setSpacing(10);
        icon = new SymbolView(this);
        row->addWidget(icon, 0, Qt::AlignVCenter);
        auto* column = new QVBoxLayout;
        column->setSpacing(1);
        title = new QLabel(this);
        title->setObjectName(QStringLiteral("toastTitle"));
        QFont titleFont = popupPlainFont(13, QFont::DemiBold);
        title->setFont(titleFont);
        subtitle = new QLabel(this);
        subtitle->setObjectName(QStringLiteral("toastSubtitle"));
        subtitle->setFont(popupPlainFont(11));
        QPalette secondary = subtitle->palette();
        secondary.setColor(QPalette::WindowText, popupSecondaryColor(palette()));
        subtitle->setPalette(secondary);
        column->addWidget(title);
        column->addWidget(subtitle);
        row->addLayout(column, 1);
        setGeometry(0, 0, ToastPanel::kWidth, ToastPanel::kHeight);
    }

    SymbolView* icon = nullptr;
    QLabel* title = nullptr;
    QLabel* subtitle = nullptr;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor background = palette().color(QPalette::Window);
        background.setAlphaF(0.96f);
        QColor border = palette().color(QPalette::WindowText);
        border.setAlphaF(0.18f);
        painter.setPen(border);
        painter.setBrush(background);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 10, 10);
    }
};

ToastPanel::ToastPanel(platform::MainLoop& loop, ScreenArea screenArea)
    : loop_(loop), screenArea_(std::move(screenArea)), window_(std::make_unique<ToastWindow>()) {
    if (!screenArea_) {
        screenArea_ = []() -> std::optional<QRect> {
            QScreen* screen = QGuiApplication::primaryScreen();
            if (screen == nullptr) return std::nullopt;
            return screen->availableGeometry();
        };
    }
}

ToastPanel::~ToastPanel() = default;

void ToastPanel::show(const ToastContent& content) {
    ToastWindow& w = *window_;
    w.title->setText(toQString(content.title));
    const std::string subtitle = content.subtitle.value_or(std::string());
    w.subtitle->setText(toQString(subtitle));
    w.subtitle->setVisible(!subtitle.empty());
    w.icon->set(content.symbolName, tintColor(content.tint));

    const int height = subtitle.empty() ? kHeight : kHeightWithSubtitle;
    if (const std::optional<QRect> area = screenArea_()) {
        w.setGeometry(area->x() + area->width() / 2 - kWidth / 2, area->y() + kTopMargin, kWidth, height);
    }
    // Without a screen the last frame stays.
    w.show();
    w.raise();

    // A new notice has its own full duration.
    dismiss_ = loop_.postAfter(content.duration, [this] { window_->hide(); });
}

bool ToastPanel::isVisible() const { return window_->isVisible(); }
QWidget& ToastPanel::window() { return *window_; }
QLabel& ToastPanel::titleLabel() { return *window_->title; }
QLabel& ToastPanel::subtitleLabel() { return *window_->subtitle; }

}  // namespace orvantis::ui
