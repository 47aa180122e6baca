#pragma once

#include <QIcon>

namespace orvantis::ui {

/// The keyboard picture of the tray icon. The desktop's icon theme wins so the icon matches
/// its neighbours; without one, a keyboard drawn from an SVG built into the program; should
/// even that fail to render, the character ⌨ drawn as text. Main thread only (pixmaps).
struct KeyboardIcon {
    enum class Source { Theme, Bundled, Text };

    QIcon icon;
    Source source = Source::Text;

    /// The best icon available now: theme `input-keyboard`, else bundled, else text.
    static KeyboardIcon load();
    /// The built-in keyboard drawing, rendered at the usual tray sizes; null if the SVG
    /// renderer refuses it.
    static QIcon bundled();
    /// ⌨ drawn with the application font; never null.
    static QIcon text();
};

}  // namespace orvantis::ui
