#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/settings/settings_language.h"
#include "core/text_tools/text_transform.h"

// The logic of the text tools window, apart from its widgets: what a recompute shows, which
// transforms the picker's search keeps, and how its arrow keys move the selection.
namespace orvantis {

/// What the window shows after a recompute.
struct TransformOutcome {
    /// The result, or empty after a failure.
    std::string output;
    /// Empty after success, else the error's description ("Invalid input for Base64.").
    std::string status;
    bool operator==(const TransformOutcome&) const = default;
};

/// Applies `transform` to the whole input, empty or not.
TransformOutcome recomputeTransform(TextTransform transform, std::string_view input, SettingsLanguage language);

/// The transforms whose lower-cased display name in `language` contains the search text,
/// trimmed and lower-cased, in list order; all of them for an empty search.
std::vector<TextTransform> visibleTransforms(std::string_view search, SettingsLanguage language);

/// The picker's selection after Down (`down`) or Up in a list of `count` rows: one row on,
/// stopping at the ends; with nothing selected Down selects the first row and Up the last.
/// Nullopt for an empty list.
std::optional<std::size_t> movedSelection(std::optional<std::size_t> selected, std::size_t count, bool down);

}  // namespace orvantis
