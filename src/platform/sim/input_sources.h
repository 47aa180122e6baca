#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/input_sources.h"

namespace orvantis::sim {

/// Simulated keyboard input sources: an ordered list held in memory, a current one, and key
/// tables that are either given by the test or read from the system's XKB data through
/// libxkbcommon, so that tests see what the real layouts type. Failures of the desktop (no
/// list, no current source, a refused selection) can be switched on. Main thread only.
class InputSources final : public platform::InputSources {
public:
    /// One enabled source: its descriptor as the desktop gives it (fields may be empty) and
    /// its key table (none for an input method).
    struct Source {
        platform::InputSourceDescriptor descriptor;
        std::optional<platform::KeyLayout> keys;
    };

    // platform::InputSources
    std::vector<platform::InputSourceDescriptor> enabledSources() const override;
    std::optional<platform::InputSourceDescriptor> currentSource() const override;
    /// Makes the first listed source with that identifier current and records the call.
    bool select(std::string_view sourceID) override;
    std::optional<platform::KeyLayout> keyLayout(std::string_view sourceID) const override;

    /// Appends a source to the enabled list. The first source added becomes current.
    void add(platform::InputSourceDescriptor descriptor, std::optional<platform::KeyLayout> keys);
    /// Appends the XKB layout `layout` with `variant` (empty for the basic one) under the
    /// identifier "layout" or "layout(variant)". False, with nothing added, when XKB has no
    /// such layout.
    bool addXkb(std::string_view layout, std::string_view variant, std::string localizedName,
                std::vector<std::string> languages);
    /// Removes every source with that identifier.
    void remove(std::string_view sourceID);

    /// Which source is current, by identifier; nullopt: the desktop can't tell. An identifier
    /// that is not listed also leaves the desktop without a current source.
    void setCurrent(std::optional<std::string> sourceID) { current_ = std::move(sourceID); }
    /// False: the list can't be had, so it comes back empty.
    void setListAvailable(bool available) { listAvailable_ = available; }
    /// True: every selection is refused and answered false.
    void setRefuseSelection(bool refuse) { refuseSelection_ = refuse; }

    /// Identifiers of the sources made current through select(), oldest first.
    const std::vector<std::string>& selections() const { return selections_; }
    /// Every call of select(), successful or not.
    int selectCalls() const { return selectCalls_; }

    /// What each key of the typing block types in the XKB layout (rules "evdev", model
    /// "pc105") at the first and second shift level, by virtual key code; nullopt when XKB
    /// can't compile the layout. Compiled once per layout and variant, then kept.
    static std::optional<platform::KeyLayout> xkbKeyLayout(std::string_view layout,
                                                           std::string_view variant = {});

private:
    const Source* find(std::string_view sourceID) const;

    std::vector<Source> sources_;
    std::optional<std::string> current_;
    bool listAvailable_ = true;
    bool refuseSelection_ = false;
    std::vector<std::string> selections_;
    int selectCalls_ = 0;
};

}  // namespace orvantis::sim
