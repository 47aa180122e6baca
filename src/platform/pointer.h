#pragma once

namespace orvantis::platform {

/// A point in global screen coordinates, in pixels, y growing downwards.
struct ScreenPoint {
    int x = 0;
    int y = 0;
    bool operator==(const ScreenPoint&) const = default;
};

/// The mouse pointer. Main thread only.
class Pointer {
public:
    virtual ~Pointer() = default;
    /// Where the pointer is now.
    virtual ScreenPoint location() const = 0;
};

}  // namespace orvantis::platform
