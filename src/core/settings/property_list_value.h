#pragma once

#include <optional>

#include <plist/plist.h>

#include "core/settings/preference_store.h"

namespace orvantis {

/// A property-list node as a value of the preference store: booleans, integers, reals,
/// strings, data, and arrays whose every element is a string. Nullopt for any other node
/// (dictionaries, dates, mixed arrays). The node stays the caller's.
std::optional<PreferenceValue> preferenceValueFromNode(plist_t node);

/// A new node for `value`, owned by the caller (or by the container it is put into).
plist_t nodeFromPreferenceValue(const PreferenceValue& value);

}  // namespace orvantis
