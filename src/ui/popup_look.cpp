#include "ui/popup_look.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QScreen>
#include <QWidget>

#include "platform/key_output.h"

namespace orvantis::ui {

QString toQString(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }

QFont popupPlainFont(int pixelSize, QFont::Weight weight) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

QFont popupNumberFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(10);
    font.setWeight(QFont::Medium);
    return font;
}

QColor popupSecondaryColor(const QPalette& palette) { return palette.color(QPalette::PlaceholderText); }

std::uint64_t popupKeyFlags(Qt::KeyboardModifiers modifiers) {
    std::uint64_t flags = 0;
    if (modifiers & Qt::ControlModifier) flags |= platform::key_flags::kCommand;
    if (modifiers & Qt::MetaModifier) flags |= platform::key_flags::kControl;
    if (modifiers & Qt::AltModifier) flags |= platform::key_flags::kOption;
    if (modifiers & Qt::ShiftModifier) flags |= platform::key_flags::kShift;
    return flags;
}

std::optional<PopupRect> popupScreenArea(QPoint point) {
    QScreen* screen = QGuiApplication::screenAt(point);
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return std::nullopt;
    const QRect area = screen->availableGeometry();
    return PopupRect{static_cast<double>(area.x()), static_cast<double>(area.y()), static_cast<double>(area.width()),
                     static_cast<double>(area.height())};
}

void setPopupWindowAttributes(QWidget& panel) {
    panel.setAttribute(Qt::WA_ShowWithoutActivating);
    panel.setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu);
}

void paintPopupFrame(QWidget& panel) {
    QPainter painter(&panel);
    const QPalette& pal = panel.palette();
    painter.fillRect(panel.rect(), pal.color(QPalette::Window));
    QColor border = pal.color(QPalette::WindowText);
    border.setAlphaF(0.22f);
    painter.setPen(border);
    painter.drawRect(panel.rect().adjusted(0, 0, -1, -1));
}

}  // namespace orvantis::ui
