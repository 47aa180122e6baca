#pragma once

#include <memory>

namespace orvantis {
class GlobalEventMonitor;
class TextTransformerCoordinator;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// The text tools window and the coordinator that opens it on its hotkey.
class TextToolsAssembly {
public:
    /// Null, with a line in the log, without the keyboard monitor (no hotkey to open the
    /// window) or without a way to make the window.
    static std::unique_ptr<TextToolsAssembly> create(AppServices& services, GlobalEventMonitor* monitor);
    ~TextToolsAssembly();
    TextToolsAssembly(const TextToolsAssembly&) = delete;
    TextToolsAssembly& operator=(const TextToolsAssembly&) = delete;

    TextTransformerCoordinator& coordinator() { return *coordinator_; }

private:
    TextToolsAssembly(AppServices& services, GlobalEventMonitor& monitor);

    std::unique_ptr<TextTransformerCoordinator> coordinator_;
};

}  // namespace orvantis::app
