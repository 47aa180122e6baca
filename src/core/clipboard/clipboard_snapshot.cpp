#include "core/clipboard/clipboard_snapshot.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include <nlohmann/json.hpp>

#include "core/text/utf.h"

namespace orvantis {
namespace {

using Json = nlohmann::json;

bool needsEscape(unsigned char c) { return c < 0x20 || c == '"' || c == '\\' || c == '/'; }

void appendEscaped(std::string& out, std::string_view text) {
    static constexpr char kHex[] = "0123456789abcdef";
    out.push_back('"');
    std::size_t run = 0;  // start of the bytes that go out as they are
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (!needsEscape(c)) continue;
        out.append(text.data() + run, i - run);
        run = i + 1;
        switch (c) {
        case '"': out.append("\\\""); break;
        case '\\': out.append("\\\\"); break;
        case '/': out.append("\\/"); break;
        case '\b': out.append("\\b"); break;
        case '\f': out.append("\\f"); break;
        case '\n': out.append("\\n"); break;
        case '\r': out.append("\\r"); break;
        case '\t': out.append("\\t"); break;
        default:
            out.append("\\u00");
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 0x0F]);
        }
    }
    out.append(text.data() + run, text.size() - run);
    out.push_back('"');
}

void appendString(std::string& out, std::string_view text) {
    // Records are made from well-formed text; anything else is repaired rather than written
    // as bytes no reader accepts.
    if (text::isValidUtf8(text)) {
        appendEscaped(out, text);
    } else {
        appendEscaped(out, text::repairUtf8(text));
    }
}

bool appendItems(std::string& out, const std::vector<PersistedClipboardItem>& items, std::string* error) {
    out.push_back('[');
    bool first = true;
    for (const PersistedClipboardItem& item : items) {
        const auto timestamp = formatJsonNumber(item.timestamp);
        if (!timestamp) {
            if (error != nullptr) *error = "a timestamp is not a finite number";
            return false;
        }
        if (!first) out.push_back(',');
        first = false;
        out.append("{\"id\":");
        appendString(out, item.id.toString());
        out.append(",\"timestamp\":");
        out.append(*timestamp);
        out.append(",\"text\":");
        appendString(out, item.text);
        out.append(",\"isPinned\":");
        out.append(item.isPinned ? "true" : "false");
        if (item.sourceBundleID) {
            out.append(",\"sourceBundleID\":");
            appendString(out, *item.sourceBundleID);
        }
        out.push_back('}');
    }
    out.push_back(']');
    return true;
}

/// A fault found while reading, described by where it is.
struct DecodeFault {
    std::string description;
};

std::string place(std::string_view list, std::size_t index, std::string_view key = {}) {
    std::string out(list);
    out += "[" + std::to_string(index) + "]";
    if (!key.empty()) out += "." + std::string(key);
    return out;
}

const Json& member(const Json& object, const char* key, const std::string& where) {
    const auto it = object.find(key);
    if (it == object.end()) throw DecodeFault{where + ": the key \"" + key + "\" is missing"};
    return *it;
}

PersistedClipboardItem decodeItem(const Json& value, std::string_view list, std::size_t index) {
    if (!value.is_object()) throw DecodeFault{place(list, index) + " is not an object"};
    const std::string where = place(list, index);
    PersistedClipboardItem item;

    const Json& id = member(value, "id", where);
    if (!id.is_string()) throw DecodeFault{place(list, index, "id") + " is not a string"};
    const auto uuid = Uuid::parse(id.get_ref<const std::string&>());
    if (!uuid) throw DecodeFault{place(list, index, "id") + " is not a valid UUID"};
    item.id = *uuid;

    const Json& timestamp = member(value, "timestamp", where);
    if (!timestamp.is_number()) throw DecodeFault{place(list, index, "timestamp") + " is not a number"};
    item.timestamp = timestamp.get<double>();
    if (!std::isfinite(item.timestamp))
        throw DecodeFault{place(list, index, "timestamp") + " is not representable as a double"};

    const Json& text = member(value, "text", where);
    if (!text.is_string()) throw DecodeFault{place(list, index, "text") + " is not a string"};
    item.text = text.get<std::string>();

    const Json& pinned = member(value, "isPinned", where);
    if (!pinned.is_boolean()) throw DecodeFault{place(list, index, "isPinned") + " is not a boolean"};
    item.isPinned = pinned.get<bool>();

    if (const auto it = value.find("sourceBundleID"); it != value.end() && !it->is_null()) {
        if (!it->is_string()) throw DecodeFault{place(list, index, "sourceBundleID") + " is not a string"};
        item.sourceBundleID = it->get<std::string>();
    }
    return item;
}

std::vector<PersistedClipboardItem> decodeList(const Json& root, const char* key) {
    const Json& list = member(root, key, "the snapshot");
    if (!list.is_array()) throw DecodeFault{std::string(key) + " is not an array"};
    std::vector<PersistedClipboardItem> items;
    items.reserve(list.size());
    for (std::size_t i = 0; i < list.size(); ++i) items.push_back(decodeItem(list[i], key, i));
    return items;
}

}  // namespace

std::optional<std::string> formatJsonNumber(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    if (value == 0) return std::signbit(value) ? std::string("-0") : std::string("0");

    // The shortest digits that read back to `value`, as d.ddde±x.
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
    const std::string_view scientific(buffer, static_cast<std::size_t>(result.ptr - buffer));
    const std::size_t e = scientific.find('e');
    std::string digits;
    bool negative = false;
    for (const char c : scientific.substr(0, e)) {
        if (c == '-') negative = true;
        if (c >= '0' && c <= '9') digits.push_back(c);
    }
    const int exponent = std::atoi(std::string(scientific.substr(e + 1)).c_str());
    // value = 0.digits × 10^decimalExponent
    const int decimalExponent = exponent + 1;

    std::string out = negative ? "-" : "";
    if (decimalExponent < -3 || std::fabs(value) > 0x1.0p54) {
        // Exponential form: "1e-05", "1.5e+20".
        out.push_back(digits[0]);
        if (digits.size() > 1) {
            out.push_back('.');
            out.append(digits, 1);
        }
        out.push_back('e');
        out.push_back(exponent < 0 ? '-' : '+');
        const int magnitude = std::abs(exponent);
        if (magnitude < 10) out.push_back('0');
        out.append(std::to_string(magnitude));
        return out;
    }
    const auto count = static_cast<int>(digits.size());
    if (decimalExponent <= 0) {
        out.append("0.");
        out.append(static_cast<std::size_t>(-decimalExponent), '0');
        out.append(digits);
    } else if (count <= decimalExponent) {
        // A whole number: the writer drops the ".0" a decimal form would end in.
        out.append(digits);
        out.append(static_cast<std::size_t>(decimalExponent - count), '0');
    } else {
        out.append(digits, 0, static_cast<std::size_t>(decimalExponent));
        out.push_back('.');
        out.append(digits, static_cast<std::size_t>(decimalExponent));
    }
    return out;
}

std::optional<std::string> encodeSnapshot(const ClipboardSnapshot& snapshot, std::string* error) {
    std::string out;
    std::size_t reserve = 32;
    for (const auto* list : {&snapshot.pinned, &snapshot.unpinned})
        for (const auto& item : *list) reserve += item.text.size() + 128;
    out.reserve(reserve);
    out.append("{\"pinned\":");
    if (!appendItems(out, snapshot.pinned, error)) return std::nullopt;
    out.append(",\"unpinned\":");
    if (!appendItems(out, snapshot.unpinned, error)) return std::nullopt;
    out.push_back('}');
    return out;
}

std::optional<ClipboardSnapshot> decodeSnapshot(std::string_view bytes, std::string* error) {
    Json root;
    try {
        root = Json::parse(bytes.begin(), bytes.end());
    } catch (const Json::parse_error& e) {
        // The parser's own message quotes the bytes it stopped at: only the place is kept.
        if (error != nullptr) *error = "the data is not valid JSON (at byte " + std::to_string(e.byte) + ")";
        return std::nullopt;
    } catch (const std::exception&) {
        if (error != nullptr) *error = "the data could not be read";
        return std::nullopt;
    }
    try {
        if (!root.is_object()) throw DecodeFault{"the snapshot is not a JSON object"};
        ClipboardSnapshot snapshot;
        snapshot.pinned = decodeList(root, "pinned");
        snapshot.unpinned = decodeList(root, "unpinned");
        return snapshot;
    } catch (const DecodeFault& fault) {
        if (error != nullptr) *error = "the data is not in the correct format: " + fault.description;
        return std::nullopt;
    }
}

}  // namespace orvantis
