#pragma once

#include <cstdint>
#include <span>

namespace orvantis {

/// A source of random bytes for the password generator. The program uses the kernel's
/// generator; tests inject a seeded or scripted one. Used on one thread at a time.
class RandomSource {
public:
    virtual ~RandomSource() = default;
    /// Fills the whole of `out`. Answers false when the source failed; `out` is then not to be
    /// used.
    virtual bool fill(std::span<std::uint8_t> out) = 0;
};

/// The kernel's cryptographic generator through getrandom(2): blocks only until the kernel's
/// pool is first initialised, early in boot. Fails when the call is refused (an old kernel,
/// a sandbox that forbids it).
class KernelRandomSource final : public RandomSource {
public:
    bool fill(std::span<std::uint8_t> out) override;
};

}  // namespace orvantis
