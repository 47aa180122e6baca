#include "app/settings_window_assembly.h"

#include <cstdio>

#include <QGuiApplication>
#include <QPixmapCache>
#include <QTimer>
#include <QWindow>

#include "app/feedback_assembly.h"
#include "app/launch_code_pages.h"
#include "app/pomodoro_assembly.h"
#include "app/system_utilities_assembly.h"
#include "build_info.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/events/notification_center.h"
#include "core/log/app_logger.h"
#include "core/outreach/version_display.h"
#include "core/pomodoro/dnd_manager.h"
#include "core/pomodoro/pomodoro_coordinator.h"
#include "core/settings/hotkey_names.h"
#include "core/sync/sync_manager.h"
#include "core/utilities/caffeine_coordinator.h"
#include "core/utilities/keyboard_lock_coordinator.h"
#include "platform/freedesktop/desktop_entries.h"
#include "platform/x11/key_positions.h"
#include "ui/settings_window_controller.h"

namespace orvantis::app {
namespace {

// Function keys and Print, by X keycode (evdev), beside the typing block of key_positions.h.
constexpr std::pair<std::uint32_t, std::uint16_t> kFunctionKeys[] = {
    {67, 122}, {68, 120}, {69, 99}, {70, 118}, {71, 96}, {72, 97}, {73, 98},
    {74, 100}, {75, 101}, {76, 109}, {95, 103}, {96, 111}, {107, 105}};

std::optional<std::uint16_t> virtualKeyForScanCode(std::uint32_t code) {
    if (auto key = x11::virtualKeyForXKeycode(code)) return key;
    for (const auto& [x, virtualKey] : kFunctionKeys)
        if (x == code) return virtualKey;
    return std::nullopt;
}

}  // namespace

std::vector<ui::InstalledApp> listableApplications(const freedesktop::DesktopEntries& entries, const LogCategory& log,
                                                   std::set<std::filesystem::path>& reported) {
    for (const auto& skipped : entries.skipped())
        if (reported.insert(skipped.path).second)
            log.warning("settings: the desktop file " + skipped.path.string() + " is left out of the app lists: " +
                        skipped.reason);
    std::vector<ui::InstalledApp> apps;
    for (const auto& entry : entries.entries())
        if (!entry.noDisplay) apps.push_back({entry.id, entry.name, entry.icon});
    return apps;
}

/// The save's reach into the running features. Alerts go through the window.
class SettingsWindowAssembly::SaveTarget final : public SettingsSaveTarget {
public:
    SaveTarget(SettingsWindowAssembly& owner, ui::SettingsWindowController& window)
        : owner_(owner), window_(window), strings_(window.form().strings()) {}

    bool confirmClipboardSyncConsent() override { return window_.askClipboardConsent(); }
    // The login item follows the preference's every write: the save's write reached it.
    void setLaunchAtLogin(bool) override {}
    void postSettingsLanguageChanged() override {
        owner_.services_.notifications.post(orvantisSettingsLanguageChanged);
    }
    void clearClipboardPersistence() override {
        if (auto* clipboard = owner_.collaborators_.clipboard) clipboard->persistence().clear();
    }
    // The scroll reverser, the icon hider and keep-awake observe the store themselves: the
    // writes of the save reach them without a call.
    void applyScrollReverser() override {}
    void updateMenuBarHiderHotkey(const HotkeyDescriptor& hotkey) override {
        if (auto* monitor = owner_.collaborators_.monitor) monitor->updateMenuBarHiderHotkey(hotkey);
    }
    void applyMenuBarHider() override {}
    void showLidCloseNeedsApp() override {
        window_.showAlert(strings_.caffeineLidNeedsAppTitle, strings_.caffeineLidNeedsAppBody);
    }
    bool provisionLidCloseInteractively() override {
        auto* utilities = owner_.collaborators_.systemUtilities;
        return utilities != nullptr && utilities->caffeine().provisionLidCloseInteractively();
    }
    bool deprovisionLidClose() override {
        auto* utilities = owner_.collaborators_.systemUtilities;
        return utilities != nullptr && utilities->caffeine().deprovisionLidClose();
    }
    void showLidCloseRemovalCancelled() override {
        window_.showAlert(strings_.caffeineLidRemovalCancelledTitle, strings_.caffeineLidRemovalCancelledBody);
    }
    void applyCaffeine() override {
        if (auto* utilities = owner_.collaborators_.systemUtilities) utilities->caffeine().applyState();
    }
    bool keyboardLocked() const override {
        auto* utilities = owner_.collaborators_.systemUtilities;
        return utilities != nullptr && utilities->keyboardLock() != nullptr && utilities->keyboardLock()->isLocked();
    }
    void unlockKeyboard(std::string_view reason) override {
        if (auto* utilities = owner_.collaborators_.systemUtilities)
            if (auto* lock = utilities->keyboardLock()) lock->unlock(reason);
    }
    void postMenuBarNeedsRebuild() override { owner_.services_.notifications.post(orvantisMenuBarNeedsRebuild); }
    void updateMonitorHotkey(HotkeyField field, const HotkeyDescriptor& h) override {
        GlobalEventMonitor* m = owner_.collaborators_.monitor;
        if (m == nullptr) return;
        switch (field) {
            case HotkeyField::layoutSwitch: m->updateHotkey(h); break;
            case HotkeyField::translation: m->updateTranslationHotkey(h); break;
            case HotkeyField::directTranslation: m->updateDirectTranslationHotkey(h); break;
            case HotkeyField::clipboard: m->updateClipboardHistoryHotkey(h); break;
            case HotkeyField::pomodoro: m->updatePomodoroHotkey(h); break;
            case HotkeyField::password: m->updatePasswordHotkey(h); break;
            case HotkeyField::snippets: m->updateSnippetExpanderHotkey(h); break;
            case HotkeyField::textTransformer: m->updateTextTransformerHotkey(h); break;
            case HotkeyField::hotkeyOverlay: m->updateHotkeyOverlayHotkey(h); break;
            case HotkeyField::keyboardLock: m->updateKeyboardLockHotkey(h); break;
            case HotkeyField::menuBarHider: m->updateMenuBarHiderHotkey(h); break;
            case HotkeyField::caffeine: m->updateCaffeineHotkey(h); break;
        }
    }
    void setClipboardHistoryMaxSize(int size) override {
        if (auto* clipboard = owner_.collaborators_.clipboard) clipboard->history().resize(size);
    }
    void settingsSyncToggled() override {
        if (auto* sync = owner_.collaborators_.sync) sync->settingsToggleDidChange();
    }
    void clipboardSyncToggled() override {
        if (auto* sync = owner_.collaborators_.sync) sync->clipboardToggleDidChange();
    }
    void closeWindow() override {
        log().info("settings: saved");
        QTimer::singleShot(0, &window_, [w = &window_] { w->close(); });
    }

private:
    const LogCategory& log() { return owner_.services_.logger.log().app; }

    SettingsWindowAssembly& owner_;
    ui::SettingsWindowController& window_;
    SettingsStrings strings_;
};

SettingsWindowAssembly::SettingsWindowAssembly(AppServices& services, SettingsWindowCollaborators collaborators)
    : services_(services), collaborators_(collaborators), feedback_(std::make_unique<FeedbackAssembly>(services)) {
    // The diagnostics say whether a synced folder was found at launch.
    if (SyncManager* sync = collaborators_.sync) {
        feedback_->setSyncFolderAvailability([sync] { return sync->isICloudDriveAvailable(); });
    }
}

SettingsWindowAssembly::~SettingsWindowAssembly() = default;

void SettingsWindowAssembly::suspendGrabs(bool capturing) {
    GlobalEventMonitor* monitor = collaborators_.monitor;
    if (monitor == nullptr) return;
    // The monitor lets go of the keyboard entirely while a capture runs: its grabs would
    // swallow the very keys being captured, and its hotkeys must not fire meanwhile.
    if (capturing) {
        monitorWasRunning_ = monitor->isRunning();
        if (monitorWasRunning_) monitor->stop();
        services_.logger.log().app.info("settings: hotkey capture; the global hotkeys are suspended");
    } else if (monitorWasRunning_) {
        monitorWasRunning_ = false;
        monitor->start();
        services_.logger.log().app.info("settings: hotkey capture ended; the global hotkeys are back");
    }
}

void SettingsWindowAssembly::openSettings() {
    if (window_) {
        window_->show();
        window_->raise();
        window_->activateWindow();
        return;
    }
    ui::SettingsWindowServices ui;
    // The applications folders are read once for each window, at the first list that needs them.
    ui.installedApps = [this, cache = std::make_shared<std::optional<std::vector<ui::InstalledApp>>>()] {
        if (!*cache)
            *cache = listableApplications(freedesktop::DesktopEntries(), services_.logger.log().app, reportedDesktopFiles_);
        return **cache;
    };
    ui.virtualKeyForScanCode = virtualKeyForScanCode;
    ui.focusCommandsAvailable = [this] {
        // The Pomodoro's own Focus switch looks again, so that its next session knows too.
        if (auto* pomodoro = collaborators_.pomodoro) return pomodoro->coordinator().dnd().refreshAvailability();
        if (auto* commands = services_.desktop.focusCommands) return DNDManager::isSetupComplete(*commands);
        return false;
    };
    ui.openFocusCommandFolder = [this] { openFocusCommandFolder(services_.logger); };
    ui.suspendGrabs = [this](bool capturing) { suspendGrabs(capturing); };
    ui.grabKeyboard = [](QWindow& window) {
        // Only X11 grabs for real; Qt's other platforms (offscreen in tests) have no grab to lose.
        return QGuiApplication::platformName() != QLatin1String("xcb") || window.setKeyboardGrabEnabled(true);
    };
    ui.pagePainted = [this](SettingsSection section, bool firstOfWindow, double milliseconds) {
        char figure[32];
        std::snprintf(figure, sizeof figure, "%.1f ms", milliseconds);
        services_.logger.log().app.info(
            firstOfWindow ? "settings: window painted, " + std::string(caseName(section)) + " page, " + figure +
                                " after it was asked for"
                          : "settings: " + std::string(caseName(section)) + " page painted " + figure +
                                " after it was chosen");
    };
    ui.captureInterrupted = [this](std::string_view why) {
        services_.logger.log().app.warning("settings: hotkey capture cancelled, " + std::string(why));
    };
    ui.clearClipboardHistory = [this] {
        if (auto* clipboard = collaborators_.clipboard) {
            clipboard->history().clear();
            clipboard->persistence().clear();
        }
    };
    ui.makeSaveTarget = [this](ui::SettingsWindowController& window) -> std::unique_ptr<SettingsSaveTarget> {
        return std::make_unique<SaveTarget>(*this, window);
    };
    ui.version = versionDisplayString(build::kVersion, build::kBuild);
    ui.openFeedback = [this] { feedback_->openFeedback(); };
    if (auto* sync = collaborators_.sync; sync && sync->folderURL()) ui.syncFolder = sync->folderURL()->string();
    window_ = std::make_unique<ui::SettingsWindowController>(services_.settings, std::move(ui), [this] {
        // Dropped one turn later: the window is still inside its own close event. It stops being
        // the open window now, so that opening again within this turn makes a new one.
        closing_.push_back(std::move(window_));
        QTimer::singleShot(0, &dropContext_, [this] {
            closing_.clear();
            // What the window leaves behind: the icons it drew, the holes its widgets leave all
            // over the heap, and the pages of its code, which the next opening maps again.
            QPixmapCache::clear();
            trimHeap();
            releaseOwnCodePages();  // last, so that no code of ours runs after it in this turn
        });
    });
    if (window_->form().snippetsUnreadable())
        services_.logger.log().app.warning(
            "settings: the stored snippet list does not decode; the table starts empty and the stored "
            "value is kept unless the table is edited and saved");
    window_->show();
    window_->raise();
    window_->activateWindow();
    services_.logger.log().app.info("settings: window opened");
}

}  // namespace orvantis::app
