#include "platform/x11/xkb_key_layout.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "core/text/utf.h"
#include "platform/x11/key_positions.h"

#include <xkbcommon/xkbcommon.h>

namespace orvantis::x11 {

namespace {

struct ContextDeleter {
    void operator()(xkb_context* c) const { xkb_context_unref(c); }
};
struct KeymapDeleter {
    void operator()(xkb_keymap* k) const { xkb_keymap_unref(k); }
};
struct StateDeleter {
    void operator()(xkb_state* s) const { xkb_state_unref(s); }
};

std::string typed(xkb_state* state, xkb_keycode_t keycode) {
    const std::uint32_t codePoint = xkb_state_key_get_utf32(state, keycode);
    return codePoint == 0 ? std::string() : text::encodeUtf8(static_cast<char32_t>(codePoint));
}

std::optional<platform::KeyLayout> compileKeyLayout(const std::string& layout,
                                                    const std::string& variant) {
    // The environment's XKB_DEFAULT_* must not change what a test sees.
    std::unique_ptr<xkb_context, ContextDeleter> context(
        xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES));
    if (!context) return std::nullopt;
    // An unknown layout is an answer here (nullopt), not something to print.
    xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    const xkb_rule_names names{"evdev", "pc105", layout.c_str(), variant.c_str(), ""};
    std::unique_ptr<xkb_keymap, KeymapDeleter> keymap(
        xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) return std::nullopt;
    // An unknown layout may compile to an empty group instead of failing.
    if (xkb_keymap_num_layouts(keymap.get()) < 1) return std::nullopt;

    std::unique_ptr<xkb_state, StateDeleter> plain(xkb_state_new(keymap.get()));
    std::unique_ptr<xkb_state, StateDeleter> shifted(xkb_state_new(keymap.get()));
    if (!plain || !shifted) return std::nullopt;
    const xkb_mod_index_t shift = xkb_keymap_mod_get_index(keymap.get(), XKB_MOD_NAME_SHIFT);
    if (shift == XKB_MOD_INVALID) return std::nullopt;
    xkb_state_update_mask(shifted.get(), xkb_mod_mask_t{1} << shift, 0, 0, 0, 0, 0);

    platform::KeyLayout keys;
    for (const auto& position : x11::kKeyPositions) {
        platform::KeyCharacters characters{typed(plain.get(), position.xKeycode),
                                           typed(shifted.get(), position.xKeycode)};
        if (characters.unshifted.empty() && characters.shifted.empty()) continue;
        keys.emplace(position.virtualKey, std::move(characters));
    }
    if (keys.empty()) return std::nullopt;
    return keys;
}

}  // namespace

std::optional<platform::KeyLayout> xkbKeyLayout(std::string_view layout, std::string_view variant) {
    static std::mutex mutex;
    static std::map<std::pair<std::string, std::string>, std::optional<platform::KeyLayout>> cache;
    std::lock_guard lock(mutex);
    auto key = std::make_pair(std::string(layout), std::string(variant));
    auto it = cache.find(key);
    if (it == cache.end()) {
        auto compiled = compileKeyLayout(key.first, key.second);
        it = cache.emplace(std::move(key), std::move(compiled)).first;
    }
    return it->second;
}

}  // namespace orvantis::x11
