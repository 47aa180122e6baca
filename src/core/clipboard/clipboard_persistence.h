#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/clipboard_snapshot.h"

#include "platform/main_loop.h"
#include "platform/serial_queue.h"

namespace orvantis {

class LogCategory;

/// Keeps the text entries of the clipboard history in one JSON file (see ClipboardSnapshot),
/// so that the history outlives a restart.
///
/// Saving is debounced: the lists are converted at once, and the write happens 200 ms after
/// the last save request, on a queue of its own, replacing the file atomically (temporary file
/// in the same folder, fsync, rename, fsync of the folder). A write still waiting when the
/// store is destroyed is dropped. The file is created readable by its owner only.
///
/// Failures are logged through `log` (which may be null) and swallowed: a file that can't be
/// read leaves the history empty and stays in place until the next write replaces it; a write
/// that fails leaves the old file and is not retried before the next change.
///
/// Main thread, except the writes, which run on the queue "MOLVEX.Orvantis.ClipboardPersistence".
class ClipboardPersistence {
public:
    static constexpr std::string_view kQueueLabel = "MOLVEX.Orvantis.ClipboardPersistence";
    static constexpr std::chrono::milliseconds kSaveDelay{200};

    /// The lists of a loaded snapshot, in file order.
    struct Lists {
        std::vector<ClipboardItem> pinned;
        std::vector<ClipboardItem> unpinned;
    };

    /// Creates the folder of `file` with its parents if it is missing; a failure is ignored
    /// (the writes then fail and are logged).
    ClipboardPersistence(std::filesystem::path file, platform::MainLoop& loop, const LogCategory* log);
    ~ClipboardPersistence();
    ClipboardPersistence(const ClipboardPersistence&) = delete;
    ClipboardPersistence& operator=(const ClipboardPersistence&) = delete;

    /// Reads the file now, on the calling thread. Nullopt without a log line when there is no
    /// file; nullopt with an error line when it can't be read or decoded (one bad record fails
    /// the whole file).
    std::optional<Lists> loadSnapshot();
    /// Converts the text entries now and writes them 200 ms after the last call.
    void saveDebounced(const std::vector<ClipboardItem>& pinned, const std::vector<ClipboardItem>& unpinned);
    /// Writes a save that waits out its delay at once, and returns when every write is on
    /// disk. For the end of the program.
    void flush();
    /// Removes the file now, on the calling thread; failures are ignored. A write already
    /// waiting still happens, and brings the file back.
    void clear();

    /// Encodes `snapshot` and replaces the file with it, on the calling thread. Logs and
    /// answers false on failure.
    bool writeSnapshot(const ClipboardSnapshot& snapshot) const;

    const std::filesystem::path& fileURL() const { return state_->file; }
    /// Writes that reached the disk since construction. Any thread.
    std::size_t completedWrites() const { return state_->completedWrites.load(); }
    /// True while a save waits out its delay.
    bool hasPendingSave() const { return pendingSaveItem_.isActive(); }

private:
    /// What the writes need; the queued work holds it weakly, so that work still queued when
    /// the store goes does nothing.
    struct State {
        std::filesystem::path file;
        const LogCategory* log = nullptr;
        std::atomic<std::size_t> completedWrites{0};
    };
    static bool write(State& state, const ClipboardSnapshot& snapshot);
    void startPendingWrite();

    platform::MainLoop& loop_;
    std::unique_ptr<platform::SerialQueue> queue_;
    std::shared_ptr<State> state_;
    platform::TimerHandle pendingSaveItem_;
    std::shared_ptr<const ClipboardSnapshot> pendingSnapshot_;
};

}  // namespace orvantis
