#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

#include "core/files/file_io.h"

namespace orvantis {

/// What the sync manager asks of the file system, as whole tasks, so that tests can put a full
/// disk or a read-only share in its way. Main thread.
class SyncFiles {
public:
    virtual ~SyncFiles() = default;
    /// True when `path` is a folder (following links).
    virtual bool isDirectory(const std::filesystem::path& path) const = 0;
    /// The modification date of whatever is at `path`; nullopt when nothing is there.
    virtual std::optional<std::chrono::system_clock::time_point> modificationDate(
        const std::filesystem::path& path) const = 0;
    /// Creates `path` with its missing parents. Answers 0 or the errno of the failure.
    virtual int createDirectories(const std::filesystem::path& path) = 0;
    /// The whole file, refusing anything larger than `maxSize` (EFBIG) and anything that is not
    /// a regular file.
    virtual files::FileRead read(const std::filesystem::path& path, std::size_t maxSize) const = 0;
    /// Replaces `path` atomically (temporary file in the same folder, rename). Answers 0 or the
    /// errno of the failure, which leaves the old file as it was.
    virtual int replace(const std::filesystem::path& path, std::string_view bytes) = 0;
};

/// SyncFiles over the real file system.
class LocalSyncFiles : public SyncFiles {
public:
    bool isDirectory(const std::filesystem::path& path) const override;
    std::optional<std::chrono::system_clock::time_point> modificationDate(
        const std::filesystem::path& path) const override;
    int createDirectories(const std::filesystem::path& path) override;
    files::FileRead read(const std::filesystem::path& path, std::size_t maxSize) const override;
    int replace(const std::filesystem::path& path, std::string_view bytes) override;
};

}  // namespace orvantis
