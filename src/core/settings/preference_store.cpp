#include "core/settings/preference_store.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>

#include <plist/plist.h>

#include "core/files/file_change_watch.h"
#include "core/files/file_io.h"
#include "core/log/app_logger.h"
#include "core/settings/property_list_value.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace orvantis {
namespace {

// A preference file larger than this is not read: no honest settings file comes near it.
constexpr std::size_t kMaxFileSize = 64u * 1024u * 1024u;

struct PlistDeleter {
    void operator()(plist_t node) const {
        if (node != nullptr) plist_free(node);
    }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

using files::errnoText;
using files::FileDescriptor;
using files::FileRead;

// A property list string cannot hold NUL; cut at the first one rather than fail.
PreferenceValue withoutNul(PreferenceValue value) {
    if (auto* s = std::get_if<std::string>(&value)) {
        if (auto pos = s->find('\0'); pos != std::string::npos) s->resize(pos);
    } else if (auto* list = std::get_if<std::vector<std::string>>(&value)) {
        for (auto& item : *list)
            if (auto pos = item.find('\0'); pos != std::string::npos) item.resize(pos);
    }
    return value;
}

std::string timestampForFileName(std::time_t now) {
    std::tm tm{};
    localtime_r(&now, &tm);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y%m%d-%H%M%S", &tm);
    return buffer;
}

std::int64_t parseLeadingInteger(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    std::int64_t value = 0;
    auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec == std::errc::result_out_of_range) {
        return !text.empty() && text.front() == '-' ? INT64_MIN : INT64_MAX;
    }
    return ec == std::errc() ? value : 0;
}

std::int64_t truncateReal(double v) {
    if (!(v == v)) return 0;  // NaN
    if (v >= 9.2e18) return INT64_MAX;
    if (v <= -9.2e18) return INT64_MIN;
    return static_cast<std::int64_t>(v);
}

}  // namespace

PreferenceStore::FileSignature PreferenceStore::signatureOf(const struct stat& info) {
    return FileSignature{static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino),
                         static_cast<std::uint64_t>(info.st_size),
                         static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec};
}

PreferenceStore::PreferenceStore(std::filesystem::path file, platform::SerialQueue& writer, AppLog* log)
    : file_(std::move(file)), writer_(writer), log_(log) {
    loadInitial();
}

PreferenceStore::~PreferenceStore() {
    watchTimer_.cancel();
    fileWatchEvents_.reset();
    *alive_ = false;
    flush();
}

std::optional<std::map<std::string, PreferenceValue>> PreferenceStore::parsePropertyList(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > kMaxFileSize) return std::nullopt;
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &raw);
    PlistPtr root(raw);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
    std::map<std::string, PreferenceValue> values;
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(root.get(), &iter);
    for (;;) {
        char* key = nullptr;
        plist_t node = nullptr;
        plist_dict_next_item(root.get(), iter, &key, &node);
        if (node == nullptr) {
            std::free(key);
            break;
        }
        if (key != nullptr) {
            if (auto value = preferenceValueFromNode(node)) values.emplace(key, std::move(*value));
        }
        std::free(key);
    }
    std::free(iter);
    return values;
}

std::string PreferenceStore::serializePropertyList(const std::map<std::string, PreferenceValue>& values) {
    PlistPtr root(plist_new_dict());
    for (const auto& [key, value] : values) plist_dict_set_item(root.get(), key.c_str(), nodeFromPreferenceValue(value));
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    std::string out = xml != nullptr ? std::string(xml, length) : std::string();
    plist_to_xml_free(xml);
    return out;
}

void PreferenceStore::logError(const std::string& message) const {
    if (log_ != nullptr) log_->app.error(message);
}

std::filesystem::path PreferenceStore::setAside(const std::filesystem::path& bad) {
    const std::string base = bad.string() + ".corrupt-" + timestampForFileName(std::time(nullptr));
    std::filesystem::path target = base;
    for (int n = 1; std::filesystem::exists(target) && n < 1000; ++n) target = base + "-" + std::to_string(n);
    std::error_code ec;
    std::filesystem::rename(bad, target, ec);
    if (ec) {
        // Could not move it: copy it instead, so the bad file is kept before it is replaced.
        std::filesystem::copy_file(bad, target, ec);
        if (ec) return {};
    }
    return target;
}

void PreferenceStore::loadInitial() {
    FileRead read = files::readWholeFile(file_, kMaxFileSize);
    if (read.status == FileRead::Status::Absent) return;
    if (read.status == FileRead::Status::Failed) {
        logError("settings: cannot read " + file_.string() + " (" + errnoText(read.error) +
                 "); using defaults until it can be read");
        return;
    }
    auto values = parsePropertyList(read.bytes);
    if (!values) {
        const auto kept = setAside(file_);
        logError("settings: " + file_.string() + " is not a valid property list; kept it as " +
                 (kept.empty() ? std::string("(could not be moved)") : kept.filename().string()) +
                 " and started from defaults");
        return;
    }
    std::lock_guard lock(mutex_);
    for (auto& [key, value] : *values) stored_.insert_or_assign(key, std::move(value));
    lastKnown_ = signatureOf(read.info);
}

void PreferenceStore::registerDefaults(const std::map<std::string, PreferenceValue>& defaults) {
    std::lock_guard lock(mutex_);
    for (const auto& [key, value] : defaults) registered_.insert_or_assign(key, value);
}

const PreferenceValue* PreferenceStore::lookupLocked(std::string_view key) const {
    if (auto it = stored_.find(key); it != stored_.end()) return &it->second;
    if (auto it = registered_.find(key); it != registered_.end()) return &it->second;
    return nullptr;
}

std::optional<PreferenceValue> PreferenceStore::object(std::string_view key) const {
    std::lock_guard lock(mutex_);
    if (const auto* value = lookupLocked(key)) return *value;
    return std::nullopt;
}

bool PreferenceStore::contains(std::string_view key) const {
    std::lock_guard lock(mutex_);
    return lookupLocked(key) != nullptr;
}

bool PreferenceStore::hasStoredValue(std::string_view key) const {
    std::lock_guard lock(mutex_);
    return stored_.find(key) != stored_.end();
}

bool PreferenceStore::asBool(const PreferenceValue& value) {
    if (const auto* b = std::get_if<bool>(&value)) return *b;
    if (const auto* i = std::get_if<std::int64_t>(&value)) return *i != 0;
    if (const auto* d = std::get_if<double>(&value)) return *d != 0.0;
    if (const auto* s = std::get_if<std::string>(&value)) {
        std::string lower;
        for (char c : *s) lower.push_back(static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c));
        if (lower == "true" || lower == "yes") return true;
        return parseLeadingInteger(lower) != 0;
    }
    return false;
}

std::int64_t PreferenceStore::asInteger(const PreferenceValue& value) {
    if (const auto* i = std::get_if<std::int64_t>(&value)) return *i;
    if (const auto* b = std::get_if<bool>(&value)) return *b ? 1 : 0;
    if (const auto* d = std::get_if<double>(&value)) return truncateReal(*d);
    if (const auto* s = std::get_if<std::string>(&value)) return parseLeadingInteger(*s);
    return 0;
}

bool PreferenceStore::boolForKey(std::string_view key) const { return boolIfPresent(key).value_or(false); }

std::int64_t PreferenceStore::integerForKey(std::string_view key) const { return integerIfPresent(key).value_or(0); }

std::optional<bool> PreferenceStore::boolIfPresent(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto* value = lookupLocked(key);
    if (value == nullptr) return std::nullopt;
    return asBool(*value);
}

std::optional<std::int64_t> PreferenceStore::integerIfPresent(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto* value = lookupLocked(key);
    if (value == nullptr) return std::nullopt;
    return asInteger(*value);
}

std::optional<std::string> PreferenceStore::stringForKey(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto* value = lookupLocked(key);
    if (value == nullptr) return std::nullopt;
    if (const auto* s = std::get_if<std::string>(value)) return *s;
    if (const auto* i = std::get_if<std::int64_t>(value)) return std::to_string(*i);
    if (const auto* b = std::get_if<bool>(value)) return std::string(*b ? "1" : "0");
    if (const auto* d = std::get_if<double>(value)) {
        char buffer[64];
        auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, *d);
        return std::string(buffer, ec == std::errc() ? ptr : buffer);
    }
    return std::nullopt;
}

std::optional<std::vector<std::string>> PreferenceStore::stringArrayForKey(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto* value = lookupLocked(key);
    if (value == nullptr) return std::nullopt;
    if (const auto* list = std::get_if<std::vector<std::string>>(value)) return *list;
    return std::nullopt;
}

std::optional<std::string> PreferenceStore::dataForKey(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto* value = lookupLocked(key);
    if (value == nullptr) return std::nullopt;
    if (const auto* data = std::get_if<PreferenceData>(value)) return data->bytes;
    if (const auto* s = std::get_if<std::string>(value)) return *s;
    return std::nullopt;
}

void PreferenceStore::markDirtyLocked(std::string_view key, std::optional<PreferenceValue> value) {
    pending_.insert_or_assign(std::string(key), std::move(value));
    if (!writeScheduled_) {
        writeScheduled_ = true;
        writer_.async([this] { writePending(); });
    }
}

void PreferenceStore::set(std::string_view key, PreferenceValue value) {
    value = withoutNul(std::move(value));
    {
        std::lock_guard lock(mutex_);
        if (auto it = stored_.find(key); it != stored_.end()) {
            it->second = value;
        } else {
            stored_.emplace(std::string(key), value);
        }
        markDirtyLocked(key, std::move(value));
    }
    if (!changed_.empty()) announce({std::string(key)}, false);
}

void PreferenceStore::remove(std::string_view key) {
    {
        std::lock_guard lock(mutex_);
        if (auto it = stored_.find(key); it != stored_.end()) stored_.erase(it);
        markDirtyLocked(key, std::nullopt);
    }
    if (!changed_.empty()) announce({std::string(key)}, false);
}

Subscription PreferenceStore::onChange(std::function<void(const std::vector<std::string>& keys)> callback) {
    return changed_.add(std::move(callback));
}

void PreferenceStore::announce(std::vector<std::string> keys, bool fromDisk) {
    if (keys.empty()) return;
    platform::MainLoop* loop = nullptr;
    if (fromDisk) {
        std::lock_guard lock(mutex_);
        loop = loop_;
    }
    if (loop != nullptr) {
        loop->post([this, alive = std::weak_ptr<bool>(alive_), keys = std::move(keys)] {
            if (auto flag = alive.lock(); flag && *flag) changed_.notify(keys);
        });
    } else {
        changed_.notify(keys);
    }
}

void PreferenceStore::flush() {
    writer_.sync([] {});
}

std::vector<std::string> PreferenceStore::mergeFromDiskLocked(const std::map<std::string, PreferenceValue>& disk) {
    std::vector<std::string> changed;
    for (const auto& [key, value] : disk) {
        if (pending_.count(key) != 0) continue;  // our own newer change wins
        auto it = stored_.find(key);
        if (it == stored_.end()) {
            stored_.emplace(key, value);
            changed.push_back(key);
        } else if (!(it->second == value)) {
            it->second = value;
            changed.push_back(key);
        }
    }
    for (auto it = stored_.begin(); it != stored_.end();) {
        if (disk.count(it->first) == 0 && pending_.count(it->first) == 0) {
            changed.push_back(it->first);
            it = stored_.erase(it);
        } else {
            ++it;
        }
    }
    ++generation_;
    std::sort(changed.begin(), changed.end());
    return changed;
}

void PreferenceStore::writePending() {
    PendingChanges changes;
    {
        std::lock_guard lock(mutex_);
        changes.swap(pending_);
        writeScheduled_ = false;
    }
    if (changes.empty()) return;

    auto restorePending = [&] {
        std::lock_guard lock(mutex_);
        for (auto& [key, value] : changes) pending_.try_emplace(key, std::move(value));
    };

    const auto directory = file_.parent_path();
    std::error_code ec;
    std::filesystem::create_directories(directory, ec);
    const std::string lockPath = file_.string() + ".lock";
    FileDescriptor lockFd(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lockFd.valid()) {
        logError("settings: cannot write " + file_.string() + ": " + errnoText(errno));
        restorePending();
        return;
    }
    while (::flock(lockFd.get(), LOCK_EX) != 0 && errno == EINTR) {
    }

    // Start from what is on disk now, so that keys written by other processes stay.
    std::map<std::string, PreferenceValue> disk;
    bool diskReadable = true;
    FileRead read = files::readWholeFile(file_, kMaxFileSize);
    PlistPtr root;
    if (read.status == FileRead::Status::Read) {
        plist_t raw = nullptr;
        if (!read.bytes.empty() && read.bytes.size() <= kMaxFileSize)
            plist_from_memory(read.bytes.data(), static_cast<std::uint32_t>(read.bytes.size()), &raw);
        root.reset(raw);
        if (!root || plist_get_node_type(root.get()) != PLIST_DICT) {
            root.reset();
            diskReadable = false;
            const auto kept = setAside(file_);
            logError("settings: " + file_.string() + " is not a valid property list; kept it as " +
                     (kept.empty() ? std::string("(could not be moved)") : kept.filename().string()) +
                     " and wrote the settings in memory");
        }
    } else if (read.status == FileRead::Status::Failed) {
        logError("settings: cannot read " + file_.string() + " (" + errnoText(read.error) +
                 "); not writing, to keep what is there");
        restorePending();
        return;
    }
    if (!root) root.reset(plist_new_dict());
    if (!diskReadable) {
        // The file was damaged: write everything this process holds.
        std::lock_guard lock(mutex_);
        for (const auto& [key, value] : stored_) plist_dict_set_item(root.get(), key.c_str(), nodeFromPreferenceValue(value));
    }
    for (const auto& [key, value] : changes) {
        if (value) {
            plist_dict_set_item(root.get(), key.c_str(), nodeFromPreferenceValue(*value));
        } else if (plist_dict_get_item(root.get(), key.c_str()) != nullptr) {
            plist_dict_remove_item(root.get(), key.c_str());
        }
    }

    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    const std::string bytes = xml != nullptr ? std::string(xml, length) : std::string();
    plist_to_xml_free(xml);
    // What the file holds once written; memory follows it for every key this process has
    // not changed since.
    const bool diskKnown = [&] {
        auto parsed = parsePropertyList(bytes);
        if (parsed) disk = std::move(*parsed);
        return parsed.has_value();
    }();

    // Nothing to write means the encoder failed: the file stays as it is.
    const int error = bytes.empty() ? EIO : files::replaceFile(file_, bytes);
    if (error != 0) {
        logError("settings: cannot write " + file_.string() + ": " + errnoText(error));
        restorePending();
        return;
    }

    struct stat info {};
    const bool statted = ::stat(file_.c_str(), &info) == 0;
    std::vector<std::string> changedByOthers;
    {
        std::lock_guard lock(mutex_);
        if (statted)
            lastKnown_ = signatureOf(info);
        if (diskKnown) changedByOthers = mergeFromDiskLocked(disk);
    }
    // Release the lock before anyone is told, so that callbacks can never hold it up.
    ::flock(lockFd.get(), LOCK_UN);
    announce(std::move(changedByOthers), true);
}

void PreferenceStore::startWatching(platform::MainLoop& loop) {
    {
        std::lock_guard lock(mutex_);
        loop_ = &loop;
    }
    int error = 0;
    fileWatch_ = files::FileChangeWatch::open(file_, error);
    if (fileWatch_) {
        fileWatchEvents_ = loop.watchReadable(fileWatch_->descriptor(), [this] {
            if (fileWatch_->takeEvents()) checkForExternalChanges();
        });
        if (fileWatchEvents_) {
            // A write that landed between the first read and the watch.
            checkForExternalChanges();
            return;
        }
        fileWatch_.reset();
        error = ENOTSUP;
    }
    if (log_ != nullptr)
        log_->app.warning("settings: cannot watch " + file_.parent_path().string() + " for changes (" +
                          errnoText(error) + "); checking the file every 0.5 s instead");
    watchTimer_ = loop.every(kFallbackCheckInterval, [this] { checkForExternalChanges(); });
}

void PreferenceStore::checkForExternalChanges() {
    struct stat info {};
    std::optional<FileSignature> now;
    if (::stat(file_.c_str(), &info) == 0)
        now = signatureOf(info);
    std::uint64_t generation = 0;
    {
        std::lock_guard lock(mutex_);
        if (now == lastKnown_) return;
        generation = generation_;
    }
    std::map<std::string, PreferenceValue> disk;
    std::optional<FileSignature> seen;
    if (now) {
        FileRead read = files::readWholeFile(file_, kMaxFileSize);
        if (read.status == FileRead::Status::Read) {
            seen = signatureOf(read.info);
            auto parsed = parsePropertyList(read.bytes);
            if (!parsed) {
                // Another process left a damaged file: keep what is in memory; the next write
                // sets the file aside and replaces it.
                std::lock_guard lock(mutex_);
                lastKnown_ = seen;
                logError("settings: " + file_.string() + " was replaced by a file that is not a valid property list");
                return;
            }
            disk = std::move(*parsed);
        } else if (read.status == FileRead::Status::Failed) {
            return;
        }
    }
    std::vector<std::string> changed;
    {
        std::lock_guard lock(mutex_);
        if (generation != generation_) return;  // a write of ours merged a newer file meanwhile
        lastKnown_ = seen;
        changed = mergeFromDiskLocked(disk);
    }
    if (changed.empty()) return;
    if (log_ != nullptr)
        log_->app.info("settings: took " + std::to_string(changed.size()) +
                       " changed key(s) from a write by another process");
    changed_.notify(changed);
}

std::map<std::string, PreferenceValue> PreferenceStore::storedValues() const {
    std::lock_guard lock(mutex_);
    return {stored_.begin(), stored_.end()};
}

}  // namespace orvantis
