#include "platform/x11/xkb_registry.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include <unicode/locid.h>

#include <xkbcommon/xkbregistry.h>

namespace orvantis::x11 {
namespace {

struct ContextDeleter {
    void operator()(rxkb_context* context) const { rxkb_context_unref(context); }
};

using Key = std::pair<std::string, std::string>;

struct Entry {
    std::string name;
    std::vector<std::string> languages;
};

std::optional<std::map<Key, Entry>> readRegistry() {
    std::unique_ptr<rxkb_context, ContextDeleter> context(rxkb_context_new(RXKB_CONTEXT_NO_FLAGS));
    if (!context) return std::nullopt;
    rxkb_context_set_log_level(context.get(), RXKB_LOG_LEVEL_CRITICAL);
    if (!rxkb_context_parse_default_ruleset(context.get())) return std::nullopt;
    std::map<Key, Entry> entries;
    for (rxkb_layout* layout = rxkb_layout_first(context.get()); layout != nullptr;
         layout = rxkb_layout_next(layout)) {
        const char* name = rxkb_layout_get_name(layout);
        if (name == nullptr) continue;
        const char* variant = rxkb_layout_get_variant(layout);
        const char* description = rxkb_layout_get_description(layout);
        Entry entry{description != nullptr ? description : name, {}};
        for (rxkb_iso639_code* code = rxkb_layout_get_iso639_first(layout); code != nullptr;
             code = rxkb_iso639_code_next(code)) {
            if (const char* text = rxkb_iso639_code_get_code(code)) entry.languages.push_back(twoLetterLanguage(text));
        }
        entries.emplace(Key{name, variant != nullptr ? variant : ""}, std::move(entry));
    }
    return entries;
}

}  // namespace

std::string twoLetterLanguage(std::string_view code) {
    const std::string text(code);
    const icu::Locale locale = icu::Locale::createCanonical(text.c_str());
    const char* language = locale.getLanguage();
    return language != nullptr && *language != '\0' ? std::string(language) : text;
}

std::optional<XkbLayoutDescription> describeXkbLayout(std::string_view layout, std::string_view variant) {
    static std::mutex mutex;
    static std::optional<std::map<Key, Entry>> registry;
    static bool read = false;
    std::lock_guard lock(mutex);
    if (!read) {
        registry = readRegistry();
        read = true;
    }
    if (!registry) return std::nullopt;
    const auto it = registry->find(Key{std::string(layout), std::string(variant)});
    if (it == registry->end()) return std::nullopt;
    XkbLayoutDescription description{it->second.name, it->second.languages};
    if (description.languages.empty() && !variant.empty()) {
        if (auto base = registry->find(Key{std::string(layout), ""}); base != registry->end())
            description.languages = base->second.languages;
    }
    return description;
}

}  // namespace orvantis::x11
