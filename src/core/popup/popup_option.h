#pragma once

#include <string>

namespace orvantis {

/// One row of a choice popup: what the row shows and what choosing it hands over.
struct PopupOption {
    std::string displayText;
    std::string value;
    bool operator==(const PopupOption&) const = default;
};

}  // namespace orvantis
