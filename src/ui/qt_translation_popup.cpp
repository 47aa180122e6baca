#include "ui/qt_translation_popup.h"

#include <utility>

#include <QCursor>
#include <QPoint>

#include "ui/translation_popup_controller.h"

namespace orvantis::ui {

void QtTranslationPopup::setOnConfirm(std::function<void(const std::string&)> callback) {
    controller_.setOnConfirm(std::move(callback));
}

void QtTranslationPopup::setOnDismiss(std::function<void()> callback) { controller_.setOnDismiss(std::move(callback)); }

void QtTranslationPopup::setOnTabPressed(std::function<void()> callback) {
    controller_.setOnTabPressed(std::move(callback));
}

void QtTranslationPopup::show(platform::ScreenPoint pointer) { controller_.show(QPoint(pointer.x, pointer.y)); }

void QtTranslationPopup::showOptions(std::vector<PopupOption> options) { controller_.showOptions(std::move(options)); }

void QtTranslationPopup::setFooterHint(std::optional<std::string> hint) { controller_.setFooterHint(std::move(hint)); }

void QtTranslationPopup::showError(const std::string& message) { controller_.showError(message); }

void QtTranslationPopup::dismiss() { controller_.dismiss(); }

bool QtTranslationPopup::isVisible() const { return controller_.isVisible(); }

platform::ScreenPoint QtPointer::location() const {
    const QPoint position = QCursor::pos();
    return {position.x(), position.y()};
}

}  // namespace orvantis::ui
