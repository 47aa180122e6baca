#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/input_sources.h"

namespace orvantis::x11 {

/// The XKB configuration of the session as the root window's `_XKB_RULES_NAMES` gives it.
struct XkbRulesNames {
    std::string rules;
    std::string model;
    std::vector<std::string> layouts;   ///< "us", "ru": one per group
    std::vector<std::string> variants;  ///< one per layout, empty for the basic one
    std::string options;
};

/// Reads the property's bytes: NUL-separated rules, model, layouts, variants and options.
/// Nullopt when no layout is named.
std::optional<XkbRulesNames> parseXkbRulesNames(std::string_view bytes);

/// The source ID of a layout: "xkb:us", or "xkb:ru(phonetic)" with a variant.
std::string xkbSourceID(std::string_view layout, std::string_view variant);
/// The layout and variant of a source ID, or nullopt when it is no XKB source ID.
std::optional<std::pair<std::string, std::string>> parseXkbSourceID(std::string_view sourceID);

/// The keyboard input sources of an X session: one per XKB group, named and given languages
/// by the XKB registry; selecting one locks its group. Every answer reads the server's state
/// at the time of the call. Holds a display connection of its own. Main thread only.
class XkbInputSources final : public platform::InputSources {
public:
    /// Connects to `displayName` ($DISPLAY when null). Null when there is no display or it has
    /// no XKB extension.
    static std::unique_ptr<XkbInputSources> open(const char* displayName = nullptr);
    ~XkbInputSources() override;
    XkbInputSources(const XkbInputSources&) = delete;
    XkbInputSources& operator=(const XkbInputSources&) = delete;

    std::vector<platform::InputSourceDescriptor> enabledSources() const override;
    std::optional<platform::InputSourceDescriptor> currentSource() const override;
    bool select(std::string_view sourceID) override;
    std::optional<platform::KeyLayout> keyLayout(std::string_view sourceID) const override;

private:
    struct Connection;
    explicit XkbInputSources(std::unique_ptr<Connection> connection);
    std::optional<XkbRulesNames> rulesNames() const;

    std::unique_ptr<Connection> connection_;
};

}  // namespace orvantis::x11
