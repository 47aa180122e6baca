#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <QColor>
#include <QFont>
#include <QPoint>
#include <QString>

#include "core/popup/popup_geometry.h"

class QPalette;
class QWidget;

namespace orvantis::ui {

/// What the translation and clipboard popups share in their look and in their reading of keys
/// and screens.

QString toQString(std::string_view utf8);

/// The desktop's font at `pixelSize`.
QFont popupPlainFont(int pixelSize, QFont::Weight weight = QFont::Normal);
/// The small fixed-width font of the row numbers.
QFont popupNumberFont();
/// The text colour of secondary information: the label colour, faded.
QColor popupSecondaryColor(const QPalette& palette);

/// The key flags of the core for Qt's modifiers: Ctrl stands for the Command key of the
/// design, the Super key for its Control key.
std::uint64_t popupKeyFlags(Qt::KeyboardModifiers modifiers);

/// The available area of the screen under `point` (else of the primary screen), or nullopt
/// when there is no screen at all.
std::optional<PopupRect> popupScreenArea(QPoint point);

/// The window flags of a popup panel: frameless, above the others, never focused, and kept
/// out of the window manager's hands so that it is neither decorated nor moved.
inline constexpr Qt::WindowFlags kPopupWindowFlags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                                                     Qt::WindowDoesNotAcceptFocus |
                                                     Qt::X11BypassWindowManagerHint;
/// Shows `panel` without activating it, typed as a popup menu for the window system.
void setPopupWindowAttributes(QWidget& panel);

/// The panel's background in the window colour and its thin border.
void paintPopupFrame(QWidget& panel);

}  // namespace orvantis::ui
