#include "platform/sim/desktop.h"

#include <algorithm>
#include <array>
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

// The printable keys of a US keyboard, by virtual key code. Until the desktop simulates
// input sources and their layouts, every key press produces these characters.
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

// What a key press types: nothing with Command, Control or Option held, or for a key that
// prints nothing.
std::string charactersFor(std::uint16_t code, std::uint64_t flags) {
    const std::uint64_t modifiers = flags & platform::key_flags::kModifierMask;
    if ((modifiers & ~platform::key_flags::kShift) != 0) return {};
    const auto key = std::find_if(kUsKeys.begin(), kUsKeys.end(), [code](const PrintableKey& k) { return k.code == code; });
    if (key == kUsKeys.end()) return {};
    return std::string(1, (modifiers & platform::key_flags::kShift) != 0 ? key->shifted : key->plain);
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

void Desktop::type(std::string_view utf8) {
    for (const auto& grapheme : text::graphemes(utf8)) routeText(grapheme);
}

void Desktop::press(std::uint16_t code, std::uint64_t flags) { routeKey(code, flags | heldModifiers_); }

void Desktop::deliverKey(std::uint16_t virtualKey, std::uint64_t flags) {
    if (latency_ <= platform::Duration::zero()) {
        routeKey(virtualKey, flags);
        return;
    }
    later([this, virtualKey, flags] { routeKey(virtualKey, flags); });
}

void Desktop::deliverText(std::string_view utf8) {
    if (latency_ <= platform::Duration::zero()) {
        routeText(utf8);
        return;
    }
    later([this, text = std::string(utf8)] { routeText(text); });
}

void Desktop::routeKey(std::uint16_t virtualKey, std::uint64_t flags) {
    if (focusedField_ != nullptr) focusedField_->pressKey(virtualKey, flags, charactersFor(virtualKey, flags));
}

void Desktop::routeText(std::string_view utf8) {
    if (focusedField_ != nullptr) focusedField_->insertText(utf8);
}

void Desktop::later(platform::Task task) {
    std::erase_if(inFlight_, [](const platform::TimerHandle& timer) { return !timer.isActive(); });
    inFlight_.push_back(loop_.postAfter(latency_, std::move(task)));
}

}  // namespace orvantis::sim
