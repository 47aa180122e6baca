#pragma once

#include "core/translator/translation_popup.h"
#include "platform/pointer.h"

namespace orvantis::ui {

class TranslationPopupController;

/// The translator's popup as the coordinator drives it, over the Qt panel. Borrows the
/// controller, which must outlive it. Main thread only.
class QtTranslationPopup final : public TranslationPopup {
public:
    explicit QtTranslationPopup(TranslationPopupController& controller) : controller_(controller) {}

    void setOnConfirm(std::function<void(const std::string&)> callback) override;
    void setOnDismiss(std::function<void()> callback) override;
    void setOnTabPressed(std::function<void()> callback) override;
    void show(platform::ScreenPoint pointer) override;
    void showOptions(std::vector<PopupOption> options) override;
    void setFooterHint(std::optional<std::string> hint) override;
    void showError(const std::string& message) override;
    void dismiss() override;
    bool isVisible() const override;

private:
    TranslationPopupController& controller_;
};

/// The mouse pointer through Qt: global coordinates of the virtual desktop, y downward.
class QtPointer final : public platform::Pointer {
public:
    platform::ScreenPoint location() const override;
};

}  // namespace orvantis::ui
