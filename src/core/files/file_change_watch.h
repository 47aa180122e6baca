#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace orvantis::files {

/// Tells, through one descriptor, when a file may have changed, so that nobody has to look at
/// it on a timer. The kernel's inotify watches the file's folder rather than the file: a file
/// replaced by a rename (as every writer here replaces one) would take a watch of its own
/// with it. Events of other names in the folder are read and dropped.
///
/// The owner watches descriptor() for input and calls takeEvents() whenever it is readable.
/// Owns the descriptor. One thread at a time.
class FileChangeWatch {
public:
    /// Watches the folder of `file`, creating it first when it is missing. Null when the
    /// kernel refuses (no inotify, the watch limit reached, a folder that cannot be made);
    /// `error` then holds the errno.
    static std::unique_ptr<FileChangeWatch> open(const std::filesystem::path& file, int& error);
    ~FileChangeWatch();
    FileChangeWatch(const FileChangeWatch&) = delete;
    FileChangeWatch& operator=(const FileChangeWatch&) = delete;

    /// Readable while events wait to be taken. Never blocks when read.
    int descriptor() const { return fd_; }
    /// Reads every waiting event. True when one of them may concern the file: its name was
    /// created, written and closed, moved in or out, or removed; the folder itself was moved
    /// or removed (the watch is then set up again on a folder of the same path); or the kernel
    /// dropped events because too many came at once.
    bool takeEvents();

private:
    FileChangeWatch(int fd, std::filesystem::path folder, std::string name);
    bool addWatch();

    int fd_;
    int watch_ = -1;
    std::filesystem::path folder_;
    std::string name_;
};

}  // namespace orvantis::files
