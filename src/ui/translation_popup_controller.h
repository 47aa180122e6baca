#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QPoint>

#include "core/popup/popup_option.h"
#include "core/popup/translation_popup_model.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "ui/keyboard_grab.h"

class QKeyEvent;
class QWidget;

namespace orvantis::ui {

class TranslationPopupPanel;

/// The translator's floating list beside the pointer: a "Translating…" row, then numbered
/// options with a footer hint, or an error that closes itself after 3 s. It takes the
/// keyboard while shown without taking the focus from the application whose text is selected,
/// and hands the choice back through its callbacks. One panel is made at construction and
/// reused by every show(). Created by the composition root; the translator's coordinator
/// drives it through an adapter. Main thread only.
class TranslationPopupController final : public QObject {
    Q_OBJECT

public:
    /// Starts watching for another application's activation; the callback dismisses.
    using ActivationWatch = OutsideWatch::ActivationWatch;

    /// `grab` takes the keyboard while the popup is shown (KeyboardGrab::forPlatform() in the
    /// application). `watchActivation` defaults to watchActiveWindowChanges().
    TranslationPopupController(platform::MainLoop& loop, std::unique_ptr<KeyboardGrab> grab,
                               ActivationWatch watchActivation = {});
    ~TranslationPopupController() override;
    TranslationPopupController(const TranslationPopupController&) = delete;
    TranslationPopupController& operator=(const TranslationPopupController&) = delete;

    /// The chosen option's value; called after the popup has closed, so the target
    /// application has the keyboard again when it runs.
    void setOnConfirm(std::function<void(const std::string&)> callback) { onConfirm_ = std::move(callback); }
    /// The popup is closing, whatever the reason, a confirm included.
    void setOnDismiss(std::function<void()> callback) { onDismiss_ = std::move(callback); }
    /// Tab was pressed while the popup was up.
    void setOnTabPressed(std::function<void()> callback) { onTabPressed_ = std::move(callback); }

    /// Shows the loading row with its top 30 below `pointer` (global coordinates, y downward),
    /// clamped to the screen, and takes the keyboard.
    void show(QPoint pointer);
    /// Replaces the content by numbered rows, the first selected. A hidden popup stays hidden.
    void showOptions(std::vector<PopupOption> options);
    /// Sets the footer hint, or removes it for nullopt or an empty text.
    void setFooterHint(std::optional<std::string> hint);
    /// Replaces the content by `message` and closes after 3 s.
    void showError(const std::string& message);
    /// Closes and calls onDismiss; does nothing while hidden.
    void dismiss();
    bool isVisible() const;

    /// The list logic and the frame.
    const TranslationPopupModel& model() const { return model_; }
    /// The panel window, for tests and screenshots.
    QWidget& panel();
    /// Whether the keyboard grab is held now.
    bool holdsKeyboard() const { return keyboard_.isHeld(); }
    /// Whether the pointer is held with it, so that clicks outside are seen.
    bool holdsPointer() const { return keyboard_.holdsPointer(); }

    /// A key that reached the panel. Answers whether the popup took it.
    bool handleKeyPress(const QKeyEvent& event);
    /// A press on option row `index`; `clickCount` 2 for the second press of a double click.
    void handleRowClick(std::size_t index, int clickCount);
    /// A press at `globalPosition` that reached the panel: outside the panel it closes the
    /// popup on the next turn of the main loop. Presses before the popup watches the outside
    /// (one turn after show()) are ignored.
    void handlePanelPress(QPoint globalPosition);

protected:
    /// While the popup is up, every key press meant for any window of the application comes
    /// here first, so that the popup has the keys even when another of our windows has the
    /// focus; the keys that the popup does not take go on.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void carryOut(const PopupOutcome& outcome);
    void confirm(const std::string& value);
    void applyModel();

    std::optional<PopupRect> visibleFrame() const;

    platform::MainLoop& loop_;
    std::unique_ptr<KeyboardGrab> grab_;
    std::function<void(const std::string&)> onConfirm_;
    std::function<void()> onDismiss_;
    std::function<void()> onTabPressed_;
    QPoint pointer_;  ///< where the popup was last shown; its screen limits the popup
    TranslationPopupModel model_;
    std::unique_ptr<TranslationPopupPanel> panel_;
    HeldKeyboard keyboard_;
    OutsideWatch outside_;  ///< from one turn after show() until dismiss()
    ApplicationEventFilter keyFilter_{*this};  ///< while shown
    platform::TimerHandle errorDismissal_;
};

}  // namespace orvantis::ui
