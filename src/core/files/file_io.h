#pragma once

#include <cstddef>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

#include <sys/stat.h>

namespace orvantis::files {

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
    bool reset();

private:
    int fd_;
};

/// The words of an errno value.
std::string errnoText(int error);

/// Writes all of `bytes`, going on after interruptions; false on the first failure (errno tells).
bool writeAll(int fd, std::string_view bytes);

struct FileRead {
    enum class Status { Absent, Read, Failed } status = Status::Absent;
    std::string bytes;
    struct stat info {};  ///< the file's status when read
    int error = 0;        ///< the errno of a failure or of an absence
};

/// The whole of a regular file. A file that is not there is Absent, also where a folder on
/// its path is a file (ENOTDIR). One that cannot be opened or read, that is not a regular file
/// (EISDIR for a folder), or that is larger than `maxSize` (EFBIG) is Failed.
FileRead readWholeFile(const std::filesystem::path& path,
                       std::size_t maxSize = std::numeric_limits<std::size_t>::max());

/// Replaces `file` with `bytes` so that a reader sees the old file or the new one, never a
/// part: a temporary file of mode 0600 in the same folder, synced, renamed over the old one,
/// then the folder synced. Answers the errno of a failure, which leaves no temporary file, or 0.
int replaceFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace orvantis::files
