#include "core/sync/sync_manager.h"

#include <cerrno>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include <plist/plist.h>

#include "core/clipboard/clipboard_history.h"
#include "core/clipboard/clipboard_snapshot.h"
#include "core/files/file_io.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/property_list_value.h"

namespace orvantis {
namespace {

struct PlistDeleter {
    void operator()(plist_t node) const {
        if (node != nullptr) plist_free(node);
    }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

std::string toBinary(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    std::string out = bytes != nullptr ? std::string(bytes, length) : std::string();
    std::free(bytes);
    return out;
}

std::string fullKey(std::string_view shortName) {
    return std::string(settings::kKeyPrefix) + std::string(shortName);
}

/// The values dictionary: every listed key that has a value, in list order.
PlistPtr valuesNode(const AppSettings& settings, std::size_t& count) {
    PlistPtr values(plist_new_dict());
    count = 0;
    for (std::string_view name : SyncManager::syncedKeys()) {
        const std::string key = fullKey(name);
        if (auto value = settings.store().object(key)) {
            plist_dict_set_item(values.get(), key.c_str(), nodeFromPreferenceValue(*value));
            ++count;
        }
    }
    return values;
}

std::string describeError(int error) { return files::errnoText(error); }

const char* boolText(bool b) { return b ? "true" : "false"; }

}  // namespace

const std::array<std::string_view, 52>& SyncManager::syncedKeys() {
    static const std::array<std::string_view, 52> keys = {
        "hotkey", "switchDelayMs", "layoutSwitchEnabled", "translationEnabled", "translationHotkey",
        "directTranslationHotkey", "settingsLanguage", "clipboardHistoryEnabled", "clipboardHistoryHotkey",
        "clipboardHistorySize", "clipboardStoreNonText", "clipboardPersistEnabled", "clipboardIgnoredApps",
        "pomodoroEnabled", "pomodoroHotkey", "workDurationMinutes", "breakDurationMinutes",
        "longBreakDurationMinutes", "pomodoroToggleDND", "passwordEnabled", "passwordHotkey", "passwordMode",
        "passwordLength", "passwordIncludeUppercase", "passwordIncludeLowercase", "passwordIncludeDigits",
        "passwordIncludeSymbols", "passwordClipboardClearSec", "snippetExpanderEnabled", "snippetExpanderHotkey",
        "snippetExpanderEntries", "translatorPrimaryLanguage", "translatorSecondaryLanguage",
        "textTransformerEnabled", "textTransformerHotkey", "hotkeyOverlayHotkey", "keyboardLockHotkey",
        "keyboardLockAutoUnlockMin", "reverseTrackpadScroll", "reverseMouseScroll", "reverseMagicMouseScroll",
        "menuBarHiderEnabled", "menuBarHiderAutoCollapseSec", "menuBarHiderHotkey", "caffeineHotkey",
        "caffeineDefaultDurationMin", "caffeineEnabled", "caffeineActiveApps", "caffeineLidClose",
        "caffeineLidCloseAlways", "keyboardLockEnabled", "finderCutEnabled"};
    return keys;
}

std::vector<std::filesystem::path> SyncManager::candidateParents(const std::filesystem::path& home,
                                                                 std::string_view configured) {
    if (home.empty() && std::filesystem::path(configured).is_relative()) return {};
    if (!configured.empty()) {
        std::filesystem::path chosen(configured);
        if (chosen.is_relative()) chosen = home / chosen;
        return {chosen};
    }
    return {home / "Nextcloud", home / "Dropbox", home / "Sync", home / "OneDrive"};
}

SyncManager::SyncManager(AppSettings& settings, ClipboardHistory* history, SyncFiles& files,
                         platform::MainLoop& loop, const platform::Clock& clock, const LogCategory& log,
                         std::filesystem::path home)
    : settings_(settings), history_(history), files_(files), loop_(loop), clock_(clock), log_(log) {
    const std::string configured = settings_.get(settings::kSyncFolderPath);
    const auto candidates = candidateParents(home, configured);
    for (const auto& parent : candidates) {
        if (files_.isDirectory(parent)) {
            folderURL_ = parent / std::string(kFolderName);
            break;
        }
    }
    if (folderURL_) {
        log_.info("init: synced folder found, target=" + folderURL_->string());
    } else {
        std::string where;
        for (const auto& parent : candidates) where += (where.empty() ? "" : ", ") + parent.string();
        log_.warning("init: synced folder (" + where + ") not present — sync will be a no-op");
    }
}

SyncManager::~SyncManager() { *alive_ = false; }

bool SyncManager::settingsSyncOn() const { return settings_.iCloudSyncSettingsEnabled(); }
bool SyncManager::clipboardSyncOn() const { return history_ != nullptr && settings_.iCloudSyncClipboardEnabled(); }

void SyncManager::start() {
    log_.info(std::string("start: settingsSync=") + boolText(settingsSyncOn()) +
              ", clipboardSync=" + boolText(clipboardSyncOn()) + ", syncFolderAvailable=" +
              boolText(isICloudDriveAvailable()));
    ensureFolderExists();
    if (settingsSyncOn()) pullSettingsIfNewer();
    if (clipboardSyncOn()) pullClipboardIfNewer();
    storeChanges_ = settings_.store().onChange([this, alive = std::weak_ptr<bool>(alive_)](
                                                    const std::vector<std::string>&) {
        // The store announces on the thread that wrote; the work belongs to the main loop. Posted
        // behind the writes of a pull, it still finds the pull's flag raised.
        loop_.post([this, alive] {
            if (auto a = alive.lock(); a && *a) userDefaultsDidChange();
        });
    });
    started_ = true;
    restartPollingIfNeeded();
}

void SyncManager::ensureFolderExists() {
    if (!folderURL_ || files_.isDirectory(*folderURL_)) return;
    if (const int error = files_.createDirectories(*folderURL_); error == 0) {
        log_.info("created synced folder at " + folderURL_->string());
        folderProblem_.reset();
    } else {
        reportOnce(folderProblem_, "create:" + std::to_string(error),
                   "failed to create synced folder: " + describeError(error));
    }
}

void SyncManager::settingsToggleDidChange() {
    const bool on = settingsSyncOn();
    log_.info(std::string("toggle: settings sync ") + (on ? "ENABLED" : "DISABLED"));
    if (on) {
        ensureFolderExists();
        pullSettingsIfNewer();
        schedulePush(SyncSide::settings);
    }
    restartPollingIfNeeded();
}

void SyncManager::clipboardToggleDidChange() {
    const bool on = clipboardSyncOn();
    log_.info(std::string("toggle: clipboard sync ") + (on ? "ENABLED" : "DISABLED"));
    if (on) {
        ensureFolderExists();
        pullClipboardIfNewer();
        schedulePush(SyncSide::clipboard);
    }
    restartPollingIfNeeded();
}

void SyncManager::clipboardDidChange() {
    if (isApplyingRemoteClipboard_) return;
    schedulePush(SyncSide::clipboard);
}

void SyncManager::appBecameActive() {
    log_.debug("app became active → pull check");
    poll();
}

void SyncManager::userDefaultsDidChange() {
    if (isApplyingRemoteSettings_) return;
    if (settingsSyncOn()) schedulePush(SyncSide::settings);
}

void SyncManager::restartPollingIfNeeded() {
    pollTimer_.cancel();
    if ((settingsSyncOn() || clipboardSyncOn()) && folderURL_) {
        log_.debug("polling: started, interval=5s");
        pollTimer_ = loop_.every(kPollInterval, [this] { poll(); });
    } else {
        log_.debug("polling: stopped (nothing to sync)");
    }
}

void SyncManager::poll() {
    if (checkFolderPresence()) {
        // Back after an absence: what could not be written then is written now.
        if (settingsPushFailed_ && settingsSyncOn()) schedulePush(SyncSide::settings);
        if (clipboardPushFailed_ && clipboardSyncOn()) schedulePush(SyncSide::clipboard);
    }
    if (settingsSyncOn()) pullSettingsIfNewer();
    if (clipboardSyncOn()) pullClipboardIfNewer();
}

bool SyncManager::checkFolderPresence() {
    if (!folderURL_) return false;
    const bool present = files_.isDirectory(*folderURL_);
    if (present == folderPresent_) return false;
    folderPresent_ = present;
    if (!present) {
        log_.warning("synced folder " + folderURL_->string() +
                     " is gone (unmounted or removed); local settings and history are kept, sync waits for it");
        return false;
    }
    log_.info("synced folder " + folderURL_->string() + " is back");
    return true;
}

void SyncManager::schedulePush(SyncSide side) {
    if (!folderURL_) return;
    const bool settingsSide = side == SyncSide::settings;
    log_.debug(settingsSide ? "schedule push: settings (debounce 1.5s)" : "schedule push: clipboard (debounce 0.8s)");
    auto& pending = settingsSide ? pendingSettingsPush_ : pendingClipboardPush_;
    pending.cancel();
    pending = loop_.postAfter(settingsSide ? platform::Duration(kSettingsPushDelay)
                                           : platform::Duration(kClipboardPushDelay),
                              [this, settingsSide] {
                                  if (settingsSide) pushSettings();
                                  else pushClipboard();
                              });
}

std::string SyncManager::settingsFileBytes(const AppSettings& settings, std::chrono::system_clock::time_point now) {
    std::size_t count = 0;
    PlistPtr root(plist_new_dict());
    plist_dict_set_item(root.get(), "version", plist_new_uint(1));
    plist_dict_set_item(root.get(), "writtenAt", plist_new_string(iso8601(now).c_str()));
    plist_dict_set_item(root.get(), "values", valuesNode(settings, count).release());
    return toBinary(root.get());
}

void SyncManager::pushSettings() {
    if (!settingsSyncOn()) {
        log_.debug("push settings: skipped (disabled)");
        return;
    }
    if (!folderURL_) {
        log_.debug("push settings: skipped (no synced folder)");
        return;
    }
    std::size_t count = 0;
    PlistPtr values = valuesNode(settings_, count);
    const std::string payload = toBinary(values.get());
    const std::size_t hash = std::hash<std::string_view>{}(payload);
    if (hash == lastWrittenSettingsHash_) {
        log_.debug("push settings: skipped (no content change, " + std::to_string(count) + " keys)");
        return;
    }
    lastWrittenSettingsHash_ = hash;

    PlistPtr root(plist_new_dict());
    plist_dict_set_item(root.get(), "version", plist_new_uint(1));
    plist_dict_set_item(root.get(), "writtenAt", plist_new_string(iso8601(clock_.wallNow()).c_str()));
    plist_dict_set_item(root.get(), "values", values.release());
    // The program's folder comes back when it was removed; a share that went away is not made up.
    if (!files_.isDirectory(*folderURL_) && files_.isDirectory(folderURL_->parent_path())) ensureFolderExists();
    if (const int error = files_.replace(settingsFile(), toBinary(root.get())); error != 0) {
        // Forgotten, so that the same content is written once the folder takes writes again.
        lastWrittenSettingsHash_ = 0;
        settingsPushFailed_ = true;
        reportOnce(settingsPushProblem_, std::to_string(error),
                   "push settings: write failed — " + describeError(error) + "; the local settings are kept");
        return;
    }
    settingsPushFailed_ = false;
    settingsPushProblem_.reset();
    if (auto date = files_.modificationDate(settingsFile())) lastAppliedSettingsDate_ = *date;
    log_.info("push settings: wrote " + std::to_string(count) + " keys, file size " +
              std::to_string(payload.size()) + " B");
}

void SyncManager::pushClipboard() {
    if (!clipboardSyncOn()) {
        log_.debug("push clipboard: skipped (disabled)");
        return;
    }
    if (!folderURL_) {
        log_.debug("push clipboard: skipped (no synced folder)");
        return;
    }
    ClipboardSnapshot snapshot;
    for (const auto& item : history_->pinned())
        if (auto persisted = item.toPersisted()) snapshot.pinned.push_back(std::move(*persisted));
    for (const auto& item : history_->unpinned())
        if (auto persisted = item.toPersisted()) snapshot.unpinned.push_back(std::move(*persisted));
    const auto bytes = encodeSnapshot(snapshot);
    if (!bytes) {
        log_.error("push clipboard: JSON encode failed");
        return;
    }
    const std::string counts =
        std::to_string(snapshot.pinned.size()) + " pinned + " + std::to_string(snapshot.unpinned.size()) + " unpinned";
    const std::size_t hash = std::hash<std::string_view>{}(*bytes);
    if (hash == lastWrittenClipboardHash_) {
        log_.debug("push clipboard: skipped (no content change, " + counts + ")");
        return;
    }
    lastWrittenClipboardHash_ = hash;
    // The program's folder comes back when it was removed; a share that went away is not made up.
    if (!files_.isDirectory(*folderURL_) && files_.isDirectory(folderURL_->parent_path())) ensureFolderExists();
    if (const int error = files_.replace(clipboardFile(), *bytes); error != 0) {
        lastWrittenClipboardHash_ = 0;
        clipboardPushFailed_ = true;
        reportOnce(clipboardPushProblem_, std::to_string(error),
                   "push clipboard: write failed — " + describeError(error) + "; the local history is kept");
        return;
    }
    clipboardPushFailed_ = false;
    clipboardPushProblem_.reset();
    if (auto date = files_.modificationDate(clipboardFile())) lastAppliedClipboardDate_ = *date;
    log_.info("push clipboard: wrote " + counts + " items, " + std::to_string(bytes->size()) + " B");
}

void SyncManager::pullSettingsIfNewer() {
    const auto date = folderURL_ ? files_.modificationDate(settingsFile()) : std::nullopt;
    if (!date) {
        log_.debug("pull settings: file not present yet");
        return;
    }
    if (*date <= lastAppliedSettingsDate_) return;
    log_.debug("pull settings: remote mtime " + describeDate(*date) + " > lastApplied " +
               describeDate(lastAppliedSettingsDate_));
    const std::string path = settingsFile().string();
    const std::string situation = std::to_string(date->time_since_epoch().count());
    const files::FileRead read = files_.read(settingsFile(), kMaxFileSize);
    if (read.status != files::FileRead::Status::Read) {
        const std::string why = read.error == EFBIG ? "larger than " + std::to_string(kMaxFileSize) + " B, not read"
                                                    : describeError(read.error);
        reportOnce(settingsPullProblem_, situation, "pull settings: read/parse failed at " + path + " (" + why +
                                                        "); the local settings are kept");
        return;
    }
    plist_t raw = nullptr;
    if (!read.bytes.empty()) plist_from_memory(read.bytes.data(), static_cast<std::uint32_t>(read.bytes.size()), &raw);
    PlistPtr root(raw);
    plist_t values = nullptr;
    if (root && plist_get_node_type(root.get()) == PLIST_DICT) values = plist_dict_get_item(root.get(), "values");
    if (values == nullptr || plist_get_node_type(values) != PLIST_DICT) {
        reportOnce(settingsPullProblem_, situation,
                   "pull settings: read/parse failed at " + path +
                       " (no property list with a values dictionary; half-written?); the local settings are kept");
        return;
    }
    settingsPullProblem_.reset();
    log_.info("pull settings: applying " + std::to_string(plist_dict_get_size(values)) + " keys from remote (file " +
              std::to_string(read.bytes.size()) + " B)");
    isApplyingRemoteSettings_ = true;
    for (std::string_view name : syncedKeys()) {
        const std::string key = fullKey(name);
        plist_t node = plist_dict_get_item(values, key.c_str());
        if (node == nullptr) continue;
        auto value = preferenceValueFromNode(node);
        if (!value) continue;  // a type the store cannot hold: the local value stays
        if (settings_.store().hasStoredValue(key) && settings_.store().object(key) == value) continue;
        settings_.store().set(key, std::move(*value));
    }
    // Lowered one turn later, after the store's announcements of these writes.
    loop_.post([this, alive = std::weak_ptr<bool>(alive_)] {
        if (auto a = alive.lock(); a && *a) isApplyingRemoteSettings_ = false;
    });
    lastAppliedSettingsDate_ = *date;
}

void SyncManager::pullClipboardIfNewer() {
    const auto date = folderURL_ ? files_.modificationDate(clipboardFile()) : std::nullopt;
    if (!date) {
        log_.debug("pull clipboard: file not present yet");
        return;
    }
    if (*date <= lastAppliedClipboardDate_) return;
    log_.debug("pull clipboard: remote mtime " + describeDate(*date) + " > lastApplied " +
               describeDate(lastAppliedClipboardDate_));
    const std::string path = clipboardFile().string();
    const std::string situation = std::to_string(date->time_since_epoch().count());
    const files::FileRead read = files_.read(clipboardFile(), kMaxFileSize);
    std::string why;
    std::optional<ClipboardSnapshot> snapshot;
    if (read.status != files::FileRead::Status::Read) {
        why = read.error == EFBIG ? "larger than " + std::to_string(kMaxFileSize) + " B, not read"
                                  : describeError(read.error);
    } else {
        snapshot = decodeSnapshot(read.bytes, &why);
    }
    if (!snapshot) {
        reportOnce(clipboardPullProblem_, situation,
                   "pull clipboard: read/decode failed at " + path + " (" + why + "); the local history is kept");
        return;
    }
    clipboardPullProblem_.reset();
    std::vector<ClipboardItem> pinned, unpinned;
    for (auto& record : snapshot->pinned) pinned.emplace_back(std::move(record));
    for (auto& record : snapshot->unpinned) unpinned.emplace_back(std::move(record));
    log_.info("pull clipboard: applying " + std::to_string(pinned.size()) + " pinned + " +
              std::to_string(unpinned.size()) + " unpinned items from remote");
    isApplyingRemoteClipboard_ = true;
    history_->restore(std::move(pinned), std::move(unpinned));
    isApplyingRemoteClipboard_ = false;
    lastAppliedClipboardDate_ = *date;
}

void SyncManager::reportOnce(std::optional<std::string>& last, const std::string& situation,
                             const std::string& message, bool warning) {
    if (last && *last == situation) return;
    last = situation;
    if (warning) log_.warning(message);
    else log_.error(message);
}

std::string SyncManager::iso8601(std::chrono::system_clock::time_point t) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(
        std::chrono::floor<std::chrono::seconds>(t));
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return buffer;
}

std::string SyncManager::describeDate(std::chrono::system_clock::time_point t) {
    if (t == std::chrono::system_clock::time_point::min()) return "0001-01-01 00:00:00 +0000";
    const std::time_t seconds = std::chrono::system_clock::to_time_t(
        std::chrono::floor<std::chrono::seconds>(t));
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char buffer[40];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S +0000", &utc);
    return buffer;
}

}  // namespace orvantis
