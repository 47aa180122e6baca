#include "core/passwords/password_popup_model.h"

#include <algorithm>

#include "core/passwords/password_generator.h"
#include "core/settings/app_settings.h"
#include "platform/key_output.h"

namespace orvantis {

PasswordPopupModel::PasswordPopupModel(const PasswordConfig& initial, PasswordGenerator& generator,
                                       AppSettings& settings)
    : generator_(generator), settings_(settings), config_(initial),
      sliderValue_(std::clamp(initial.length, kSliderMinimum, kSliderMaximum)) {
    regenerate();
}

bool PasswordPopupModel::isClassOn(PasswordClass which) const {
    switch (which) {
        case PasswordClass::uppercase: return config_.includeUppercase;
        case PasswordClass::lowercase: return config_.includeLowercase;
        case PasswordClass::digits: return config_.includeDigits;
        case PasswordClass::symbols: return config_.includeSymbols;
    }
    return false;
}

std::string PasswordPopupModel::displayText() const {
    if (revealed_) return password_;
    std::string masked;
    // The password is ASCII: one character a byte.
    for (std::size_t i = 0; i < password_.size(); ++i) masked += kMask;
    return masked;
}

void PasswordPopupModel::setLength(int value) {
    sliderValue_ = std::clamp(value, kSliderMinimum, kSliderMaximum);
    regenerate();
}

void PasswordPopupModel::setClass(PasswordClass which, bool on) {
    switch (which) {
        case PasswordClass::uppercase: config_.includeUppercase = on; break;
        case PasswordClass::lowercase: config_.includeLowercase = on; break;
        case PasswordClass::digits: config_.includeDigits = on; break;
        case PasswordClass::symbols: config_.includeSymbols = on; break;
    }
    regenerate();
}

void PasswordPopupModel::regenerate() {
    if (sliderValue_ != 0) config_.length = sliderValue_;
    // The last class can't be switched off: the popup always shows a password.
    if (!config_.hasAtLeastOneClass()) config_.includeLowercase = true;
    password_ = generator_.generate(config_);
    persist();
}

void PasswordPopupModel::persist() {
    settings_.setPasswordLength(std::clamp(config_.length, PasswordGenerator::kMinimumLength,
                                           PasswordGenerator::kMaximumLength));
    settings_.setPasswordIncludeUppercase(config_.includeUppercase);
    settings_.setPasswordIncludeLowercase(config_.includeLowercase);
    settings_.setPasswordIncludeDigits(config_.includeDigits);
    settings_.setPasswordIncludeSymbols(config_.includeSymbols);
}

PasswordPopupAction PasswordPopupModel::actionForKey(std::uint16_t code, std::uint64_t flags) {
    namespace key_code = platform::key_code;
    namespace key_flags = platform::key_flags;
    const std::uint64_t modifiers = flags & key_flags::kModifierMask;
    if (code == key_code::kC && modifiers == key_flags::kCommand) return PasswordPopupAction::copy;
    if (code == key_code::kReturn || code == kKeypadEnter) return PasswordPopupAction::paste;
    if (code == key_code::kSpace) return PasswordPopupAction::regenerate;
    if (code == key_code::kEscape) return PasswordPopupAction::close;
    return PasswordPopupAction::none;
}

}  // namespace orvantis
