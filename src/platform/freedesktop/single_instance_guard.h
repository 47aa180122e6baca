#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct sd_bus;

namespace orvantis::freedesktop {

/// How SingleInstanceGuard looks for another instance.
struct SingleInstanceOptions {
    /// The well-known name owned on the session bus.
    std::string busName = "org.orvantis.Orvantis";
    /// False skips the bus and goes straight to the lock file.
    bool useSessionBus = true;
    /// The lock file used without a session bus; nullopt for SingleInstanceGuard::defaultLockFile().
    std::optional<std::filesystem::path> lockFile;
};

/// Keeps a second copy of Orvantis from starting in the same session. Owns the well-known
/// name on the session bus; without a session bus, holds an exclusive lock on a lock file.
/// Both are released by the system when the process ends, however it ends. Keep the guard for
/// the life of the process. Main thread only.
class SingleInstanceGuard {
public:
    enum class Mechanism {
        SessionBus,  ///< owns the bus name
        LockFile,    ///< holds the file lock
        None,        ///< neither could be set up; the instance runs unguarded
    };

    /// The guard of this instance, or null when another instance already owns the bus name
    /// or holds the lock. A failure of both mechanisms gives a guard of Mechanism::None, so
    /// that a broken session never keeps the program from starting.
    static std::unique_ptr<SingleInstanceGuard> acquire(const SingleInstanceOptions& options);
    static std::unique_ptr<SingleInstanceGuard> acquire() { return acquire(SingleInstanceOptions{}); }

    /// `$XDG_RUNTIME_DIR/orvantis.lock`, else `/tmp/orvantis-<uid>.lock`.
    static std::filesystem::path defaultLockFile();

    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    Mechanism mechanism() const { return mechanism_; }

    /// The bus connection's descriptor, to watch for input, or -1 without a bus.
    int busDescriptor() const;
    /// Handles what has arrived on the bus connection (pings, stray calls, name signals) so
    /// that nothing piles up unanswered. Never blocks. Answers false when there is no bus or
    /// the connection has broken: then its descriptor need not be watched any more.
    bool processBus();

private:
    SingleInstanceGuard(Mechanism mechanism, sd_bus* bus, int lockDescriptor);
    friend class ClipboardBusService;  // exports its object on this connection
    friend class PomodoroBusService;   // and so does the Pomodoro
    friend class ClipboardBusService;       // exports its object on this connection
    friend class SystemUtilitiesBusService;  // the same
    friend class ShellBusService;            // and the windows of the shell

    Mechanism mechanism_;
    sd_bus* bus_ = nullptr;    ///< owned; closed in the destructor
    int lockDescriptor_ = -1;  ///< owned; closing it drops the lock
};

}  // namespace orvantis::freedesktop
