#include "platform/pasteboard_types.h"

#include <algorithm>
#include <array>

namespace orvantis::platform {
namespace {

namespace type = pasteboard_type;

struct Mapping {
    std::string_view type;
    std::array<std::string_view, 3> mimes;  // the preferred first; empty entries unused
};

constexpr std::array<Mapping, 7> kMappings{{
    {type::kText, {"text/plain;charset=utf-8", "UTF8_STRING", "text/plain"}},
    {type::kFileURL, {"text/uri-list", "", ""}},
    {type::kPNG, {"image/png", "", ""}},
    {type::kTIFF, {"image/tiff", "", ""}},
    {type::kJPEG, {"image/jpeg", "", ""}},
    {type::kHTML, {"text/html", "", ""}},
    {type::kRTF, {"text/rtf", "application/rtf", ""}},
}};

constexpr std::string_view kLatin1Text = "STRING";

}  // namespace

std::string typeForMime(std::string_view mime) {
    for (const Mapping& mapping : kMappings) {
        for (std::string_view candidate : mapping.mimes)
            if (!candidate.empty() && candidate == mime) return std::string(mapping.type);
    }
    // Other text MIME names with a charset ("text/plain;charset=UTF-8") are text as well, and
    // so is the X target of Latin-1 text.
    if (mime.starts_with("text/plain") || mime == kLatin1Text) return std::string(type::kText);
    return std::string(mime);
}

std::vector<std::string> mimesForType(std::string_view typeName) {
    for (const Mapping& mapping : kMappings) {
        if (mapping.type != typeName) continue;
        std::vector<std::string> mimes;
        for (std::string_view mime : mapping.mimes)
            if (!mime.empty()) mimes.emplace_back(mime);
        return mimes;
    }
    return {std::string(typeName)};
}

bool isContentTarget(std::string_view target) {
    // MIME names have a slash; the X text targets and the secret markers have none.
    if (target.find('/') != std::string_view::npos) return true;
    return target == "UTF8_STRING" || target == kLatin1Text || target.starts_with("org.") ||
           target.starts_with("x-");
}

std::vector<std::string> targetsForType(std::string_view typeName) {
    if (typeName != type::kText) return mimesForType(typeName);
    return {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=UTF-8", "text/plain",
            std::string(kLatin1Text)};
}

std::vector<std::pair<std::string, std::string>> nativeRepresentations(const PasteboardItem& item) {
    std::vector<std::pair<std::string, std::string>> result;
    auto add = [&result](std::string name, const std::string& bytes) {
        const bool known = std::any_of(result.begin(), result.end(), [&](const auto& r) { return r.first == name; });
        if (!known) result.emplace_back(std::move(name), bytes);
    };
    bool secret = false;
    for (const auto& [typeName, bytes] : item.representations) {
        if (typeName == type::kConcealed) secret = true;
        for (std::string& mime : mimesForType(typeName)) add(std::move(mime), bytes);
    }
    if (secret) add(std::string(type::kPasswordManagerHint), std::string(type::kPasswordManagerHintSecret));
    return result;
}

std::string latin1ToUtf8(std::string_view latin1) {
    std::string out;
    out.reserve(latin1.size());
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            out.push_back(c);
        } else {
            out.push_back(static_cast<char>(0xC0 | (byte >> 6)));
            out.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
    return out;
}

}  // namespace orvantis::platform
