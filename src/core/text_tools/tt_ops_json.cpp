#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/text/whitespace.h"
#include "core/text_tools/text_transform.h"
#include "core/text_tools/tt_ops.h"

namespace orvantis::TTOps {
namespace {

enum class Layout { pretty, compact };

void appendString(std::string& out, const std::string& value) {
    out.push_back('"');
    // Runs of characters that stay as they are go in at once.
    std::size_t run = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c != '"' && c != '\\' && static_cast<unsigned char>(c) >= 0x20) continue;
        out.append(value, run, i - run);
        run = i + 1;
        switch (c) {
        case '"': out.append("\\\""); break;
        case '\\': out.append("\\\\"); break;
        case '\b': out.append("\\b"); break;
        case '\f': out.append("\\f"); break;
        case '\n': out.append("\\n"); break;
        case '\r': out.append("\\r"); break;
        case '\t': out.append("\\t"); break;
        default: {  // the other controls
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(c));
            out.append(buffer);
        }
        }
    }
    out.append(value, run, value.size() - run);  // slashes and non-ASCII letters stay as they are
    out.push_back('"');
}

template <typename Json>
void appendScalar(std::string& out, const Json& value) {
    if (value.is_string()) {
        appendString(out, value.template get_ref<const std::string&>());
    } else if (value.is_number_float()) {
        const double d = value.template get<double>();
        // A number with nothing after the point is written as an integer, as "1.0" reads
        // back the same as 1.
        if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 1e15) {
            // Negative zero too is written "0": it reads back as the integer zero.
            char buffer[32];
            std::snprintf(buffer, sizeof buffer, "%.0f", d == 0 ? 0.0 : d);
            out.append(buffer);
        } else {
            out.append(value.dump());
        }
    } else {
        out.append(value.dump());  // numbers, true, false, null
    }
}

/// Writes `root` without recursion, so that nesting of any depth fits the stack. Pretty output
/// has two blanks per level, one member a line and `"key" : value`; an empty container
/// keeps its two line breaks, as the platform's serialiser writes it.
template <typename Json>
std::string serialise(const Json& root, Layout layout) {
    const bool pretty = layout == Layout::pretty;
    struct Frame {
        const Json* node;
        typename Json::const_iterator next;
        bool first;
    };
    std::string out;
    std::vector<Frame> stack;
    auto newline = [&](std::size_t depth) {
        out.push_back('\n');
        out.append(depth * 2, ' ');
    };
    auto open = [&](const Json& value) {
        if (value.is_object() || value.is_array()) {
            out.push_back(value.is_object() ? '{' : '[');
            if (pretty) out.push_back('\n');
            stack.push_back({&value, value.cbegin(), true});
        } else {
            appendScalar(out, value);
        }
    };
    open(root);
    while (!stack.empty()) {
        Frame& frame = stack.back();
        const std::size_t depth = stack.size();
        if (frame.next == frame.node->cend()) {
            const bool object = frame.node->is_object();
            stack.pop_back();
            if (pretty) newline(depth - 1);
            out.push_back(object ? '}' : ']');
            continue;
        }
        if (!frame.first) {
            out.push_back(',');
            if (pretty) out.push_back('\n');
        }
        frame.first = false;
        if (pretty) out.append(depth * 2, ' ');
        const auto it = frame.next++;
        if (frame.node->is_object()) {
            appendString(out, it.key());
            out.append(pretty ? " : " : ":");
        }
        open(*it);  // may grow the stack: `frame` is not used after this
    }
    return out;
}

/// Deeper nesting is refused as invalid JSON, as the platform's parser refuses it: the pretty
/// form of a document nested a hundred thousand levels deep would take gigabytes of blanks.
constexpr std::size_t kMaxNesting = 512;

/// The deepest nesting of arrays and objects in `text`, counted outside strings; the text
/// need not be valid JSON.
std::size_t nestingDepth(std::string_view text) {
    std::size_t depth = 0;
    std::size_t deepest = 0;
    bool inString = false;
    bool escaped = false;
    for (char c : text) {
        if (inString) {
            if (escaped) escaped = false;
            else if (c == '\\') escaped = true;
            else if (c == '"') inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

template <typename Json>
std::string reformat(std::string_view text, Layout layout) {
    const std::string_view trimmed = text::trimmed(text);
    if (nestingDepth(trimmed) > kMaxNesting) throw TransformError("JSON");
    Json value = Json::parse(trimmed.begin(), trimmed.end(), nullptr, /*allow_exceptions=*/false);
    if (value.is_discarded()) throw TransformError("JSON");
    return serialise(value, layout);
}

}  // namespace

std::string runJsonPretty(std::string_view text) { return reformat<nlohmann::json>(text, Layout::pretty); }

std::string runJsonMinify(std::string_view text) { return reformat<nlohmann::ordered_json>(text, Layout::compact); }

}  // namespace orvantis::TTOps
