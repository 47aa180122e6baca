#include "platform/x11/x11_display.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

#include <X11/Xlib.h>

namespace orvantis::x11 {
namespace {

// Xlib's handlers are the process's own, so what they record is as well.
std::mutex lossMutex;
std::vector<Display*> lostDisplays;
std::function<void()> lossHandler;
std::atomic<bool> anyLost{false};

int noteLostConnection(Display* display) {
    std::function<void()> handler;
    {
        std::lock_guard lock(lossMutex);
        if (std::find(lostDisplays.begin(), lostDisplays.end(), display) == lostDisplays.end())
            lostDisplays.push_back(display);
        // The program hears of the first loss only: the others are the same server going away.
        if (!anyLost.exchange(true)) handler = lossHandler;
    }
    if (handler) handler();
    return 0;
}

// After the handler above, Xlib calls this display's exit handler; returning from it leaves the
// display marked broken, and Xlib's calls on it return at once from then on.
void stayQuiet(Display*, void*) {}

// Set again each time, as a toolkit that opens its own display later sets its own handler,
// which ends the process.
void installHandler() { XSetIOErrorHandler(noteLostConnection); }

}  // namespace

void DisplayCloser::operator()(Display* display) const { closeDisplay(display); }

DisplayPointer openDisplay(const char* displayName) {
    Display* display = XOpenDisplay(displayName);
    keepQuietWhenLost(display);
    return DisplayPointer(display);
}

void keepQuietWhenLost(Display* display) {
    if (display == nullptr) return;
    installHandler();
    XSetIOErrorExitHandler(display, stayQuiet, nullptr);
}

void closeDisplay(Display* display) {
    if (display == nullptr) return;
    {
        // Forgotten first: the next display opened may get the same address.
        std::lock_guard lock(lossMutex);
        lostDisplays.erase(std::remove(lostDisplays.begin(), lostDisplays.end(), display), lostDisplays.end());
    }
    XCloseDisplay(display);
}

void setConnectionLossHandler(std::function<void()> onLoss) {
    installHandler();
    std::lock_guard lock(lossMutex);
    lossHandler = std::move(onLoss);
}

bool connectionLost(Display* display) {
    std::lock_guard lock(lossMutex);
    return std::find(lostDisplays.begin(), lostDisplays.end(), display) != lostDisplays.end();
}

bool anyConnectionLost() { return anyLost.load(); }

}  // namespace orvantis::x11
