#include "core/files/file_change_watch.h"

#include <cerrno>
#include <system_error>

#include <sys/inotify.h>
#include <unistd.h>

namespace orvantis::files {
namespace {

// What may change the file's content or existence. A plain attribute change (touch, chmod) is
// left out: it changes nothing that is read.
constexpr std::uint32_t kFolderEvents =
    IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF;

}  // namespace

std::unique_ptr<FileChangeWatch> FileChangeWatch::open(const std::filesystem::path& file, int& error) {
    const int fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0) {
        error = errno;
        return nullptr;
    }
    std::unique_ptr<FileChangeWatch> watch(new FileChangeWatch(fd, file.parent_path(), file.filename().string()));
    if (!watch->addWatch()) {
        error = errno;
        return nullptr;
    }
    return watch;
}

FileChangeWatch::FileChangeWatch(int fd, std::filesystem::path folder, std::string name)
    : fd_(fd), folder_(std::move(folder)), name_(std::move(name)) {}

FileChangeWatch::~FileChangeWatch() { ::close(fd_); }

bool FileChangeWatch::addWatch() {
    std::error_code ignored;
    std::filesystem::create_directories(folder_, ignored);
    const std::string folder = folder_.empty() ? std::string(".") : folder_.string();
    watch_ = ::inotify_add_watch(fd_, folder.c_str(), kFolderEvents | IN_ONLYDIR);
    return watch_ >= 0;
}

bool FileChangeWatch::takeEvents() {
    bool concernsFile = false;
    bool folderGone = false;
    alignas(inotify_event) char buffer[16 * 1024];
    for (;;) {
        const ssize_t length = ::read(fd_, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) break;  // EAGAIN: everything is taken
        for (ssize_t offset = 0; offset < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
            offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                concernsFile = true;
            } else if (event->wd != watch_) {
                // The end of a watch replaced earlier.
            } else if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
                concernsFile = true;
                // Moved away, the watch would follow the folder to its new name.
                folderGone = folderGone || (event->mask & (IN_MOVE_SELF | IN_IGNORED)) != 0;
            } else if (event->len > 0 && name_ == event->name) {
                concernsFile = true;
            }
        }
    }
    if (folderGone) {
        // The old watch ended with its folder; watch whatever stands at the path now.
        if (watch_ >= 0) ::inotify_rm_watch(fd_, watch_);
        addWatch();
    }
    return concernsFile;
}

}  // namespace orvantis::files
