#include "platform/sim/key_output.h"

#include <algorithm>
#include <ios>
#include <ostream>

namespace orvantis::sim {

std::ostream& operator<<(std::ostream& out, const SentKey& sent) {
    if (sent.kind == SentKey::Kind::text) return out << "text \"" << sent.text << '"';
    return out << "key " << sent.code << " flags 0x" << std::hex << sent.flags << std::dec;
}

KeyOutput::KeyOutput(KeySink& sink) : sink_(sink) {}

void KeyOutput::postKey(std::uint16_t virtualKey, std::uint64_t flags) {
    log_.push_back(SentKey::key(virtualKey, flags));
    sink_.deliverKey(virtualKey, flags);
}

void KeyOutput::typeText(std::string_view utf8) {
    if (utf8.empty()) return;
    log_.push_back(SentKey::typed(std::string(utf8)));
    sink_.deliverText(utf8);
}

std::size_t KeyOutput::count(std::uint16_t virtualKey, std::uint64_t flags) const {
    return static_cast<std::size_t>(std::count(log_.begin(), log_.end(), SentKey::key(virtualKey, flags)));
}

std::string KeyOutput::typedText() const {
    std::string result;
    for (const auto& sent : log_)
        if (sent.kind == SentKey::Kind::text) result += sent.text;
    return result;
}

}  // namespace orvantis::sim
