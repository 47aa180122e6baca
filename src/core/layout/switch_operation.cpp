#include "core/layout/switch_operation.h"

namespace orvantis {
namespace {

std::string joined(const std::vector<std::string>& characters) {
    std::string result;
    for (const auto& c : characters) result += c;
    return result;
}

}  // namespace

std::string SwitchOperation::originalString() const { return joined(originalChars); }

std::string SwitchOperation::switchedString() const { return joined(switchedChars); }

}  // namespace orvantis
