#include "core/clipboard/clipboard_persistence.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "core/log/app_logger.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvantis {
namespace {

/// Closes a descriptor when it goes out of scope.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    /// Closes now; answers false when close reports a failure (a late write error).
    bool reset() {
        const int fd = std::exchange(fd_, -1);
        return fd < 0 || ::close(fd) == 0;
    }

private:
    int fd_;
};

std::string errnoText(int error) { return std::strerror(error); }

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

struct FileRead {
    enum class Status { Absent, Read, Failed } status = Status::Absent;
    std::string bytes;
    int error = 0;
};

FileRead readWholeFile(const std::filesystem::path& path) {
    FileRead result;
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid()) {
        result.error = errno;
        const bool absent = errno == ENOENT || errno == ENOTDIR;
        result.status = absent ? FileRead::Status::Absent : FileRead::Status::Failed;
        return result;
    }
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0) {
        result.error = errno;
        result.status = FileRead::Status::Failed;
        return result;
    }
    if (!S_ISREG(info.st_mode)) {
        result.error = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
        result.status = FileRead::Status::Failed;
        return result;
    }
    result.bytes.reserve(static_cast<std::size_t>(info.st_size));
    char buffer[1 << 16];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            result.error = errno;
            result.status = FileRead::Status::Failed;
            return result;
        }
        if (n == 0) break;
        result.bytes.append(buffer, static_cast<std::size_t>(n));
    }
    result.status = FileRead::Status::Read;
    return result;
}

/// Replaces `file` with `bytes` so that a reader sees the old file or the new one, never a
/// part: a temporary file in the same folder, synced, renamed over the old one, then the
/// folder synced. Answers the errno of the failure, or 0.
int replaceFile(const std::filesystem::path& file, std::string_view bytes) {
    const std::filesystem::path directory = file.parent_path();
    std::string temporary = (directory / ("." + file.filename().string() + ".XXXXXX")).string();
    FileDescriptor out(::mkostemp(temporary.data(), O_CLOEXEC));  // created with mode 0600
    if (!out.valid()) return errno;
    int error = 0;
    if (!writeAll(out.get(), bytes) || ::fsync(out.get()) != 0) error = errno;
    if (!out.reset() && error == 0) error = errno;
    if (error == 0 && ::rename(temporary.c_str(), file.c_str()) != 0) error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        return error;
    }
    FileDescriptor folder(::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.valid()) ::fsync(folder.get());
    return 0;
}

}  // namespace

ClipboardPersistence::ClipboardPersistence(std::filesystem::path file, platform::MainLoop& loop,
                                           const LogCategory* log)
    : loop_(loop), queue_(loop.makeSerialQueue(std::string(kQueueLabel))), state_(std::make_shared<State>()) {
    state_->file = std::move(file);
    state_->log = log;
    std::error_code ignored;
    std::filesystem::create_directories(state_->file.parent_path(), ignored);
}

ClipboardPersistence::~ClipboardPersistence() {
    pendingSaveItem_.cancel();
    // Work already on the queue finds the state gone and writes nothing; the queue itself is
    // destroyed after this, waiting for a write that is under way.
    state_.reset();
}

std::optional<ClipboardPersistence::Lists> ClipboardPersistence::loadSnapshot() {
    const std::filesystem::path& file = state_->file;
    const LogCategory* log = state_->log;
    FileRead read = readWholeFile(file);
    if (read.status == FileRead::Status::Absent) return std::nullopt;
    std::string description;
    std::optional<ClipboardSnapshot> snapshot;
    if (read.status == FileRead::Status::Failed) {
        description = errnoText(read.error);
    } else {
        snapshot = decodeSnapshot(read.bytes, &description);
    }
    if (!snapshot) {
        if (log != nullptr) log->error("loadSnapshot failed at " + file.string() + " \u2014 " + description);
        return std::nullopt;
    }
    Lists lists;
    lists.pinned.reserve(snapshot->pinned.size());
    lists.unpinned.reserve(snapshot->unpinned.size());
    for (auto& record : snapshot->pinned) lists.pinned.emplace_back(std::move(record));
    for (auto& record : snapshot->unpinned) lists.unpinned.emplace_back(std::move(record));
    if (log != nullptr) {
        log->info("loaded snapshot: " + std::to_string(lists.pinned.size()) + " pinned + " +
                  std::to_string(lists.unpinned.size()) + " unpinned from " + file.string());
    }
    return lists;
}

void ClipboardPersistence::saveDebounced(const std::vector<ClipboardItem>& pinned,
                                         const std::vector<ClipboardItem>& unpinned) {
    auto snapshot = std::make_shared<ClipboardSnapshot>();
    for (const auto& item : pinned)
        if (auto record = item.toPersisted()) snapshot->pinned.push_back(std::move(*record));
    for (const auto& item : unpinned)
        if (auto record = item.toPersisted()) snapshot->unpinned.push_back(std::move(*record));

    // Replacing the handle cancels the save that was waiting.
    pendingSnapshot_ = snapshot;
    pendingSaveItem_ = loop_.postAfter(kSaveDelay, [this] { startPendingWrite(); });
}

void ClipboardPersistence::startPendingWrite() {
    std::shared_ptr<const ClipboardSnapshot> snapshot = std::move(pendingSnapshot_);
    if (!snapshot) return;
    queue_->async([weak = std::weak_ptr<State>(state_), snapshot] {
        if (auto state = weak.lock()) write(*state, *snapshot);
    });
}

void ClipboardPersistence::flush() {
    // The waiting save goes now, behind any write already queued, and this waits for both: at
    // quit, a copy made in the last 200 ms is on disk too.
    pendingSaveItem_.cancel();
    startPendingWrite();
    queue_->sync([] {});
}

void ClipboardPersistence::clear() {
    std::error_code ignored;
    std::filesystem::remove(state_->file, ignored);
}

bool ClipboardPersistence::writeSnapshot(const ClipboardSnapshot& snapshot) const { return write(*state_, snapshot); }

bool ClipboardPersistence::write(State& state, const ClipboardSnapshot& snapshot) {
    std::string description;
    const std::optional<std::string> bytes = encodeSnapshot(snapshot, &description);
    if (bytes) {
        const int error = replaceFile(state.file, *bytes);
        if (error == 0) {
            ++state.completedWrites;
            return true;
        }
        description = errnoText(error);
    }
    if (state.log != nullptr) state.log->error("writeSnapshot failed at " + state.file.string() + " \u2014 " + description);
    return false;
}

}  // namespace orvantis
