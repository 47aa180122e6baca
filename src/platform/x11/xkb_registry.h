#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis::x11 {

/// How the system's XKB registry describes one layout.
struct XkbLayoutDescription {
    std::string name;                    ///< "Russian (phonetic)"
    std::vector<std::string> languages;  ///< two-letter codes where one exists ("ru"), primary first
};

/// Looks up `layout` with `variant` (empty for the basic one) in the system's XKB registry
/// (the evdev rules' description files). A variant without languages of its own inherits its
/// layout's. Nullopt when the registry cannot be read or does not list the layout. The registry
/// is parsed once and kept; thread-safe.
std::optional<XkbLayoutDescription> describeXkbLayout(std::string_view layout, std::string_view variant);

/// A language code as two letters where ISO 639-1 has one ("rus" gives "ru"), else as given.
std::string twoLetterLanguage(std::string_view code);

}  // namespace orvantis::x11
