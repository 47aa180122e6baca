#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/sync/sync_files.h"

#include "platform/clock.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"

namespace orvantis {

class AppSettings;
class ClipboardHistory;
class LogCategory;

/// Mirrors a fixed list of settings and the text entries of the clipboard history between the
/// computers of one user through two plain files in a folder that the user's own sync client
/// replicates (Nextcloud, Syncthing, Dropbox, OneDrive, a network share). It never talks to a
/// sync service: it writes `settings.json` (a binary property list in spite of its name) and
/// `clipboard.json`, and notices the other side's writes by their modification dates, polled
/// every 5 s and when the program becomes active. The last writer wins, per file; a pull never
/// deletes a local setting. Local changes are pushed after a delay (1.5 s for settings, 0.8 s
/// for the clipboard), so a burst costs one write; what the program writes or applies itself
/// never comes back as a change (echo suppression through a flag, the applied date and a hash
/// of the payload).
///
/// Only the two exact file names are ever read: a sync client's partial downloads and conflict
/// copies ("clipboard (conflicted copy).json", "clipboard.sync-conflict-….json") are left alone.
/// Failures (a folder that vanished, a read-only or full disk, a file of the wrong kind, too
/// large or half-written) are logged once per situation, never once per poll, and never touch
/// the local state.
///
/// Owned by the sync assembly; lives for the whole process. Main thread only.
class SyncManager {
public:
    static constexpr std::chrono::seconds kPollInterval{5};
    static constexpr std::chrono::milliseconds kSettingsPushDelay{1500};
    static constexpr std::chrono::milliseconds kClipboardPushDelay{800};
    /// Files larger than this are not read: no honest settings or clipboard file comes near it.
    static constexpr std::size_t kMaxFileSize = 32u * 1024u * 1024u;
    static constexpr std::string_view kFolderName = "Orvantis";
    static constexpr std::string_view kSettingsFileName = "settings.json";
    static constexpr std::string_view kClipboardFileName = "clipboard.json";

    /// The 52 settings that travel, short names, in the order of the file.
    static const std::array<std::string_view, 52>& syncedKeys();

    /// Where the program's folder lies: `configured` when it is not empty, else the first
    /// existing of ~/Nextcloud, ~/Dropbox, ~/Sync and ~/OneDrive; the parent to look for.
    static std::vector<std::filesystem::path> candidateParents(const std::filesystem::path& home,
                                                               std::string_view configured);

    /// Looks for the folder once (`syncFolderPath` of `settings`, else the usual places under
    /// `home`) and logs what it found; it never looks again. `history` may be null (no
    /// clipboard on this desktop): the clipboard side is then inert.
    SyncManager(AppSettings& settings, ClipboardHistory* history, SyncFiles& files, platform::MainLoop& loop,
                const platform::Clock& clock, const LogCategory& log, std::filesystem::path home);
    ~SyncManager();
    SyncManager(const SyncManager&) = delete;
    SyncManager& operator=(const SyncManager&) = delete;

    /// The launch step: creates the folder if needed, pulls what is newer, watches the settings
    /// store and starts the poll.
    void start();
    /// The settings window's Save changed a switch.
    void settingsToggleDidChange();
    void clipboardToggleDidChange();
    /// The clipboard history changed locally.
    void clipboardDidChange();
    /// One of the program's windows became active: a pull check.
    void appBecameActive();

    /// True when a folder was found at construction.
    bool isICloudDriveAvailable() const { return folderURL_.has_value(); }
    /// The program's folder inside the synced folder; nullopt when none was found.
    const std::optional<std::filesystem::path>& folderURL() const { return folderURL_; }

    std::chrono::system_clock::time_point lastAppliedSettingsDate() const { return lastAppliedSettingsDate_; }
    std::chrono::system_clock::time_point lastAppliedClipboardDate() const { return lastAppliedClipboardDate_; }
    bool isPolling() const { return pollTimer_.isActive(); }

    /// The bytes of a settings file: root `version` 1, `writtenAt` (ISO 8601, UTC) and `values`
    /// with the listed keys that `settings` has a value for, in list order.
    static std::string settingsFileBytes(const AppSettings& settings, std::chrono::system_clock::time_point now);
    /// "2024-01-02T03:04:05Z".
    static std::string iso8601(std::chrono::system_clock::time_point t);
    /// A date as the log prints it: "2024-01-02 03:04:05 +0000".
    static std::string describeDate(std::chrono::system_clock::time_point t);

private:
    enum class SyncSide { settings, clipboard };
    /// A failure that has been logged; the same one is not logged again until it changes.
    struct Problem {
        std::string key;
    };

    void ensureFolderExists();
    void userDefaultsDidChange();
    void restartPollingIfNeeded();
    void poll();
    void schedulePush(SyncSide side);
    void pushSettings();
    void pushClipboard();
    void pullSettingsIfNewer();
    void pullClipboardIfNewer();
    bool settingsSyncOn() const;
    bool clipboardSyncOn() const;
    std::filesystem::path settingsFile() const { return *folderURL_ / std::string(kSettingsFileName); }
    std::filesystem::path clipboardFile() const { return *folderURL_ / std::string(kClipboardFileName); }
    /// Logs `message` as an error unless the same `situation` was the last one logged for this
    /// channel; answers whether it logged.
    void reportOnce(std::optional<std::string>& last, const std::string& situation, const std::string& message,
                    bool warning = false);
    /// Notes that the folder is present again (or gone), once per change.
    bool checkFolderPresence();

    AppSettings& settings_;
    ClipboardHistory* history_;
    SyncFiles& files_;
    platform::MainLoop& loop_;
    const platform::Clock& clock_;
    const LogCategory& log_;

    std::optional<std::filesystem::path> folderURL_;
    std::chrono::system_clock::time_point lastAppliedSettingsDate_ = std::chrono::system_clock::time_point::min();
    std::chrono::system_clock::time_point lastAppliedClipboardDate_ = std::chrono::system_clock::time_point::min();
    platform::TimerHandle pendingSettingsPush_;
    platform::TimerHandle pendingClipboardPush_;
    platform::TimerHandle pollTimer_;
    bool isApplyingRemoteSettings_ = false;
    bool isApplyingRemoteClipboard_ = false;
    std::size_t lastWrittenSettingsHash_ = 0;
    std::size_t lastWrittenClipboardHash_ = 0;
    bool started_ = false;

    bool folderPresent_ = true;
    /// A push that failed is tried again when the folder is back or at the next change.
    bool settingsPushFailed_ = false;
    bool clipboardPushFailed_ = false;
    std::optional<std::string> settingsPullProblem_, clipboardPullProblem_;
    std::optional<std::string> settingsPushProblem_, clipboardPushProblem_;
    std::optional<std::string> folderProblem_;

    Subscription storeChanges_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis
