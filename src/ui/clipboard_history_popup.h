#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QPoint>

#include "core/clipboard/clipboard_history_popup.h"
#include "core/clipboard/clipboard_popup_model.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "ui/keyboard_grab.h"

class QKeyEvent;
class QLineEdit;
class QWidget;

namespace orvantis::ui {

class ClipboardPopupPanel;

/// The clipboard history's searchable list at the pointer: a search field, one numbered row
/// per entry (ten visible, the rest scroll), an empty label, the count and the shortcuts. It
/// takes the keyboard while shown without taking the focus from the application that will
/// receive the paste: the keys reach the panel through the grab and go to its search field
/// unless a rule of the model takes them. One panel is made at construction and reused.
/// Created by the composition root; the coordinator drives it through QtClipboardHistoryPopup.
/// Main thread only.
class ClipboardPopupController final : public QObject {
    Q_OBJECT

public:
    using ActivationWatch = OutsideWatch::ActivationWatch;
    /// The display name of the application with this identifier, or nullopt when unknown.
    using AppNameLookup = std::function<std::optional<std::string>(const std::string& bundleID)>;
    using ItemCallback = ClipboardHistoryPopup::ItemCallback;

    /// `grab` takes the keyboard while shown (KeyboardGrab::forPlatform() in the application);
    /// `watchActivation` defaults to watchActiveWindowChanges(); without `appName` the rows
    /// show no application.
    ClipboardPopupController(platform::MainLoop& loop, std::unique_ptr<KeyboardGrab> grab,
                             AppNameLookup appName = {}, ActivationWatch watchActivation = {});
    ~ClipboardPopupController() override;
    ClipboardPopupController(const ClipboardPopupController&) = delete;
    ClipboardPopupController& operator=(const ClipboardPopupController&) = delete;

    void setOnConfirm(ItemCallback callback) { onConfirm_ = std::move(callback); }
    void setOnDelete(ItemCallback callback) { onDelete_ = std::move(callback); }
    void setOnTogglePin(ItemCallback callback) { onTogglePin_ = std::move(callback); }
    void setOnDismiss(std::function<void()> callback) { onDismiss_ = std::move(callback); }

    /// Opens afresh with `items` below `pointer` (global coordinates, y downward).
    void show(QPoint pointer, std::vector<ClipboardItem> items, ClipboardPopupTexts texts);
    /// Replaces the entries, keeping the search and the selected index; the top edge stays.
    void refresh(std::vector<ClipboardItem> items);
    /// Closes and calls onDismiss; does nothing while hidden.
    void dismiss();
    bool isVisible() const { return model_.isVisible(); }

    const ClipboardPopupModel& model() const { return model_; }
    /// The panel window, for tests and screenshots.
    QWidget& panel();
    QLineEdit& searchField();
    bool holdsKeyboard() const { return keyboard_.isHeld(); }

    /// A key that reached the popup. Answers whether a rule took it.
    bool handleKeyPress(const QKeyEvent& event);
    /// A press on row `index`; `clickCount` 2 for the second press of a double click.
    void handleRowClick(std::size_t index, int clickCount);
    /// A press at `globalPosition` that reached the panel: outside it closes the popup on the
    /// next turn. Presses before the popup watches the outside are ignored.
    void handlePanelPress(QPoint globalPosition);
    /// The application name for a row, cached for the life of the process.
    std::string appName(const std::optional<std::string>& bundleID);

protected:
    /// While shown, every key press meant for any of our windows comes here first: the rules
    /// take theirs, the others go to the search field.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void carryOut(const ClipboardPopupOutcome& outcome);
    void searchChanged(const QString& text);
    void rebuild();
    std::optional<PopupRect> visibleFrame() const;

    platform::MainLoop& loop_;
    std::unique_ptr<KeyboardGrab> grab_;
    AppNameLookup appNameLookup_;
    std::map<std::string, std::string, std::less<>> appNames_;
    ItemCallback onConfirm_;
    ItemCallback onDelete_;
    ItemCallback onTogglePin_;
    std::function<void()> onDismiss_;
    QPoint pointer_;
    ClipboardPopupModel model_;
    std::unique_ptr<ClipboardPopupPanel> panel_;
    HeldKeyboard keyboard_;
    OutsideWatch outside_;  ///< from two turns after show() until dismiss()
    ApplicationEventFilter keyFilter_{*this};  ///< while shown
    bool settingField_ = false;  ///< the field is being set from the model, not typed in
    platform::TimerHandle scrollLater_;
};

/// The clipboard popup as the coordinator drives it, over the Qt panel. Borrows the
/// controller, which must outlive it. Main thread only.
class QtClipboardHistoryPopup final : public ClipboardHistoryPopup {
public:
    explicit QtClipboardHistoryPopup(ClipboardPopupController& controller) : controller_(controller) {}

    void setOnConfirm(ItemCallback callback) override { controller_.setOnConfirm(std::move(callback)); }
    void setOnDelete(ItemCallback callback) override { controller_.setOnDelete(std::move(callback)); }
    void setOnTogglePin(ItemCallback callback) override { controller_.setOnTogglePin(std::move(callback)); }
    void setOnDismiss(std::function<void()> callback) override { controller_.setOnDismiss(std::move(callback)); }
    void show(platform::ScreenPoint near, std::vector<ClipboardItem> items, ClipboardPopupTexts texts) override {
        controller_.show(QPoint(near.x, near.y), std::move(items), std::move(texts));
    }
    void refresh(std::vector<ClipboardItem> items) override { controller_.refresh(std::move(items)); }
    void dismiss() override { controller_.dismiss(); }
    bool isVisible() const override { return controller_.isVisible(); }

private:
    ClipboardPopupController& controller_;
};

}  // namespace orvantis::ui
