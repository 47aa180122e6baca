#include "core/clipboard/clipboard_persistence.h"

#include <utility>

#include "core/files/file_io.h"
#include "core/log/app_logger.h"

namespace orvantis {
using files::errnoText;
using files::FileRead;

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
    FileRead read = files::readWholeFile(file);
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
        const int error = files::replaceFile(state.file, *bytes);
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
