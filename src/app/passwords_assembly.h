#pragma once

#include <memory>

#include "core/passwords/random_source.h"

namespace orvantis {
class ClipboardMonitor;
class GlobalEventMonitor;
class PasswordCoordinator;
class PasswordGenerator;
class Toast;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// The password generator on its hotkey: the kernel's random source, the generator, the toast
/// that tells of a copied or typed password, and the coordinator with its popup and its wipe.
class PasswordsAssembly {
public:
    /// Null, with a line in the log, without the keyboard monitor (no hotkey), the key output or
    /// the pasteboard. `clipboard` may be null: then nothing is acknowledged (the secret
    /// markers still keep the password out of every history).
    static std::unique_ptr<PasswordsAssembly> create(AppServices& services, GlobalEventMonitor* monitor,
                                                     ClipboardMonitor* clipboard);
    ~PasswordsAssembly();
    PasswordsAssembly(const PasswordsAssembly&) = delete;
    PasswordsAssembly& operator=(const PasswordsAssembly&) = delete;

    PasswordCoordinator& coordinator() { return *coordinator_; }

private:
    PasswordsAssembly(AppServices& services, GlobalEventMonitor& monitor, ClipboardMonitor* clipboard);

    KernelRandomSource random_;
    std::unique_ptr<PasswordGenerator> generator_;
    std::unique_ptr<Toast> toast_;
    std::unique_ptr<PasswordCoordinator> coordinator_;
};

}  // namespace orvantis::app
