#pragma once

// What happens when the X server goes away under the backend's connections.
//
// Left to Xlib, a broken connection prints a line and ends the process from inside whatever
// call noticed it: the program's end sequence never runs, and if the call was made while the
// process was already ending (from exit()), exit() runs twice. Here a broken display goes
// quiet instead: Xlib marks it, every later call on it returns at once, and the program is
// told, once, so that it can end through its ordinary road.

#include <functional>
#include <memory>

typedef struct _XDisplay Display;

namespace orvantis::x11 {

struct DisplayCloser {
    void operator()(Display* display) const;
};
using DisplayPointer = std::unique_ptr<Display, DisplayCloser>;

/// Opens the X display `displayName` ($DISPLAY when null), quiet when lost; null when it does
/// not accept a connection. Also a way to hold the server: a server whose last client leaves
/// may reset, refusing connections for a moment.
DisplayPointer openDisplay(const char* displayName);

/// Makes `display` go quiet when its connection breaks instead of ending the process. Every
/// display the backend opens goes through here.
void keepQuietWhenLost(Display* display);

/// Closes a display opened with the above; a broken one closes without a word to the server.
void closeDisplay(Display* display);

/// Runs `onLoss` on the thread that noticed, the first time any connection breaks (whichever
/// display, ours or the toolkit's). Replaces the handler set before; empty removes it. Call it
/// after the toolkit has opened its display: it takes Xlib's handler back from the toolkit.
void setConnectionLossHandler(std::function<void()> onLoss);

/// Whether the connection of `display` has broken.
bool connectionLost(Display* display);

/// Whether any connection has broken since the process started.
bool anyConnectionLost();

}  // namespace orvantis::x11
