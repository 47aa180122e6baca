#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace orvantis {

/// A 128-bit universally unique identifier. Printed in the canonical 36-character form with
/// upper-case digits ("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"), the form the files of the
/// product store.
class Uuid {
public:
    using Bytes = std::array<std::uint8_t, 16>;

    /// The nil identifier, all zero.
    Uuid() = default;
    explicit Uuid(const Bytes& bytes) : bytes_(bytes) {}

    /// Reads the canonical form: 8-4-4-4-12 hexadecimal digits in either case, nothing around
    /// them. Nullopt for anything else (braces, missing dashes, other lengths).
    static std::optional<Uuid> parse(std::string_view text);

    /// The canonical form in upper case.
    std::string toString() const;
    const Bytes& bytes() const { return bytes_; }

    auto operator<=>(const Uuid&) const = default;

private:
    Bytes bytes_{};
};

/// Makes random (version 4, RFC 4122 variant) identifiers. By default the bits come from the
/// operating system's generator; a seeded generator gives the same sequence every time, for
/// tests. Not thread-safe: one owner, on one thread.
class UuidGenerator {
public:
    /// Random bits from the operating system.
    UuidGenerator();
    /// A reproducible sequence.
    explicit UuidGenerator(std::uint64_t seed);

    Uuid generate();

private:
    std::optional<std::mt19937_64> seeded_;
};

}  // namespace orvantis
