#include "core/popup/popup_geometry.h"

namespace orvantis {

PopupPoint clampToScreen(PopupPoint origin, PopupSize size, const std::optional<PopupRect>& visibleFrame) {
    if (!visibleFrame) return origin;
    const PopupRect& screen = *visibleFrame;
    PopupPoint p = origin;
    if (p.x + size.width > screen.right()) p.x = screen.right() - size.width - kPopupScreenMargin;
    if (p.x < screen.x) p.x = screen.x + kPopupScreenMargin;
    if (p.y + size.height > screen.bottom()) p.y = screen.bottom() - size.height - kPopupScreenMargin;
    if (p.y < screen.y) p.y = screen.y + kPopupScreenMargin;
    return p;
}

PopupRect placeBelowPointer(PopupPoint pointer, PopupSize size, double gap,
                            const std::optional<PopupRect>& visibleFrame) {
    const PopupPoint origin = clampToScreen({pointer.x, pointer.y + gap}, size, visibleFrame);
    return {origin.x, origin.y, size.width, size.height};
}

}  // namespace orvantis
