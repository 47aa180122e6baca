#include "platform/x11/input_extension.h"

#include "platform/x11/x11_display.h"

#include <X11/Xlib.h>

namespace orvantis::x11 {

bool hasInputExtension(const std::string& displayName) {
    Display* display = XOpenDisplay(displayName.empty() ? nullptr : displayName.c_str());
    if (display == nullptr) return false;
    keepQuietWhenLost(display);
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    const bool present = XQueryExtension(display, "XInputExtension", &opcode, &firstEvent, &firstError) != 0;
    closeDisplay(display);
    return present;
}

}  // namespace orvantis::x11
