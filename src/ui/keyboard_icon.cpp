#include "ui/keyboard_icon.h"

#include <QByteArray>
#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPixmap>
#include <QString>
#include <QSvgRenderer>

namespace orvantis::ui {
namespace {

constexpr const char* kThemeIconName = "input-keyboard";

// A light keyboard with dark keys and outline: readable on dark and on light panels alike.
constexpr const char kKeyboardSvg[] = R"svg(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 32 32">
  <rect x="1.75" y="7.75" width="28.5" height="16.5" rx="2.5" fill="#f6f5f4" stroke="#2e3436" stroke-width="1.5"/>
  <g fill="#2e3436">
    <rect x="4.5" y="10.5" width="3" height="3" rx="0.5"/>
    <rect x="8.5" y="10.5" width="3" height="3" rx="0.5"/>
    <rect x="12.5" y="10.5" width="3" height="3" rx="0.5"/>
    <rect x="16.5" y="10.5" width="3" height="3" rx="0.5"/>
    <rect x="20.5" y="10.5" width="3" height="3" rx="0.5"/>
    <rect x="24.5" y="10.5" width="3" height="3" rx="0.5"/>
    <rect x="6.5" y="14.5" width="3" height="3" rx="0.5"/>
    <rect x="10.5" y="14.5" width="3" height="3" rx="0.5"/>
    <rect x="14.5" y="14.5" width="3" height="3" rx="0.5"/>
    <rect x="18.5" y="14.5" width="3" height="3" rx="0.5"/>
    <rect x="22.5" y="14.5" width="3" height="3" rx="0.5"/>
    <rect x="9" y="18.75" width="14" height="2.75" rx="0.5"/>
  </g>
</svg>
)svg";

constexpr int kIconSizes[] = {16, 22, 24, 32, 48, 64};

}  // namespace

KeyboardIcon KeyboardIcon::load() {
    if (QIcon themed = QIcon::fromTheme(QString::fromLatin1(kThemeIconName)); !themed.isNull()) {
        return {themed, Source::Theme};
    }
    if (QIcon drawn = bundled(); !drawn.isNull()) return {drawn, Source::Bundled};
    return {text(), Source::Text};
}

QIcon KeyboardIcon::bundled() {
    QSvgRenderer renderer{QByteArray(kKeyboardSvg)};
    if (!renderer.isValid()) return {};
    QIcon icon;
    for (int size : kIconSizes) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

QIcon KeyboardIcon::text() {
    QIcon icon;
    for (int size : kIconSizes) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::TextAntialiasing);
        QFont font = painter.font();
        font.setPixelSize(size * 7 / 8);
        painter.setFont(font);
        painter.setPen(QColor(0x2e, 0x34, 0x36));
        painter.drawText(pixmap.rect(), Qt::AlignCenter, QString(QChar(0x2328)));
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace orvantis::ui
