#include "core/clipboard/uuid.h"

#include <cstring>

#include <sys/random.h>

namespace orvantis {
namespace {

constexpr char kUpperHex[] = "0123456789ABCDEF";

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isDashPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

}  // namespace

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    Bytes bytes{};
    std::size_t byte = 0;
    int high = -1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int value = hexValue(text[i]);
        if (value < 0) return std::nullopt;
        if (high < 0) {
            high = value;
        } else {
            bytes[byte++] = static_cast<std::uint8_t>(high * 16 + value);
            high = -1;
        }
    }
    return Uuid(bytes);
}

std::string Uuid::toString() const {
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out.push_back('-');
        out.push_back(kUpperHex[bytes_[i] >> 4]);
        out.push_back(kUpperHex[bytes_[i] & 0x0F]);
    }
    return out;
}

UuidGenerator::UuidGenerator() = default;

UuidGenerator::UuidGenerator(std::uint64_t seed) : seeded_(std::in_place, seed) {}

Uuid UuidGenerator::generate() {
    Uuid::Bytes bytes{};
    if (seeded_) {
        for (std::size_t i = 0; i < bytes.size(); i += 8) {
            const std::uint64_t word = (*seeded_)();
            std::memcpy(bytes.data() + i, &word, 8);
        }
    } else if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        // The kernel's generator, straight: a TLS library's generator would load and set up
        // its providers and configuration (megabytes) for the first copy. Should it fail (it
        // practically never does), the standard library's is random enough for identifiers
        // that are no secret.
        std::random_device device;
        for (auto& b : bytes) b = static_cast<std::uint8_t>(device());
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
    return Uuid(bytes);
}

}  // namespace orvantis
