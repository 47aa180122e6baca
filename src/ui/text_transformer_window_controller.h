#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QFrame>
#include <QPointer>
#include <QWidget>

#include "core/settings/app_settings.h"
#include "core/text_tools/text_transform.h"
#include "core/text_tools/text_transformer_coordinator.h"
#include "platform/pasteboard.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace orvantis::ui {

/// The searchable list of transforms that opens below the window's transform button: a search
/// field over the list, Up and Down move the selection, Return or a click chooses. A popup: a
/// click outside closes it. Owned by the window; main thread.
class TransformPickerViewController final : public QFrame {
    Q_OBJECT
public:
    TransformPickerViewController(SettingsLanguage lang, TextTransform initial, const QString& searchPlaceholder,
                                  QWidget* parent);
    /// Called with the chosen transform.
    std::function<void(TextTransform)> onSelect;

    QLineEdit* searchField() const { return searchField_; }
    QListWidget* tableView() const { return tableView_; }
    const std::vector<TextTransform>& visibleTransforms() const { return visible_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Brings the selected row into view once the list has its size: before, the list has no
    /// height, and any row but the first would be scrolled to the top.
    void showEvent(QShowEvent* event) override;

private:
    void searchChanged();
    void reload();
    void chooseRow(int row);

    SettingsLanguage lang_;
    QLineEdit* searchField_;
    QListWidget* tableView_;
    std::vector<TextTransform> visible_;
};

/// The text tools window: a transform button, the input, the result, a status line and Copy.
/// Every change of the input or of the transform recomputes at once, on the main thread. An
/// ordinary window that takes the focus. Borrows the settings and the pasteboard, which must
/// outlive it.
class TextTransformerWindowController final : public QWidget {
    Q_OBJECT
public:
    TextTransformerWindowController(AppSettings& settings, platform::Pasteboard& pasteboard,
                                    std::function<void()> onClosed);
    ~TextTransformerWindowController() override;

    /// Takes the clipboard's text into the input (all selected), recomputes, and brings the
    /// window to the front with the focus in the input.
    void showWindow();
    /// Opens the picker, or closes it when it is open.
    void openPicker();
    /// The picker's choice.
    void selectTransform(TextTransform transform);
    /// The result to the clipboard as plain text; the clipboard history takes it like any copy.
    void copyClicked();

    TextTransform selectedTransform() const { return selectedTransform_; }
    QPlainTextEdit* inputTextView() const { return inputTextView_; }
    QPlainTextEdit* outputTextView() const { return outputTextView_; }
    QPushButton* transformButton() const { return transformButton_; }
    QLabel* statusLabel() const { return statusLabel_; }
    QPushButton* copyButton() const { return copyButton_; }
    TransformPickerViewController* picker() const { return picker_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void prefillFromClipboard();
    void refreshButtonTitle();
    void recompute();

    AppSettings& settings_;
    platform::Pasteboard& pasteboard_;
    std::function<void()> onClosed_;
    TextTransform selectedTransform_ = TextTransform::base64Encode;
    /// The last result as computed; the output view may show long lines in pieces.
    std::string result_;
    QPlainTextEdit* inputTextView_;
    QPlainTextEdit* outputTextView_;
    QPushButton* transformButton_;
    QLabel* statusLabel_;
    QPushButton* copyButton_;
    QPointer<TransformPickerViewController> picker_;
};

/// The window behind the coordinator's seam.
class QtTextTransformerWindow final : public TextTransformerWindow {
public:
    QtTextTransformerWindow(AppSettings& settings, platform::Pasteboard& pasteboard, std::function<void()> onClosed)
        : controller_(settings, pasteboard, std::move(onClosed)) {}
    void show() override { controller_.showWindow(); }
    TextTransformerWindowController& controller() { return controller_; }

private:
    TextTransformerWindowController controller_;
};

}  // namespace orvantis::ui
