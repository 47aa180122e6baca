#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "platform/main_loop.h"
#include "platform/serial_queue.h"
#include "platform/subscription.h"

struct stat;

namespace orvantis {
namespace files {
class FileChangeWatch;
}

struct AppLog;

/// Binary data in the store, kept apart from strings so that the two never mix.
struct PreferenceData {
    std::string bytes;
    bool operator==(const PreferenceData&) const = default;
};

/// A value of the store: the types a property list can hold at the top level of a setting.
using PreferenceValue =
    std::variant<bool, std::int64_t, double, std::string, std::vector<std::string>, PreferenceData>;

/// The persistent key-value store of the user's preferences.
///
/// Values live in memory and in one XML property list. A write is in memory at once and on disk
/// moments later: a writer queue replaces the file atomically (temporary file, fsync, rename)
/// under an exclusive lock, after re-reading the file and applying only the keys this process
/// changed, so that two processes never lose each other's keys. Registered defaults answer for
/// absent keys and are never written. With `startWatching`, changes that another process writes
/// are noticed, through a change event of the file's folder rather than a timer, and announced
/// like local ones. A file that cannot be read is kept aside as
/// `<name>.corrupt-<timestamp>` and logged; the store then starts from its defaults.
///
/// Thread-safe. Change callbacks run on the thread that set the value, or on the main loop for
/// changes read from disk.
class PreferenceStore {
public:
    /// Reads `file` now. `log` may be null (then nothing is logged).
    PreferenceStore(std::filesystem::path file, platform::SerialQueue& writer, AppLog* log);
    /// Writes what is still pending and waits for it.
    ~PreferenceStore();
    PreferenceStore(const PreferenceStore&) = delete;
    PreferenceStore& operator=(const PreferenceStore&) = delete;

    /// Adds defaults that answer while a key has no stored value. Never persisted; a later
    /// registration of the same key replaces the earlier one.
    void registerDefaults(const std::map<std::string, PreferenceValue>& defaults);

    /// The stored value, else the registered default, else nullopt.
    std::optional<PreferenceValue> object(std::string_view key) const;
    /// True when `key` has a stored or registered value.
    bool contains(std::string_view key) const;
    /// True when `key` has a stored value (registered defaults do not count).
    bool hasStoredValue(std::string_view key) const;

    /// Numbers are true when non-zero; the strings "true"/"yes" (any case) and non-zero
    /// numbers in text are true; everything else, and absence, is false.
    bool boolForKey(std::string_view key) const;
    /// Integers as they are, reals truncated, booleans as 0/1, strings with a leading decimal
    /// number parsed; everything else, and absence, is 0.
    std::int64_t integerForKey(std::string_view key) const;
    /// boolForKey and integerForKey in one look-up, with nullopt for a key without any value.
    std::optional<bool> boolIfPresent(std::string_view key) const;
    std::optional<std::int64_t> integerIfPresent(std::string_view key) const;
    /// Strings as they are, numbers in decimal; nullopt otherwise.
    std::optional<std::string> stringForKey(std::string_view key) const;
    /// An array whose every element is a string; nullopt otherwise.
    std::optional<std::vector<std::string>> stringArrayForKey(std::string_view key) const;
    /// Data, or a string's UTF-8 bytes; nullopt otherwise.
    std::optional<std::string> dataForKey(std::string_view key) const;

    /// Stores `value` under `key` and announces the change.
    void set(std::string_view key, PreferenceValue value);
    /// Removes the stored value of `key` (a registered default answers again) and announces it.
    void remove(std::string_view key);

    /// Called with the keys that changed, after each change.
    [[nodiscard]] Subscription onChange(std::function<void(const std::vector<std::string>& keys)> callback);

    /// Waits until every change made before the call is on disk (or has failed and been logged).
    void flush();

    /// Watches the file for changes written by another process, through `loop`: the folder's
    /// change events wake the loop, nothing else does. Where the kernel refuses the watch (or
    /// the loop cannot watch descriptors), the file is checked every kFallbackCheckInterval
    /// instead, and that is logged. Main thread. Runs until the store is destroyed.
    void startWatching(platform::MainLoop& loop);
    /// The interval of the checks when the folder cannot be watched.
    static constexpr platform::Duration kFallbackCheckInterval = std::chrono::milliseconds(500);
    /// One check of the watch: re-reads the file if another process replaced it, merges what
    /// changed and announces it. Main thread.
    void checkForExternalChanges();

    /// Every stored value (no registered defaults).
    std::map<std::string, PreferenceValue> storedValues() const;

    const std::filesystem::path& file() const { return file_; }

    /// Converts between the store's values and a property list in XML (or binary, when reading).
    /// Keys whose values have other types are skipped on reading. Nullopt when the bytes are
    /// no property list with a dictionary at its root.
    static std::optional<std::map<std::string, PreferenceValue>> parsePropertyList(std::string_view bytes);
    static std::string serializePropertyList(const std::map<std::string, PreferenceValue>& values);

private:
    struct FileSignature {
        std::uint64_t device = 0, inode = 0, size = 0;
        std::int64_t mtimeNs = 0;
        bool operator==(const FileSignature&) const = default;
    };
    struct StringHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
    };
    using ValueMap = std::unordered_map<std::string, PreferenceValue, StringHash, std::equal_to<>>;
    /// nullopt means: remove the key.
    using PendingChanges = std::map<std::string, std::optional<PreferenceValue>>;

    /// The identity of a file as stat() gives it: a replaced file always has a new one.
    static FileSignature signatureOf(const struct stat& info);
    const PreferenceValue* lookupLocked(std::string_view key) const;
    static bool asBool(const PreferenceValue& value);
    static std::int64_t asInteger(const PreferenceValue& value);
    void markDirtyLocked(std::string_view key, std::optional<PreferenceValue> value);
    void writePending();
    std::vector<std::string> mergeFromDiskLocked(const std::map<std::string, PreferenceValue>& disk);
    void announce(std::vector<std::string> keys, bool fromDisk);
    void loadInitial();
    std::filesystem::path setAside(const std::filesystem::path& bad);
    void logError(const std::string& message) const;

    std::filesystem::path file_;
    platform::SerialQueue& writer_;
    AppLog* log_;
    CallbackList<const std::vector<std::string>&> changed_;

    mutable std::mutex mutex_;
    ValueMap stored_;
    ValueMap registered_;
    PendingChanges pending_;
    bool writeScheduled_ = false;
    std::optional<FileSignature> lastKnown_;  ///< the file as this process last saw or wrote it
    std::uint64_t generation_ = 0;            ///< rises whenever memory takes the disk's content
    platform::MainLoop* loop_ = nullptr;
    std::unique_ptr<files::FileChangeWatch> fileWatch_;
    Subscription fileWatchEvents_;  ///< ends before fileWatch_ closes its descriptor
    platform::TimerHandle watchTimer_;  ///< only when the folder cannot be watched
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis
