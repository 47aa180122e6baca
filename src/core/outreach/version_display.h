#pragma once

#include <string>
#include <string_view>

namespace orvantis {

/// The version as the About page shows it: empty without a version; "v" and the version when
/// the build is empty or the same text; else "v<version> (<build>)".
std::string versionDisplayString(std::string_view version, std::string_view build);

}  // namespace orvantis
