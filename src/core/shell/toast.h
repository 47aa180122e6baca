#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace orvantis {

/// The colour of a toast's symbol.
enum class ToastTint { green };

/// One passing notice: a title, an optional second line, a symbol and how long it stays.
struct ToastContent {
    std::string title;
    std::optional<std::string> subtitle;  ///< nullopt or empty: one line only
    std::string symbolName;               ///< "checkmark.circle.fill"
    ToastTint tint = ToastTint::green;
    std::chrono::milliseconds duration{2500};
    bool operator==(const ToastContent&) const = default;
};

/// The passing notice near the top of the screen that takes no focus. One notice is on screen
/// at a time: a new one replaces it, with its own full duration. Main thread only.
class Toast {
public:
    virtual ~Toast() = default;
    virtual void show(const ToastContent& content) = 0;
};

}  // namespace orvantis
