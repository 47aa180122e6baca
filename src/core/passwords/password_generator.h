#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "core/passwords/password_config.h"
#include "core/passwords/random_source.h"

namespace orvantis {

class LogCategory;

/// Makes random passwords from up to four character classes. Every index comes from the
/// injected random source, with rejection of the values that would bias the modulo; when the
/// source fails, that one index comes from the fallback instead. Borrows the source (and the
/// log, which may be null), which must outlive it. One thread at a time.
class PasswordGenerator {
public:
    static constexpr std::string_view kUppercase = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    static constexpr std::string_view kLowercase = "abcdefghijklmnopqrstuvwxyz";
    static constexpr std::string_view kDigits = "0123456789";
    /// No quotes, backslash, backtick, pipe or blank: safe to paste into a shell or a form.
    static constexpr std::string_view kSymbols = "!@#$%^&*()-_=+[]{};:,.<>?/~";
    static constexpr int kMinimumLength = 4;
    static constexpr int kMaximumLength = 128;

    /// A uniform index below its argument, from the general random generator of the system.
    using FallbackIndex = std::function<std::uint32_t(std::uint32_t upperBound)>;

    explicit PasswordGenerator(RandomSource& source, FallbackIndex fallback = systemRandomIndex,
                               const LogCategory* log = nullptr);

    /// A password of `config.length` clamped to 4 through 128 characters, with at least one
    /// character of each chosen class, the rest drawn from the union of the classes, shuffled.
    /// Empty when no class is chosen.
    std::string generate(const PasswordConfig& config);

    /// Uniform in 0 to `upperBound` - 1. The bound must be at least 1.
    std::uint32_t secureRandomIndex(std::uint32_t upperBound);

    /// Indexes that came from the fallback because the source failed.
    std::uint64_t fallbackCount() const { return fallbackCount_; }

    /// The default fallback: the C++ library's random device, and where even that fails a
    /// generator seeded from the clock. Never fails.
    static std::uint32_t systemRandomIndex(std::uint32_t upperBound);

private:
    RandomSource& source_;
    FallbackIndex fallback_;
    const LogCategory* log_;
    std::uint64_t fallbackCount_ = 0;
};

}  // namespace orvantis
