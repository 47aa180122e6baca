#include "core/outreach/version_display.h"

namespace orvantis {

std::string versionDisplayString(std::string_view version, std::string_view build) {
    if (version.empty()) return {};
    std::string text = "v" + std::string(version);
    if (build.empty() || build == version) return text;
    return text + " (" + std::string(build) + ")";
}

}  // namespace orvantis
