#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace orvantis::freedesktop {

/// True when the desktop's accessibility bus is up and switched on: on the session bus,
/// `org.a11y.Bus` at `/org/a11y/bus` answers `GetAddress` and its property
/// `org.a11y.Status.IsEnabled` is true. This is what lets Orvantis read and write the text of
/// other applications. The check never starts the bus itself (no D-Bus activation). Any
/// failure, including no session bus or a reply slower than `timeout` per call, answers false.
/// Any thread; blocks for at most two time-outs.
bool accessibilityBusEnabled(std::chrono::milliseconds timeout = std::chrono::milliseconds(500));

/// The same question as accessibilityBusEnabled(), over one session-bus connection kept
/// between questions, for a caller that asks again and again (the retries while the keyboard
/// waits for the permission): a connection made for each question costs a connect, an
/// authentication and a greeting every time. The connection also follows who owns the
/// launcher's name (the bus daemon's NameOwnerChanged), so while no launcher runs a question is
/// answered false from what the bus has already reported, without a call; once a launcher owns
/// the name, every question asks it, as above. A connection that breaks is dropped and made
/// anew at the next question. One thread at a time.
class AccessibilityBusCheck {
public:
    /// The launcher is the one at the desktop's name, `org.a11y.Bus`; tests give a stand-in's.
    explicit AccessibilityBusCheck(std::string launcherName = "org.a11y.Bus");
    ~AccessibilityBusCheck();
    AccessibilityBusCheck(const AccessibilityBusCheck&) = delete;
    AccessibilityBusCheck& operator=(const AccessibilityBusCheck&) = delete;

    /// As accessibilityBusEnabled(`timeout`).
    bool enabled(std::chrono::milliseconds timeout = std::chrono::milliseconds(500));

    /// Method calls sent to the launcher so far, for tests and diagnostics.
    std::size_t launcherCalls() const { return launcherCalls_; }

private:
    struct Connection;
    std::string launcherName_;
    std::unique_ptr<Connection> connection_;
    std::size_t launcherCalls_ = 0;
};

/// Switches the accessibility bus on (`org.a11y.Status.IsEnabled` = true), starting its
/// launcher through D-Bus activation where the session provides it, so that applications
/// started from now on expose their text. Answers whether the switch was accepted; any failure
/// answers false. Any thread; blocks for at most `timeout`.
bool enableAccessibilityBus(std::chrono::milliseconds timeout = std::chrono::milliseconds(2000));

}  // namespace orvantis::freedesktop
