#include "core/settings/property_list_value.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

namespace orvantis {

std::optional<PreferenceValue> preferenceValueFromNode(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t v = 0;
            plist_get_bool_val(node, &v);
            return PreferenceValue(v != 0);
        }
        case PLIST_UINT: {
            std::uint64_t v = 0;
            plist_get_uint_val(node, &v);
            return PreferenceValue(static_cast<std::int64_t>(v));
        }
        case PLIST_REAL: {
            double v = 0;
            plist_get_real_val(node, &v);
            return PreferenceValue(v);
        }
        case PLIST_STRING: {
            char* s = nullptr;
            plist_get_string_val(node, &s);
            std::string value = s != nullptr ? s : "";
            std::free(s);
            return PreferenceValue(std::move(value));
        }
        case PLIST_DATA: {
            char* d = nullptr;
            std::uint64_t length = 0;
            plist_get_data_val(node, &d, &length);
            PreferenceData data{d != nullptr ? std::string(d, static_cast<std::size_t>(length)) : std::string()};
            std::free(d);
            return PreferenceValue(std::move(data));
        }
        case PLIST_ARRAY: {
            std::vector<std::string> items;
            const std::uint32_t count = plist_array_get_size(node);
            for (std::uint32_t i = 0; i < count; ++i) {
                plist_t item = plist_array_get_item(node, i);
                if (plist_get_node_type(item) != PLIST_STRING) return std::nullopt;
                char* s = nullptr;
                plist_get_string_val(item, &s);
                items.emplace_back(s != nullptr ? s : "");
                std::free(s);
            }
            return PreferenceValue(std::move(items));
        }
        default:
            return std::nullopt;
    }
}

plist_t nodeFromPreferenceValue(const PreferenceValue& value) {
    return std::visit(
        [](const auto& v) -> plist_t {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) {
                return plist_new_bool(v ? 1 : 0);
            } else if constexpr (std::is_same_v<T, std::int64_t>) {
                return plist_new_uint(static_cast<std::uint64_t>(v));
            } else if constexpr (std::is_same_v<T, double>) {
                return plist_new_real(v);
            } else if constexpr (std::is_same_v<T, std::string>) {
                return plist_new_string(v.c_str());
            } else if constexpr (std::is_same_v<T, std::vector<std::string>>) {
                plist_t array = plist_new_array();
                for (const auto& item : v) plist_array_append_item(array, plist_new_string(item.c_str()));
                return array;
            } else {
                return plist_new_data(v.bytes.data(), v.bytes.size());
            }
        },
        value);
}

}  // namespace orvantis
