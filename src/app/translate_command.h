#pragma once

#include <string>
#include <vector>

namespace orvantis::app {

/// `orvantis translate [--from CODE] [--to CODE] [--alternates] TEXT`: translates TEXT through
/// the translation service and the endpoint of the preferences, and prints the translation, or
/// with --alternates the primary translation and its alternatives one a line. `args` starts
/// with "translate". --from defaults to auto, --to to en. Answers the exit status: 0 on
/// success, 1 when the translation failed (its words on standard error), 2 for a usage error.
int runTranslateCommand(const std::vector<std::string>& args);

}  // namespace orvantis::app
