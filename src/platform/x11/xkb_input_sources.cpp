#include "platform/x11/xkb_input_sources.h"

#include <utility>

#include "platform/x11/x11_display.h"
#include "platform/x11/xkb_key_layout.h"
#include "platform/x11/xkb_registry.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace orvantis::x11 {
namespace {

std::vector<std::string> splitCommas(std::string_view text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(',', start);
        parts.emplace_back(text.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start));
        if (comma == std::string_view::npos) break;
        start = comma + 1;
    }
    return parts;
}

}  // namespace

struct XkbInputSources::Connection {
    Display* display = nullptr;
    ~Connection() {
        closeDisplay(display);
    }
};

std::optional<XkbRulesNames> parseXkbRulesNames(std::string_view bytes) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    while (fields.size() < 5 && start <= bytes.size()) {
        const std::size_t end = bytes.find('\0', start);
        fields.emplace_back(bytes.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    fields.resize(5);
    if (fields[2].empty()) return std::nullopt;
    XkbRulesNames names{fields[0], fields[1], splitCommas(fields[2]), splitCommas(fields[3]), fields[4]};
    names.variants.resize(names.layouts.size());
    return names;
}

std::string xkbSourceID(std::string_view layout, std::string_view variant) {
    std::string id = "xkb:";
    id += layout;
    if (!variant.empty()) {
        id += '(';
        id += variant;
        id += ')';
    }
    return id;
}

std::optional<std::pair<std::string, std::string>> parseXkbSourceID(std::string_view sourceID) {
    constexpr std::string_view kPrefix = "xkb:";
    if (sourceID.substr(0, kPrefix.size()) != kPrefix) return std::nullopt;
    sourceID.remove_prefix(kPrefix.size());
    if (sourceID.empty()) return std::nullopt;
    const std::size_t open = sourceID.find('(');
    if (open == std::string_view::npos) return std::make_pair(std::string(sourceID), std::string());
    if (open == 0 || sourceID.back() != ')' || open + 2 > sourceID.size()) return std::nullopt;
    return std::make_pair(std::string(sourceID.substr(0, open)),
                          std::string(sourceID.substr(open + 1, sourceID.size() - open - 2)));
}

std::unique_ptr<XkbInputSources> XkbInputSources::open(const char* displayName) {
    int major = XkbMajorVersion, minor = XkbMinorVersion, reason = 0;
    Display* display = XkbOpenDisplay(displayName, nullptr, nullptr, &major, &minor, &reason);
    if (display == nullptr) return nullptr;
    keepQuietWhenLost(display);
    auto connection = std::make_unique<Connection>();
    connection->display = display;
    return std::unique_ptr<XkbInputSources>(new XkbInputSources(std::move(connection)));
}

XkbInputSources::XkbInputSources(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

XkbInputSources::~XkbInputSources() = default;

std::optional<XkbRulesNames> XkbInputSources::rulesNames() const {
    Display* display = connection_->display;
    const Atom property = XInternAtom(display, "_XKB_RULES_NAMES", True);
    if (property == None) return std::nullopt;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(display, DefaultRootWindow(display), property, 0, 4096, False,
                                          XA_STRING, &type, &format, &count, &remaining, &data);
    if (status != Success || data == nullptr) return std::nullopt;
    std::string bytes(reinterpret_cast<const char*>(data), format == 8 ? count : 0);
    XFree(data);
    return parseXkbRulesNames(bytes);
}

std::vector<platform::InputSourceDescriptor> XkbInputSources::enabledSources() const {
    std::vector<platform::InputSourceDescriptor> sources;
    const auto names = rulesNames();
    if (!names) return sources;
    for (std::size_t i = 0; i < names->layouts.size() && i < XkbNumKbdGroups; ++i) {
        const std::string& layout = names->layouts[i];
        const std::string& variant = names->variants[i];
        platform::InputSourceDescriptor source{xkbSourceID(layout, variant), {}, {}};
        if (auto description = describeXkbLayout(layout, variant)) {
            source.localizedName = description->name;
            source.languages = description->languages;
        }
        sources.push_back(std::move(source));
    }
    return sources;
}

std::optional<platform::InputSourceDescriptor> XkbInputSources::currentSource() const {
    XkbStateRec state{};
    if (XkbGetState(connection_->display, XkbUseCoreKbd, &state) != Success) return std::nullopt;
    const auto sources = enabledSources();
    const auto group = static_cast<std::size_t>(state.locked_group);
    if (group >= sources.size()) return std::nullopt;
    return sources[group];
}

bool XkbInputSources::select(std::string_view sourceID) {
    const auto sources = enabledSources();
    for (std::size_t group = 0; group < sources.size(); ++group) {
        if (sources[group].sourceID != sourceID) continue;
        if (!XkbLockGroup(connection_->display, XkbUseCoreKbd, static_cast<unsigned int>(group))) return false;
        XSync(connection_->display, False);
        return true;
    }
    return false;
}

std::optional<platform::KeyLayout> XkbInputSources::keyLayout(std::string_view sourceID) const {
    const auto parsed = parseXkbSourceID(sourceID);
    if (!parsed) return std::nullopt;
    return xkbKeyLayout(parsed->first, parsed->second);
}

}  // namespace orvantis::x11
