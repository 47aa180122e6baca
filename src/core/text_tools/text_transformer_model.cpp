#include "core/text_tools/text_transformer_model.h"

#include "core/text/case_mapping.h"
#include "core/text/whitespace.h"

namespace orvantis {

TransformOutcome recomputeTransform(TextTransform transform, std::string_view input, SettingsLanguage language) {
    try {
        return {applyTransform(transform, input, language), ""};
    } catch (const TransformError& error) {
        return {"", error.errorDescription()};
    }
}

std::vector<TextTransform> visibleTransforms(std::string_view search, SettingsLanguage language) {
    const std::string needle = text::lowercased(text::trimmed(search));
    std::vector<TextTransform> visible;
    for (TextTransform t : kAllTextTransforms) {
        if (needle.empty() || text::lowercased(displayName(t, language)).find(needle) != std::string::npos) {
            visible.push_back(t);
        }
    }
    return visible;
}

std::optional<std::size_t> movedSelection(std::optional<std::size_t> selected, std::size_t count, bool down) {
    if (count == 0) return std::nullopt;
    if (!selected || *selected >= count) return down ? 0 : count - 1;
    if (down) return *selected + 1 < count ? *selected + 1 : *selected;
    return *selected > 0 ? *selected - 1 : 0;
}

}  // namespace orvantis
