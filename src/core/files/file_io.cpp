#include "core/files/file_io.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace orvantis::files {

bool FileDescriptor::reset() {
    const int fd = std::exchange(fd_, -1);
    return fd < 0 || ::close(fd) == 0;
}

std::string errnoText(int error) { return std::strerror(error); }

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n == 0) errno = EIO;  // no progress and no reason given
        if (n <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

FileRead readWholeFile(const std::filesystem::path& path, std::size_t maxSize) {
    FileRead result;
    const auto fail = [&result](int error) {
        result.error = error;
        result.status = FileRead::Status::Failed;
        result.bytes.clear();
        return std::move(result);
    };
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid()) {
        // A path through a file names no file either.
        if (errno != ENOENT && errno != ENOTDIR) return fail(errno);
        result.error = errno;
        return result;
    }
    if (::fstat(fd.get(), &result.info) != 0) return fail(errno);
    if (!S_ISREG(result.info.st_mode)) return fail(S_ISDIR(result.info.st_mode) ? EISDIR : EINVAL);
    if (static_cast<std::size_t>(result.info.st_size) > maxSize) return fail(EFBIG);
    result.bytes.reserve(static_cast<std::size_t>(result.info.st_size));
    char buffer[1 << 16];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return fail(errno);
        if (n == 0) break;
        if (result.bytes.size() + static_cast<std::size_t>(n) > maxSize) return fail(EFBIG);  // grew meanwhile
        result.bytes.append(buffer, static_cast<std::size_t>(n));
    }
    result.status = FileRead::Status::Read;
    return result;
}

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

}  // namespace orvantis::files
