#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QWidget>

#include "core/shell/settings_form.h"

class QLabel;
class QPushButton;
class QStackedWidget;
class QTableWidget;
class QToolBar;
class QWindow;
class QVBoxLayout;

namespace orvantis::ui {

/// An installed application as the app lists show it.
struct InstalledApp {
    std::string id;    ///< the desktop file id, the identifier the settings keep
    std::string name;  ///< the name to show
    std::string icon;  ///< the icon-theme name or file path of its desktop file; may be empty
};

/// What the window needs beyond the settings; every member may be empty.
struct SettingsWindowServices {
    /// The installed applications, for the ignored-apps and keep-awake lists.
    std::function<std::vector<InstalledApp>()> installedApps;
    /// The virtual key code of a key by its X keycode (Qt's native scan code), or nullopt.
    std::function<std::optional<std::uint16_t>(std::uint32_t nativeScanCode)> virtualKeyForScanCode;
    /// Called with true when a hotkey capture starts and false when it ends: the global grabs
    /// must be let go meanwhile, or the keys never reach the window.
    std::function<void(bool capturing)> suspendGrabs;
    /// Takes the keyboard for `window` while a hotkey capture runs, and answers whether it got
    /// it: false when another program holds the keyboard. Empty: Qt's grab, taken for granted.
    std::function<bool(QWindow& window)> grabKeyboard;
    /// Told when a page has painted for the first time after it was chosen (or, the first time,
    /// after the window was made), with the milliseconds in between: the figures of the speed log.
    std::function<void(SettingsSection section, bool firstOfWindow, double milliseconds)> pagePainted;
    /// Told why a hotkey capture was cancelled when the keyboard went elsewhere (for the log).
    std::function<void(std::string_view why)> captureInterrupted;
    /// Clears the clipboard history and its snapshot at once (outside the form).
    std::function<void()> clearClipboardHistory;
    /// Builds the collaborators of a save; the window is passed for its alerts.
    std::function<std::unique_ptr<SettingsSaveTarget>(class SettingsWindowController&)> makeSaveTarget;
    /// Looks for the two Focus commands again and answers whether both are there; the Pomodoro
    /// page's status line shows the answer. Empty: the line says they are missing.
    std::function<bool()> focusCommandsAvailable;
    /// Shows the Focus commands' folder in the file manager, making it first if missing.
    std::function<void()> openFocusCommandFolder;
    /// The program's version, shown on the About page.
    std::string version;
    /// Opens the feedback window (the About page's Send Feedback button).
    std::function<void()> openFeedback;
    /// The synced folder that sync uses in this run (the program's folder inside it), or
    /// nullopt when none was found at launch.
    std::optional<std::string> syncFolder;
};

/// The settings window: a toolbar of ten pages, the page, and Cancel and Save. Every control
/// edits a SettingsForm; nothing reaches the settings before Save. Pages are built at first
/// use and kept; a language switch rebuilds everything in the new language at once. Hotkey
/// buttons capture the next combination, with the global grabs suspended while they do.
/// Deletes nothing it does not own; `onClosed` runs when the window closes, however it closes.
/// Main thread only.
class SettingsWindowController final : public QWidget {
    Q_OBJECT
public:
    SettingsWindowController(AppSettings& settings, SettingsWindowServices services, std::function<void()> onClosed);
    ~SettingsWindowController() override;

    SettingsForm& form() { return form_; }
    void selectSection(SettingsSection section);
    SettingsSection currentSection() const { return currentSection_; }
    /// The page widget of a section, built now when it was not yet.
    QWidget* page(SettingsSection section);
    QToolBar* toolbar() const { return toolbar_; }
    QPushButton* hotkeyButton(HotkeyField field) const;
    QLabel* conflictLabel(HotkeyField field) const;
    QTableWidget* snippetTable() const { return snippetTable_; }

    void saveClicked();
    void cancelClicked();
    void hotkeyButtonClicked(HotkeyField field);
    /// The Focus card's Recheck button: asks for the commands again and redraws the status line.
    void recheckFocusClicked();
    /// The Focus status line's text, empty until the Pomodoro page is built.
    QString focusStatusText() const;

    /// Alerts the save sequence asks for.
    bool askClipboardConsent();
    void showAlert(std::string_view title, std::string_view body);

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildUI();
    void rebuildEverything();
    QWidget* buildPage(SettingsSection section);
    void refreshHotkeyButtons();
    void refreshSnippets();
    /// Ends the capture because the keyboard went elsewhere, and says so in its button.
    void captureInterrupted(const char* why);
    void showFocusStatus(bool available);
    /// Waits for the first paint of `section`'s page, timed from `since`.
    void watchPaint(SettingsSection section, std::chrono::steady_clock::time_point since);
    void rebuildAppList(QVBoxLayout* list, const StringListSetting& setting);
    void addAppClicked(QVBoxLayout* list, const StringListSetting& setting);

    struct Builder;
    /// The page builders live as long as their pages: the controls' handlers refer to them.
    std::vector<std::unique_ptr<Builder>> builders_;
    AppSettings& settings_;
    SettingsWindowServices services_;
    std::function<void()> onClosed_;
    SettingsForm form_;
    QToolBar* toolbar_ = nullptr;
    QStackedWidget* stack_ = nullptr;
    QVBoxLayout* root_ = nullptr;
    std::map<SettingsSection, QWidget*> pageCache_;
    std::map<HotkeyField, QPushButton*> hotkeyButtons_;
    std::map<HotkeyField, QLabel*> hotkeyConflictLabels_;
    QLabel* focusStatusIcon_ = nullptr;
    QLabel* focusStatusText_ = nullptr;
    QTableWidget* snippetTable_ = nullptr;
    QLabel* snippetEmptyLabel_ = nullptr;
    QPushButton* snippetRemoveButton_ = nullptr;
    SettingsSection currentSection_ = SettingsSection::general;
    bool closing_ = false;
    /// The button that shows the interruption message, until the message times out.
    std::optional<HotkeyField> interruptedField_;
    /// The page whose first paint is awaited, and since when.
    QWidget* paintWatched_ = nullptr;
    SettingsSection paintWatchedSection_ = SettingsSection::general;
    std::chrono::steady_clock::time_point paintWatchedSince_;
    bool windowPainted_ = false;
};

}  // namespace orvantis::ui
