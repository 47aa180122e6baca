#pragma once

#include <optional>

namespace orvantis {

// Screen geometry of the floating popups, in the desktop's own coordinates: logical pixels,
// x growing to the right and y growing DOWNWARD from the top of the virtual screen, as Qt
// and X11 count. The popups' rules were first written for a desktop whose y grows upward
// and whose frames are anchored at their bottom-left corner; converted here:
//   - "below the pointer" means a larger y: a popup whose top stands 30 below the pointer
//     has y = pointer.y + 30;
//   - "the bottom edge" of the screen is visibleFrame.bottom() (its largest y), "the top
//     edge" is visibleFrame.y;
//   - an upward-y "origin" is the frame's bottom-left corner, so "the origin stands" keeps
//     the bottom edge (y + height), and "the top edge stays" keeps y.

struct PopupPoint {
    double x = 0;
    double y = 0;
    bool operator==(const PopupPoint&) const = default;
};

struct PopupSize {
    double width = 0;
    double height = 0;
    bool operator==(const PopupSize&) const = default;
};

/// A frame: top-left corner and size, downward y.
struct PopupRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    bool contains(PopupPoint p) const { return p.x >= x && p.x < right() && p.y >= y && p.y < bottom(); }
    PopupPoint origin() const { return {x, y}; }
    PopupSize size() const { return {width, height}; }
    bool operator==(const PopupRect&) const = default;
};

/// Space kept between a popup and the edges of the screen's visible frame.
inline constexpr double kPopupScreenMargin = 4;

/// Moves a popup of `size` whose top-left corner would be `origin` back inside `visibleFrame`
/// (the main screen less panels and docks), `kPopupScreenMargin` from the edge it crossed.
/// In order: past the right edge it is pulled left; then, left of the left edge, pushed right;
/// then past the bottom edge it is lifted; then above the top edge it is lowered, so a popup
/// taller than the screen ends at the top. Without a screen the origin stands.
PopupPoint clampToScreen(PopupPoint origin, PopupSize size, const std::optional<PopupRect>& visibleFrame);

/// The frame of a popup that hangs `gap` below the pointer, its left edge at the pointer's x,
/// clamped to the screen.
PopupRect placeBelowPointer(PopupPoint pointer, PopupSize size, double gap,
                            const std::optional<PopupRect>& visibleFrame);

}  // namespace orvantis
