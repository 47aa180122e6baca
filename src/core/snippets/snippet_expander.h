#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clipboard/uuid.h"

namespace orvantis {

class PreferenceStore;

/// One snippet: a token and the text that replaces it.
struct SnippetEntry {
    Uuid id;                ///< identity for the settings table; JSON: upper-case canonical form
    std::string shortcut;   ///< the token, compared exactly
    std::string expansion;  ///< the replacement; may hold several lines
    bool operator==(const SnippetEntry&) const = default;
};

/// The snippet list and its look-up. The list lives in the settings store as one data value,
/// the UTF-8 JSON array of the entries in list order (`id`, `shortcut`, `expansion`, all
/// required). Nothing is cached: every read decodes the stored value anew, so an edit in the
/// settings or a synced value counts at the next hotkey. Borrows the store. Main thread only.
class SnippetExpander {
public:
    static constexpr std::string_view kKey = "MOLVEX.Orvantis.snippetExpanderEntries";

    explicit SnippetExpander(PreferenceStore& store) : store_(store) {}

    /// The stored entries; empty, silently, when nothing is stored or the value does not
    /// decode (not JSON, not an array, a key missing or of the wrong type in any entry).
    std::vector<SnippetEntry> entries() const;
    /// Stores `entries`, replacing the list.
    void setEntries(const std::vector<SnippetEntry>& entries);

    /// The first entry whose shortcut equals `token` (exactly, case-sensitively, up to Unicode
    /// canonical equivalence, with no trimming); nothing for an empty token.
    std::optional<SnippetEntry> match(std::string_view token) const;

    /// The JSON form of a list, compact, in the stored key order.
    static std::string encode(const std::vector<SnippetEntry>& entries);
    /// The list a JSON form holds, or nullopt when it does not decode.
    static std::optional<std::vector<SnippetEntry>> decode(std::string_view json);

private:
    PreferenceStore& store_;
};

}  // namespace orvantis
