#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/passwords/password_config.h"

namespace orvantis {

class AppSettings;
class PasswordGenerator;

/// A character class of the popup's checkboxes.
enum class PasswordClass { uppercase, lowercase, digits, symbols };

/// What a key pressed in the popup does.
enum class PasswordPopupAction { none, copy, paste, regenerate, close };

/// The state and rules of the password popup, without the toolkit: the configuration its
/// controls show, the password, whether it is shown in clear, and what each change does.
/// Every change regenerates the password and writes the configuration back to the settings,
/// so the popup is also where the password settings are edited. The slider reaches only 64:
/// a longer stored length is cut to 64 at the first regeneration, which runs at construction.
/// Borrows the generator and the settings. Main thread only.
class PasswordPopupModel {
public:
    static constexpr int kSliderMinimum = 4;
    static constexpr int kSliderMaximum = 64;
    static constexpr std::string_view kMask = "\u2022";  // •

    PasswordPopupModel(const PasswordConfig& initial, PasswordGenerator& generator, AppSettings& settings);

    const PasswordConfig& config() const { return config_; }
    const std::string& password() const { return password_; }
    /// The slider's position: the length, held within 4 through 64.
    int sliderValue() const { return sliderValue_; }
    bool isClassOn(PasswordClass which) const;

    /// One mask character per character of the password while hidden, else the password.
    std::string displayText() const;
    bool isRevealed() const { return revealed_; }
    void toggleReveal() { revealed_ = !revealed_; }
    /// The reveal button's symbol and description: "eye" and "Reveal" while hidden, "eye.slash"
    /// and "Hide" while revealed.
    std::string_view revealSymbol() const { return revealed_ ? "eye.slash" : "eye"; }
    std::string_view revealDescription() const { return revealed_ ? "Hide" : "Reveal"; }

    /// The slider moved to `value` (clamped to its range): the length follows, and a new
    /// password is made.
    void setLength(int value);
    /// A checkbox changed. Unticking the last ticked class ticks lower case instead, whichever
    /// class was the last one. A new password is made.
    void setClass(PasswordClass which, bool on);
    /// A new password from the present controls; the controls are written to the settings.
    /// The reveal state stays.
    void regenerate();

    /// The popup's keys: Ctrl+C copies, Return and keypad Enter paste, Space regenerates, Esc
    /// closes; every other key passes on (none).
    static PasswordPopupAction actionForKey(std::uint16_t code, std::uint64_t flags);
    /// The code of keypad Enter.
    static constexpr std::uint16_t kKeypadEnter = 76;

private:
    void persist();

    PasswordGenerator& generator_;
    AppSettings& settings_;
    PasswordConfig config_;
    int sliderValue_;
    std::string password_;
    bool revealed_ = false;
};

}  // namespace orvantis
