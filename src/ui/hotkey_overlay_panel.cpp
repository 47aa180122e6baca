#include "ui/hotkey_overlay_panel.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>

namespace orvantis::ui {
namespace {

QString toQString(const std::string& text) { return QString::fromStdString(text); }

QStyle::StandardPixmap fallbackFor(const std::string& icon) {
    if (icon == "input-keyboard") return QStyle::SP_ComputerIcon;
    if (icon == "preferences-desktop-locale") return QStyle::SP_DriveNetIcon;
    if (icon == "edit-paste") return QStyle::SP_FileDialogContentsView;
    if (icon == "alarm-symbolic") return QStyle::SP_BrowserReload;
    if (icon == "dialog-password") return QStyle::SP_DialogYesButton;
    if (icon == "insert-text") return QStyle::SP_FileIcon;
    if (icon == "help-about") return QStyle::SP_MessageBoxQuestion;
    if (icon == "system-lock-screen") return QStyle::SP_DialogNoButton;
    if (icon == "view-hidden") return QStyle::SP_TitleBarMinButton;
    if (icon == "tools-check-spelling") return QStyle::SP_FileDialogDetailedView;
    return QStyle::SP_DesktopIcon;  // keep-awake: the screen stays on
}

}  // namespace

HotkeyOverlayPanel::HotkeyOverlayPanel() {
    setObjectName(QStringLiteral("hotkeyOverlay"));
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                   Qt::X11BypassWindowManagerHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    resize(460, 320);
    contentStack_ = new QVBoxLayout(this);
    contentStack_->setSpacing(10);
    contentStack_->setContentsMargins(22, 18, 22, 18);
    contentStack_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

void HotkeyOverlayPanel::rebuildContents(const std::string& title,
                                         const std::vector<HotkeyOverlayEntries::Section>& sections) {
    while (QLayoutItem* item = contentStack_->takeAt(0)) {
        if (QWidget* widget = item->widget()) delete widget;
        delete item;
    }
    const QPalette base = palette();
    const QColor label = base.color(QPalette::WindowText);
    QColor secondary = label;
    secondary.setAlphaF(0.6f);
    QColor tertiary = label;
    tertiary.setAlphaF(0.35f);
    const QColor accent = base.color(QPalette::Highlight);
    const auto colour = [](const QColor& c) { return c.name(QColor::HexArgb); };

    auto* heading = new QLabel(QString::fromStdString(title));
    heading->setObjectName(QStringLiteral("hotkeyOverlayTitle"));
    QFont headingFont = heading->font();
    headingFont.setPixelSize(13 * 4 / 3);
    headingFont.setWeight(QFont::DemiBold);
    heading->setFont(headingFont);
    heading->setMinimumWidth(380);
    contentStack_->addWidget(heading);

    bool first = true;
    for (const auto& section : sections) {
        if (!first) contentStack_->addSpacing(6);
        first = false;
        if (section.title) {
            auto* sectionTitle = new QLabel(QString::fromStdString(*section.title).toUpper());
            QFont font = sectionTitle->font();
            font.setPixelSize(11 * 4 / 3);
            font.setWeight(QFont::DemiBold);
            sectionTitle->setFont(font);
            sectionTitle->setStyleSheet(QStringLiteral("color: %1;").arg(colour(secondary)));
            sectionTitle->setMinimumWidth(380);
            contentStack_->addWidget(sectionTitle);
        }
        for (const auto& entry : section.entries) {
            auto* row = new QWidget;
            row->setObjectName(QStringLiteral("hotkeyOverlayRow"));
            row->setProperty("enabledFeature", entry.enabled);
            row->setMinimumWidth(380);
            auto* layout = new QHBoxLayout(row);
            layout->setContentsMargins(0, 0, 0, 0);
            layout->setSpacing(10);
            auto* icon = new QLabel;
            const QIcon image = QIcon::fromTheme(toQString(entry.icon), style()->standardIcon(fallbackFor(entry.icon)));
            icon->setPixmap(image.pixmap(18, 18, entry.enabled ? QIcon::Normal : QIcon::Disabled));
            icon->setFixedSize(18, 18);
            layout->addWidget(icon);
            auto* name = new QLabel(toQString(entry.name));
            QFont nameFont = name->font();
            nameFont.setPixelSize(13 * 4 / 3);
            name->setFont(nameFont);
            name->setStyleSheet(QStringLiteral("color: %1;").arg(colour(entry.enabled ? label : tertiary)));
            layout->addWidget(name);
            layout->addStretch(1);
            auto* badge = new QLabel(toQString(entry.hotkey));
            badge->setObjectName(QStringLiteral("hotkeyOverlayBadge"));
            QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
            mono.setPixelSize(12 * 4 / 3);
            mono.setWeight(QFont::Medium);
            badge->setFont(mono);
            QColor fill = entry.enabled ? accent : base.color(QPalette::Mid);
            fill.setAlphaF(entry.enabled ? 0.18f : 0.5f);
            badge->setStyleSheet(QStringLiteral("background: %1; color: %2; border-radius: 5px; padding: 3px 8px;")
                                     .arg(colour(fill), colour(entry.enabled ? label : secondary)));
            layout->addWidget(badge);
            contentStack_->addWidget(row);
        }
    }
}

void HotkeyOverlayPanel::show(const std::string& title, const std::vector<HotkeyOverlayEntries::Section>& sections) {
    rebuildContents(title, sections);
    contentStack_->activate();
    QSize size = sizeHint();
    size.setWidth(std::max(size.width(), kMinimumWidth));
    resize(size);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.center().x() - size.width() / 2, area.center().y() - size.height() / 2);
    }
    QWidget::show();
    raise();
}

void HotkeyOverlayPanel::hide() { QWidget::hide(); }

void HotkeyOverlayPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = palette().color(QPalette::Window);
    fill.setAlpha(242);
    QPainterPath path;
    path.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 14, 14);
    painter.fillPath(path, fill);
    QColor edge = palette().color(QPalette::Mid);
    painter.setPen(edge);
    painter.drawPath(path);
}

}  // namespace orvantis::ui
