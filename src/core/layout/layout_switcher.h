#pragma once

#include <optional>
#include <vector>

#include "platform/input_sources.h"

namespace orvantis {

/// What the switch coordinator needs of the keyboard input sources. Its logic knows the
/// sources only through this, so it can run against a list held in memory. Main thread only.
class LayoutSwitcherProtocol {
public:
    virtual ~LayoutSwitcherProtocol() = default;
    /// The source now in use, or nullopt when the desktop can't tell or can't name it.
    virtual std::optional<platform::InputSourceDescriptor> currentSource() const = 0;
    /// The next enabled source after `current` in the desktop's order, in rotation, whatever
    /// its language; the first listed source unlike `current` when `current` is not listed
    /// (identifier and name both count). Nullopt with fewer than two enabled sources.
    virtual std::optional<platform::InputSourceDescriptor> oppositeSource(
        const platform::InputSourceDescriptor& current) const = 0;
    /// Makes the source with the identifier of `source` current. A source that can't be found
    /// or a refusal of the desktop leaves everything as it was and is not reported.
    virtual void select(const platform::InputSourceDescriptor& source) = 0;
};

/// Lists, names and selects the desktop's keyboard input sources for the switch coordinator.
/// A source counts only when the desktop gives both its identifier and its name. Keeps no
/// state: every call asks the desktop afresh. Does not own the input sources. Main thread only.
class LayoutSwitcher final : public LayoutSwitcherProtocol {
public:
    explicit LayoutSwitcher(platform::InputSources& sources) : sources_(sources) {}

    std::optional<platform::InputSourceDescriptor> currentSource() const override;
    std::optional<platform::InputSourceDescriptor> oppositeSource(
        const platform::InputSourceDescriptor& current) const override;
    void select(const platform::InputSourceDescriptor& source) override;

    /// The enabled keyboard sources in the desktop's order, leaving out those without an
    /// identifier or a name; empty when the list can't be had.
    std::vector<platform::InputSourceDescriptor> enabledSources() const;

    /// True when the desktop gave both the identifier and the name of the source.
    static bool isDescribed(const platform::InputSourceDescriptor& source);

private:
    platform::InputSources& sources_;
};

}  // namespace orvantis
