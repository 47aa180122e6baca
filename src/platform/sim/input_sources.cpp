#include "platform/sim/input_sources.h"

#include <utility>

#include "platform/x11/xkb_key_layout.h"

namespace orvantis::sim {

std::optional<platform::KeyLayout> InputSources::xkbKeyLayout(std::string_view layout,
                                                              std::string_view variant) {
    return x11::xkbKeyLayout(layout, variant);
}

const InputSources::Source* InputSources::find(std::string_view sourceID) const {
    for (const auto& source : sources_)
        if (source.descriptor.sourceID == sourceID) return &source;
    return nullptr;
}

std::vector<platform::InputSourceDescriptor> InputSources::enabledSources() const {
    std::vector<platform::InputSourceDescriptor> result;
    if (!listAvailable_) return result;
    result.reserve(sources_.size());
    for (const auto& source : sources_) result.push_back(source.descriptor);
    return result;
}

std::optional<platform::InputSourceDescriptor> InputSources::currentSource() const {
    if (!current_) return std::nullopt;
    if (const Source* source = find(*current_)) return source->descriptor;
    return std::nullopt;
}

bool InputSources::select(std::string_view sourceID) {
    ++selectCalls_;
    if (refuseSelection_ || !find(sourceID)) return false;
    current_ = std::string(sourceID);
    selections_.emplace_back(sourceID);
    return true;
}

std::optional<platform::KeyLayout> InputSources::keyLayout(std::string_view sourceID) const {
    if (const Source* source = find(sourceID)) return source->keys;
    return std::nullopt;
}

void InputSources::add(platform::InputSourceDescriptor descriptor,
                       std::optional<platform::KeyLayout> keys) {
    if (sources_.empty() && !current_) current_ = descriptor.sourceID;
    sources_.push_back({std::move(descriptor), std::move(keys)});
}

bool InputSources::addXkb(std::string_view layout, std::string_view variant,
                          std::string localizedName, std::vector<std::string> languages) {
    auto keys = xkbKeyLayout(layout, variant);
    if (!keys) return false;
    std::string id(layout);
    if (!variant.empty()) id += "(" + std::string(variant) + ")";
    add({std::move(id), std::move(localizedName), std::move(languages)}, std::move(keys));
    return true;
}

void InputSources::remove(std::string_view sourceID) {
    std::erase_if(sources_, [&](const Source& s) { return s.descriptor.sourceID == sourceID; });
}

}  // namespace orvantis::sim
