#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/popup/popup_option.h"
#include "platform/pointer.h"

namespace orvantis {

/// The translator's floating list as the coordinator drives it; the window itself lives in
/// the interface layer. Main thread only.
class TranslationPopup {
public:
    virtual ~TranslationPopup() = default;
    /// The chosen option's value, after the popup has closed.
    virtual void setOnConfirm(std::function<void(const std::string&)> callback) = 0;
    /// The popup is closing, whatever the reason.
    virtual void setOnDismiss(std::function<void()> callback) = 0;
    /// Tab was pressed while the popup was up.
    virtual void setOnTabPressed(std::function<void()> callback) = 0;
    /// Shows the loading row beside `pointer`.
    virtual void show(platform::ScreenPoint pointer) = 0;
    virtual void showOptions(std::vector<PopupOption> options) = 0;
    virtual void setFooterHint(std::optional<std::string> hint) = 0;
    /// Shows `message` and closes after a few seconds.
    virtual void showError(const std::string& message) = 0;
    /// Closes and calls the dismiss callback; nothing while hidden.
    virtual void dismiss() = 0;
    virtual bool isVisible() const = 0;
};

}  // namespace orvantis
