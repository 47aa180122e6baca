#include "core/layout/layout_switcher.h"

#include <algorithm>
#include <iterator>

namespace orvantis {

bool LayoutSwitcher::isDescribed(const platform::InputSourceDescriptor& source) {
    return !source.sourceID.empty() && !source.localizedName.empty();
}

std::optional<platform::InputSourceDescriptor> LayoutSwitcher::currentSource() const {
    auto current = sources_.currentSource();
    if (!current || !isDescribed(*current)) return std::nullopt;
    return current;
}

std::vector<platform::InputSourceDescriptor> LayoutSwitcher::enabledSources() const {
    auto sources = sources_.enabledSources();
    std::erase_if(sources, [](const auto& s) { return !isDescribed(s); });
    return sources;
}

std::optional<platform::InputSourceDescriptor> LayoutSwitcher::oppositeSource(
    const platform::InputSourceDescriptor& current) const {
    auto sources = enabledSources();
    if (sources.size() < 2) return std::nullopt;
    const auto it = std::find(sources.begin(), sources.end(), current);
    if (it != sources.end()) {
        const auto index = static_cast<std::size_t>(std::distance(sources.begin(), it));
        return sources[(index + 1) % sources.size()];
    }
    for (auto& source : sources) {
        if (!(source == current)) return std::move(source);
    }
    return std::nullopt;
}

void LayoutSwitcher::select(const platform::InputSourceDescriptor& source) {
    for (const auto& candidate : sources_.enabledSources()) {
        if (isDescribed(candidate) && candidate.sourceID == source.sourceID) {
            // The desktop's answer is not looked at: a refused change leaves the source as it
            // was, and the coordinator has nothing better to do about it.
            (void)sources_.select(candidate.sourceID);
            return;
        }
    }
}

}  // namespace orvantis
