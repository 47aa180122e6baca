#include "core/sync/sync_files.h"

#include <cerrno>
#include <system_error>

#include <sys/stat.h>

namespace orvantis {

bool LocalSyncFiles::isDirectory(const std::filesystem::path& path) const {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

std::optional<std::chrono::system_clock::time_point> LocalSyncFiles::modificationDate(
    const std::filesystem::path& path) const {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return std::nullopt;
    const auto since = std::chrono::seconds(info.st_mtim.tv_sec) + std::chrono::nanoseconds(info.st_mtim.tv_nsec);
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(since));
}

int LocalSyncFiles::createDirectories(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) return error.value() != 0 ? error.value() : EIO;
    return isDirectory(path) ? 0 : ENOTDIR;
}

files::FileRead LocalSyncFiles::read(const std::filesystem::path& path, std::size_t maxSize) const {
    // Looked at before it is opened: opening a named pipe would wait for a writer for ever.
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
        files::FileRead refused;
        refused.status = files::FileRead::Status::Failed;
        refused.error = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
        return refused;
    }
    return files::readWholeFile(path, maxSize);
}

int LocalSyncFiles::replace(const std::filesystem::path& path, std::string_view bytes) {
    return files::replaceFile(path, bytes);
}

}  // namespace orvantis
