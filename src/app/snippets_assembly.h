#pragma once

#include <memory>

namespace orvantis {
class ClipboardMonitor;
class GlobalEventMonitor;
class SnippetExpander;
class SnippetExpanderCoordinator;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// The snippet expander on its hotkey: the list in the settings store and the coordinator that
/// reads the focused field and pastes the expansion.
class SnippetsAssembly {
public:
    /// Null, with a line in the log, without the keyboard monitor (no hotkey), the accessibility
    /// layer, the key output or the pasteboard. `clipboard` may be null: then nothing is
    /// acknowledged (the secret markers still keep the expansion out of every history).
    static std::unique_ptr<SnippetsAssembly> create(AppServices& services, GlobalEventMonitor* monitor,
                                                    ClipboardMonitor* clipboard);
    ~SnippetsAssembly();
    SnippetsAssembly(const SnippetsAssembly&) = delete;
    SnippetsAssembly& operator=(const SnippetsAssembly&) = delete;

    SnippetExpander& expander() { return *expander_; }
    SnippetExpanderCoordinator& coordinator() { return *coordinator_; }

private:
    SnippetsAssembly(AppServices& services, GlobalEventMonitor& monitor, ClipboardMonitor* clipboard);

    std::unique_ptr<SnippetExpander> expander_;
    std::unique_ptr<SnippetExpanderCoordinator> coordinator_;
};

}  // namespace orvantis::app
