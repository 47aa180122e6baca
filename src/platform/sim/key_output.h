#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/key_output.h"

namespace orvantis::sim {

/// Where the program's synthetic keys go. The desktop routes them to the focused application.
class KeySink {
public:
    virtual ~KeySink() = default;
    /// One press and release with exactly `flags`.
    virtual void deliverKey(std::uint16_t virtualKey, std::uint64_t flags) = 0;
    /// Unicode key events carrying `utf8`.
    virtual void deliverText(std::string_view utf8) = 0;
};

/// One thing the program sent: a key with its flags, or typed text.
struct SentKey {
    enum class Kind { key, text };
    Kind kind = Kind::key;
    std::uint16_t code = 0;
    std::uint64_t flags = 0;
    std::string text;

    static SentKey key(std::uint16_t code, std::uint64_t flags = 0) { return {Kind::key, code, flags, {}}; }
    static SentKey typed(std::string utf8) { return {Kind::text, 0, 0, std::move(utf8)}; }
    bool operator==(const SentKey&) const = default;
};

/// Prints "key 51 flags 0x0" or "text \"...\"", for test failure messages.
std::ostream& operator<<(std::ostream& out, const SentKey& sent);

/// The simulated synthetic keystrokes: hands every key and text to the sink exactly as the
/// program sent it, whatever modifiers the user holds, and records it. Main thread only.
class KeyOutput final : public platform::KeyOutput {
public:
    /// `sink` must outlive this object.
    explicit KeyOutput(KeySink& sink);

    void postKey(std::uint16_t virtualKey, std::uint64_t flags) override;
    void typeText(std::string_view utf8) override;

    /// Everything sent, oldest first.
    const std::vector<SentKey>& log() const { return log_; }
    void clearLog() { log_.clear(); }
    /// Number of posts of `virtualKey` with exactly `flags`.
    std::size_t count(std::uint16_t virtualKey, std::uint64_t flags = 0) const;
    /// All typed text, joined.
    std::string typedText() const;

private:
    KeySink& sink_;
    std::vector<SentKey> log_;
};

}  // namespace orvantis::sim
