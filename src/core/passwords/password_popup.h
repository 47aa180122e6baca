#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/passwords/password_config.h"

namespace orvantis {

class AppSettings;
class PasswordGenerator;

/// The password popup as the coordinator sees it. The popup generates the password itself
/// and hands it back through the callbacks; it never writes to the pasteboard or sends keys.
/// Main thread only.
class PasswordPopup {
public:
    struct Callbacks {
        std::function<void(const std::string& password)> onCopy;
        std::function<void(const std::string& password)> onPaste;
        /// The popup has closed (after Copy or Paste as well). Called from within the popup's
        /// own event: the popup may be destroyed only in a later turn.
        std::function<void()> onDismiss;
    };
    virtual ~PasswordPopup() = default;
    /// Places the popup slightly above the centre of the screen, shows it and starts taking
    /// the keys.
    virtual void show() = 0;
    virtual bool isVisible() const = 0;
    /// Brings the visible popup to the front, keeping its password.
    virtual void bringToFront() = 0;
};

/// Makes a popup over the settings and the generator, both borrowed, opening with `initial`.
using PasswordPopupFactory = std::function<std::unique_ptr<PasswordPopup>(
    const PasswordConfig& initial, PasswordGenerator& generator, AppSettings& settings, PasswordPopup::Callbacks)>;

}  // namespace orvantis
