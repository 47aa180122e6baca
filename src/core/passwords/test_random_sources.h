#pragma once

// Random sources for the tests of the password generator.

#include <cstdint>
#include <deque>
#include <random>
#include <span>

#include "core/passwords/random_source.h"

namespace orvantis::testing {

/// The same bytes on every run.
class SeededRandomSource final : public RandomSource {
public:
    explicit SeededRandomSource(std::uint64_t seed) : engine_(seed) {}
    bool fill(std::span<std::uint8_t> out) override {
        for (auto& byte : out) byte = static_cast<std::uint8_t>(engine_() & 0xFF);
        ++calls;
        return true;
    }
    std::uint64_t calls = 0;

private:
    std::mt19937_64 engine_;
};

/// Answers the given 32-bit values, big-endian, in order; fails once they are used up.
class ScriptedRandomSource final : public RandomSource {
public:
    explicit ScriptedRandomSource(std::initializer_list<std::uint32_t> values) : values_(values) {}
    bool fill(std::span<std::uint8_t> out) override {
        if (values_.empty() || out.size() != 4) return false;
        const std::uint32_t v = values_.front();
        values_.pop_front();
        ++draws;
        out[0] = static_cast<std::uint8_t>(v >> 24);
        out[1] = static_cast<std::uint8_t>(v >> 16);
        out[2] = static_cast<std::uint8_t>(v >> 8);
        out[3] = static_cast<std::uint8_t>(v);
        return true;
    }
    std::size_t remaining() const { return values_.size(); }
    std::size_t draws = 0;

private:
    std::deque<std::uint32_t> values_;
};

/// Always fails, as a kernel that refuses the call.
class FailingRandomSource final : public RandomSource {
public:
    bool fill(std::span<std::uint8_t>) override {
        ++calls;
        return false;
    }
    std::size_t calls = 0;
};

}  // namespace orvantis::testing
