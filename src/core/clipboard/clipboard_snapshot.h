#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clipboard/clipboard_item.h"

namespace orvantis {

/// The content of the clipboard snapshot file: the text entries of both lists, in order.
///
/// The file is one compact UTF-8 JSON object on one line. Orvantis on every platform writes it
/// byte for byte alike (the same file travels through the sync folder):
///
///     {"pinned":[…],"unpinned":[{"id":"E621E1F8-…","timestamp":815616000.25,"text":"…",
///      "isPinned":false,"sourceBundleID":"org.gnome.Terminal"}]}
///
/// Keys in that order, `sourceBundleID` left out when absent; strings escape `"`, `\`, `/` and
/// the control characters (\b \f \n \r \t, others as \u00xx), everything else raw UTF-8;
/// numbers in the shortest form that reads back to the same double, without a trailing ".0",
/// in exponent form below 0.0001 and above 2^54 (815616000, 815616000.25, 1e-05, 1e+17).
/// Key order is not significant when reading.
struct ClipboardSnapshot {
    std::vector<PersistedClipboardItem> pinned;
    std::vector<PersistedClipboardItem> unpinned;
    bool operator==(const ClipboardSnapshot&) const = default;
};

/// The file's bytes, or nullopt when a value has no JSON form (a timestamp that is not a
/// finite number); then `error`, when given, says why.
std::optional<std::string> encodeSnapshot(const ClipboardSnapshot& snapshot, std::string* error = nullptr);

/// Reads a snapshot. Any fault fails the whole file: bytes that are no JSON, a missing key, a
/// value of the wrong type, an id that is no UUID, a timestamp out of the range of a double.
/// Unknown keys are ignored; `sourceBundleID` may be absent or null. On failure `error`, when
/// given, describes the fault by its place (never by the content of the file).
std::optional<ClipboardSnapshot> decodeSnapshot(std::string_view bytes, std::string* error = nullptr);

/// A double as the snapshot writes it; nullopt for infinities and NaN.
std::optional<std::string> formatJsonNumber(double value);

}  // namespace orvantis
