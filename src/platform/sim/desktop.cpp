#include "platform/sim/desktop.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "core/text/graphemes.h"

#include "platform/key_output.h"

namespace orvantis::sim {
namespace {

struct PrintableKey {
    std::uint16_t code;
    char plain;
    char shifted;
};

// The printable keys of a US keyboard, by virtual key code: what keys type when the desktop
// has no current input source or the source has no key table.
constexpr std::array<PrintableKey, 48> kUsKeys{{
    {0, 'a', 'A'},   {1, 's', 'S'},   {2, 'd', 'D'},   {3, 'f', 'F'},   {4, 'h', 'H'},   {5, 'g', 'G'},
    {6, 'z', 'Z'},   {7, 'x', 'X'},   {8, 'c', 'C'},   {9, 'v', 'V'},   {11, 'b', 'B'},  {12, 'q', 'Q'},
    {13, 'w', 'W'},  {14, 'e', 'E'},  {15, 'r', 'R'},  {16, 'y', 'Y'},  {17, 't', 'T'},  {18, '1', '!'},
    {19, '2', '@'},  {20, '3', '#'},  {21, '4', '$'},  {22, '6', '^'},  {23, '5', '%'},  {24, '=', '+'},
    {25, '9', '('},  {26, '7', '&'},  {27, '-', '_'},  {28, '8', '*'},  {29, '0', ')'},  {30, ']', '}'},
    {31, 'o', 'O'},  {32, 'u', 'U'},  {33, '[', '{'},  {34, 'i', 'I'},  {35, 'p', 'P'},  {37, 'l', 'L'},
    {38, 'j', 'J'},  {39, '\'', '"'}, {40, 'k', 'K'},  {41, ';', ':'},  {42, '\\', '|'}, {43, ',', '<'},
    {44, '/', '?'},  {45, 'n', 'N'},  {46, 'm', 'M'},  {47, '.', '>'},  {49, ' ', ' '},  {50, '`', '~'},
}};

// What a key types on a US keyboard, Shift applied.
std::string usCharacters(std::uint16_t code, bool shift) {
    const auto key =
        std::find_if(kUsKeys.begin(), kUsKeys.end(), [code](const PrintableKey& k) { return k.code == code; });
    if (key == kUsKeys.end()) return {};
    return std::string(1, shift ? key->shifted : key->plain);
}

// A key on a US keyboard that types `character`, with its Shift flag.
std::optional<std::pair<std::uint16_t, std::uint64_t>> usKeyFor(std::string_view character) {
    if (character.size() != 1) return std::nullopt;
    for (const auto& key : kUsKeys) {
        if (key.plain == character[0]) return std::pair{key.code, std::uint64_t{0}};
        if (key.shifted == character[0]) return std::pair{key.code, platform::key_flags::kShift};
    }
    return std::nullopt;
}

// Control characters (Return's "\r", Backspace's "\b") are keys, not text, for a field.
bool isPrintable(std::string_view characters) {
    if (characters.empty()) return false;
    const auto first = static_cast<unsigned char>(characters[0]);
    return first >= 0x20 && first != 0x7F;
}

}  // namespace

Desktop::Desktop() : accessibility_([this] { return focusedField_; }), keyOutput_(*this) {}

Desktop::~Desktop() = default;

TextField& Desktop::addTextField(std::string name, std::string_view text, std::string application) {
    auto made = std::make_unique<TextField>(name, std::move(application), pasteboard_, text);
    TextField& field = *made;
    const auto existing =
        std::find_if(fields_.begin(), fields_.end(), [&](const auto& f) { return f->name() == name; });
    if (existing == fields_.end()) {
        fields_.push_back(std::move(made));
        return field;
    }
    const bool hadFocus = focusedField_ == existing->get();
    *existing = std::move(made);
    if (hadFocus) focus(field);
    return field;
}

TextField* Desktop::textField(std::string_view name) {
    const auto it = std::find_if(fields_.begin(), fields_.end(), [&](const auto& f) { return f->name() == name; });
    return it == fields_.end() ? nullptr : it->get();
}

void Desktop::removeTextField(std::string_view name) {
    const auto it = std::find_if(fields_.begin(), fields_.end(), [&](const auto& f) { return f->name() == name; });
    if (it == fields_.end()) return;
    if (focusedField_ == it->get()) clearFocus();
    fields_.erase(it);
}

TextField& Desktop::focusTextField(std::string_view initialText) {
    TextField& field = addTextField(std::string(kDefaultFieldName), initialText);
    focus(field);
    return field;
}

void Desktop::focus(TextField& field) {
    focusedField_ = &field;
    focusedApplication_ = field.application();
}

void Desktop::focusNonTextElement(std::string application) {
    focusedField_ = nullptr;
    focusedApplication_ = std::move(application);
}

void Desktop::clearFocus() {
    focusedField_ = nullptr;
    focusedApplication_.clear();
}

std::string Desktop::focusedText() const { return focusedField_ != nullptr ? focusedField_->text() : std::string(); }

std::string Desktop::charactersFor(std::uint16_t code, std::uint64_t flags) const {
    const std::uint64_t modifiers = flags & platform::key_flags::kModifierMask;
    if ((modifiers & ~platform::key_flags::kShift) != 0) return {};
    const bool shift = (modifiers & platform::key_flags::kShift) != 0;
    if (const auto current = inputSources_.currentSource()) {
        if (const auto layout = inputSources_.keyLayout(current->sourceID)) {
            const auto key = layout->find(code);
            if (key == layout->end()) return {};
            return shift ? key->second.shifted : key->second.unshifted;
        }
    }
    return usCharacters(code, shift);
}

void Desktop::type(std::string_view utf8) {
    for (const auto& grapheme : text::graphemes(utf8)) {
        std::optional<std::pair<std::uint16_t, std::uint64_t>> key;
        if (const auto current = inputSources_.currentSource()) {
            if (const auto layout = inputSources_.keyLayout(current->sourceID)) {
                for (const auto& [code, characters] : *layout) {
                    if (characters.unshifted == grapheme) {
                        key = std::pair{code, std::uint64_t{0}};
                        break;
                    }
                    if (characters.shifted == grapheme) {
                        key = std::pair{code, platform::key_flags::kShift};
                        break;
                    }
                }
            }
        }
        if (!key) key = usKeyFor(grapheme);
        if (!key) key = std::pair{std::uint16_t{0}, std::uint64_t{0}};
        if (throughTap(sim::keyDown(key->first, key->second, grapheme))) routeText(grapheme);
    }
}

void Desktop::press(std::uint16_t code, std::uint64_t flags) { routeKey(code, flags | heldModifiers_); }

void Desktop::pressKeysOf(std::string_view usKeys) {
    for (const char c : usKeys) {
        if (const auto key = usKeyFor(std::string_view(&c, 1))) press(key->first, key->second);
    }
}

void Desktop::deliverKey(std::uint16_t virtualKey, std::uint64_t flags) {
    if (latency_ <= platform::Duration::zero()) {
        routeKey(virtualKey, flags);
        return;
    }
    later([this, virtualKey, flags] { routeKey(virtualKey, flags); });
}

void Desktop::deliverText(std::string_view utf8) {
    // A Unicode key event: a dummy key carrying the text, as the tap reports it.
    auto deliver = [this](std::string_view text) {
        if (throughTap(sim::keyDown(0, 0, std::string(text)))) routeText(text);
    };
    if (latency_ <= platform::Duration::zero()) {
        deliver(utf8);
        return;
    }
    later([deliver, text = std::string(utf8)] { deliver(text); });
}

bool Desktop::throughTap(const platform::KeyEvent& keyDown) {
    const platform::EventDisposition answer = eventTap_.deliver(keyDown);
    const bool reaches = answer == platform::EventDisposition::pass || !eventTap_.isGrabbed(keyDown);
    eventTap_.deliver(sim::keyUp(keyDown.keyCode, keyDown.flags));
    return reaches;
}

void Desktop::routeKey(std::uint16_t virtualKey, std::uint64_t flags) {
    const std::string characters = charactersFor(virtualKey, flags);
    if (!throughTap(sim::keyDown(virtualKey, flags, characters))) return;
    if (focusedField_ != nullptr)
        focusedField_->pressKey(virtualKey, flags, isPrintable(characters) ? characters : std::string());
}

void Desktop::routeText(std::string_view utf8) {
    if (focusedField_ != nullptr) focusedField_->insertText(utf8);
}

void Desktop::later(platform::Task task) {
    std::erase_if(inFlight_, [](const platform::TimerHandle& timer) { return !timer.isActive(); });
    inFlight_.push_back(loop_.postAfter(latency_, std::move(task)));
}

}  // namespace orvantis::sim
