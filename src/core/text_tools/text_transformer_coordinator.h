#pragma once

#include <functional>
#include <memory>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"

namespace orvantis {

/// The text tools window as its coordinator sees it. Main thread only.
class TextTransformerWindow {
public:
    virtual ~TextTransformerWindow() = default;
    /// Fills the input from the clipboard's text (if there is any), recomputes, and brings the
    /// window to the front with the focus in the input.
    virtual void show() = 0;
};

/// Opens the text tools window on its hotkey. The window lives from the first hotkey until it
/// is closed, so a closed window forgets its transform and the next one starts with
/// `base64Encode`. Borrows its collaborators, which must outlive it; main thread only.
class TextTransformerCoordinator {
public:
    /// Makes a window that calls `onClosed` when the user closes it.
    using WindowFactory = std::function<std::unique_ptr<TextTransformerWindow>(std::function<void()> onClosed)>;

    TextTransformerCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor, platform::MainLoop& loop,
                               WindowFactory makeWindow);
    ~TextTransformerCoordinator();

    /// The hotkey: nothing when the text tools are off; otherwise shows the window, made first
    /// when there is none.
    void handleHotkey();
    /// True while a window exists (from a hotkey until the turn after its closing).
    bool hasWindow() const { return window_ != nullptr; }

private:
    AppSettings& settings_;
    platform::MainLoop& loop_;
    WindowFactory makeWindow_;
    std::unique_ptr<TextTransformerWindow> window_;
    /// Held while the coordinator lives; a closed window's release checks it first.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    Subscription hotkey_;
};

}  // namespace orvantis
