#include "core/passwords/password_generator.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"

namespace orvantis {

PasswordConfig PasswordConfig::fromSettings(const AppSettings& settings) {
    PasswordConfig config;
    config.length = std::clamp(settings.passwordLength(), PasswordGenerator::kMinimumLength,
                               PasswordGenerator::kMaximumLength);
    config.includeUppercase = settings.passwordIncludeUppercase();
    config.includeLowercase = settings.passwordIncludeLowercase();
    config.includeDigits = settings.passwordIncludeDigits();
    config.includeSymbols = settings.passwordIncludeSymbols();
    return config;
}

PasswordGenerator::PasswordGenerator(RandomSource& source, FallbackIndex fallback, const LogCategory* log)
    : source_(source), fallback_(std::move(fallback)), log_(log) {}

std::uint32_t PasswordGenerator::secureRandomIndex(std::uint32_t upperBound) {
    if (upperBound == 0) upperBound = 1;  // a caller's bug; the only index there is
    constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();
    // The largest multiple of the bound that fits: values at or above it would favour the
    // low indexes, so they are drawn again.
    const std::uint32_t limit = (kMax / upperBound) * upperBound;
    for (;;) {
        std::array<std::uint8_t, 4> bytes{};
        if (!source_.fill(bytes)) {
            if (fallbackCount_++ == 0 && log_ != nullptr)
                log_->warning("password: the kernel's random source failed; using the fallback generator");
            return fallback_ ? fallback_(upperBound) % upperBound : systemRandomIndex(upperBound);
        }
        const std::uint32_t value = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
                                    (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
        if (value < limit) return value % upperBound;
    }
}

std::string PasswordGenerator::generate(const PasswordConfig& config) {
    std::vector<std::string_view> pools;
    if (config.includeUppercase) pools.push_back(kUppercase);
    if (config.includeLowercase) pools.push_back(kLowercase);
    if (config.includeDigits) pools.push_back(kDigits);
    if (config.includeSymbols) pools.push_back(kSymbols);
    if (pools.empty()) return {};

    const auto length = static_cast<std::size_t>(std::clamp(config.length, kMinimumLength, kMaximumLength));
    std::string result;
    result.reserve(length);
    for (std::string_view pool : pools) {
        if (result.size() >= length) break;
        result.push_back(pool[secureRandomIndex(static_cast<std::uint32_t>(pool.size()))]);
    }
    std::string all;
    for (std::string_view pool : pools) all += pool;
    while (result.size() < length) result.push_back(all[secureRandomIndex(static_cast<std::uint32_t>(all.size()))]);

    // Fisher-Yates, so that the guaranteed characters stand anywhere.
    for (std::size_t i = result.size() - 1; i >= 1; --i) {
        const std::size_t j = secureRandomIndex(static_cast<std::uint32_t>(i + 1));
        if (i != j) std::swap(result[i], result[j]);
    }
    return result;
}

std::uint32_t PasswordGenerator::systemRandomIndex(std::uint32_t upperBound) {
    if (upperBound <= 1) return 0;
    std::uniform_int_distribution<std::uint32_t> distribution(0, upperBound - 1);
    try {
        std::random_device device;
        return distribution(device);
    } catch (...) {
        // No random device at all: a generator seeded once from the clock and its own address.
        thread_local std::mt19937_64 generator = [] {
            const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
            std::seed_seq seed{now, now >> 32, reinterpret_cast<std::uintptr_t>(&now)};
            return std::mt19937_64(seed);
        }();
        return distribution(generator);
    }
}

}  // namespace orvantis
