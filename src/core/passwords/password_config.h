#pragma once

namespace orvantis {

class AppSettings;

/// What a password is made of: its wanted length and the character classes it draws from.
struct PasswordConfig {
    int length = 16;
    bool includeUppercase = true;
    bool includeLowercase = true;
    bool includeDigits = true;
    bool includeSymbols = false;

    bool hasAtLeastOneClass() const { return includeUppercase || includeLowercase || includeDigits || includeSymbols; }
    bool operator==(const PasswordConfig&) const = default;

    /// The configuration the settings hold now; the length clamped to 4 through 128.
    static PasswordConfig fromSettings(const AppSettings& settings);
};

}  // namespace orvantis
