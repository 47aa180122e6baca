#include "platform/freedesktop/single_instance_guard.h"

#include <cerrno>
#include <chrono>
#include <string>

#include "platform/freedesktop/sd_bus_handles.h"
#include "platform/freedesktop/xdg_paths.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

constexpr std::chrono::seconds kBusTimeout{5};

enum class Claim { Owned, Taken, Failed };

Claim claimBusName(const std::string& name, SdBusPtr& busOut) {
    SdBusPtr bus = openSessionBus(kBusTimeout);
    if (!bus) return Claim::Failed;
    // No queueing and no replacement: the first instance keeps the name until it exits.
    const int result = sd_bus_request_name(bus.get(), name.c_str(), 0);
    if (result == -EEXIST) return Claim::Taken;
    if (result < 0) return Claim::Failed;
    busOut = std::move(bus);
    return Claim::Owned;
}

Claim lockFile(const std::filesystem::path& path, int& descriptorOut) {
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) return Claim::Failed;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        ::close(fd);
        return error == EWOULDBLOCK ? Claim::Taken : Claim::Failed;
    }
    // The holder's process id, for whoever wonders who holds the lock.
    const std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(fd, 0) == 0) {
        [[maybe_unused]] const auto written = ::pwrite(fd, pid.data(), pid.size(), 0);
    }
    descriptorOut = fd;
    return Claim::Owned;
}

}  // namespace

std::unique_ptr<SingleInstanceGuard> SingleInstanceGuard::acquire(const SingleInstanceOptions& options) {
    if (options.useSessionBus) {
        SdBusPtr bus;
        switch (claimBusName(options.busName, bus)) {
            case Claim::Owned:
                return std::unique_ptr<SingleInstanceGuard>(
                    new SingleInstanceGuard(Mechanism::SessionBus, bus.release(), -1));
            case Claim::Taken:
                return nullptr;
            case Claim::Failed:
                break;  // no usable session bus: fall back to the lock file
        }
    }
    int fd = -1;
    switch (lockFile(options.lockFile.value_or(defaultLockFile()), fd)) {
        case Claim::Owned:
            return std::unique_ptr<SingleInstanceGuard>(new SingleInstanceGuard(Mechanism::LockFile, nullptr, fd));
        case Claim::Taken:
            return nullptr;
        case Claim::Failed:
            break;
    }
    return std::unique_ptr<SingleInstanceGuard>(new SingleInstanceGuard(Mechanism::None, nullptr, -1));
}

std::filesystem::path SingleInstanceGuard::defaultLockFile() {
    if (auto runtime = XdgPaths::runtimeDir()) return *runtime / "orvantis.lock";
    return std::filesystem::path("/tmp") / ("orvantis-" + std::to_string(::getuid()) + ".lock");
}

SingleInstanceGuard::SingleInstanceGuard(Mechanism mechanism, sd_bus* bus, int lockDescriptor)
    : mechanism_(mechanism), bus_(bus), lockDescriptor_(lockDescriptor) {}

SingleInstanceGuard::~SingleInstanceGuard() {
    if (bus_ != nullptr) sd_bus_flush_close_unref(bus_);
    if (lockDescriptor_ >= 0) ::close(lockDescriptor_);
}

int SingleInstanceGuard::busDescriptor() const { return bus_ != nullptr ? sd_bus_get_fd(bus_) : -1; }

bool SingleInstanceGuard::processBus() {
    if (bus_ == nullptr) return false;
    // Each call handles one message; stop when nothing is left or the connection broke.
    int result = 0;
    while ((result = sd_bus_process(bus_, nullptr)) > 0) {
    }
    // A long reply may not fit the socket at once. Only input wakes this up, so the rest goes
    // out now (the bus daemon takes it without delay) rather than after the next message.
    if (result == 0 && (sd_bus_get_events(bus_) & POLLOUT) != 0) sd_bus_flush(bus_);
    return result == 0 && sd_bus_is_open(bus_) > 0;
}

}  // namespace orvantis::freedesktop
