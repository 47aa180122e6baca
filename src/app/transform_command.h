#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/settings/settings_language.h"

namespace orvantis::app {

/// `orvantis transform NAME` and `orvantis transform --list`. `args` starts with "transform".
/// NAME reads all of `in` as UTF-8, applies the transform of that case name and writes exactly
/// the result to `out`, with no line break added; `--list` writes the case names in list order,
/// each with a tab and its English name. `language` is asked only by `count`, for its labels.
/// Answers the exit status: 0 on success; 1 when the transform refused the input, with its
/// description on `err`; 2 for a usage error or input that is not UTF-8.
int runTransformCommand(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                        std::ostream& err, const std::function<SettingsLanguage()>& language);

}  // namespace orvantis::app
