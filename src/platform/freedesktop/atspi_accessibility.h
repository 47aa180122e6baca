#pragma once

#include <chrono>
#include <memory>

#include "platform/freedesktop/accessibility_bus.h"
#include "platform/text_element.h"

namespace orvantis {
class LogCategory;
}  // namespace orvantis

namespace orvantis::freedesktop {

/// The focused text element of another application, through the desktop's accessibility bus
/// (AT-SPI, over libatspi).
///
/// Each lookup walks the accessibility tree for the focused object, looking first in the
/// active windows of every application except this process: a synchronous call to ourselves
/// would wait for the very thread that makes it. Every call to another application gives up
/// after `callTimeout`, so a hung program costs one time-out per call, never a freeze.
///
/// The connection to the bus is made on the first lookup that finds the bus up and switched
/// on, and kept for the life of the process; until then, and for good if connecting fails,
/// every lookup answers nullptr. Main thread only. `log` may be null; nothing read from a
/// text element ever reaches it.
class AtspiAccessibility final : public platform::Accessibility {
public:
    static constexpr std::chrono::milliseconds kDefaultCallTimeout{300};

    explicit AtspiAccessibility(const LogCategory* log = nullptr,
                                std::chrono::milliseconds callTimeout = kDefaultCallTimeout);

    /// nullptr when no bus, when no object has the focus, when the focused object is ours or
    /// is not an editable text (a password field counts as one, and reports itself secure).
    std::unique_ptr<platform::TextElement> focusedTextElement() override;

private:
    bool connect();
    void debug(const char* message) const;

    const LogCategory* log_;
    std::chrono::milliseconds callTimeout_;
    /// Asked on each lookup until the bus answers: one kept session-bus connection.
    AccessibilityBusCheck busCheck_;
};

}  // namespace orvantis::freedesktop
