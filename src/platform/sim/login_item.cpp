#include "platform/sim/login_item.h"

namespace orvantis::sim {

bool LoginItem::isEnabled() const {
    calls_.push_back("status");
    return enabled_;
}

std::optional<std::string> LoginItem::registerItem() {
    calls_.push_back("register");
    if (failure_) return failure_;
    enabled_ = true;
    return std::nullopt;
}

std::optional<std::string> LoginItem::unregisterItem() {
    calls_.push_back("unregister");
    if (failure_) return failure_;
    enabled_ = false;
    return std::nullopt;
}

}  // namespace orvantis::sim
