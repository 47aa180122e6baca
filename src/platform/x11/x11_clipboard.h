#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/main_loop.h"
#include "platform/pasteboard.h"
#include "platform/subscription.h"

namespace orvantis {
class LogCategory;
}

namespace orvantis::x11 {

/// The desktop's clipboard (the CLIPBOARD selection) and the PRIMARY selection, spoken to
/// directly over a display connection of its own, with a hidden window as owner and requestor.
///
/// Changes: the server tells of every new CLIPBOARD owner (XFixes); each one raises the change
/// count and is told of through onChange() in a turn of the main loop of its own. The program's
/// own writes are counted at once, when made, and told of in a later turn like any other copy
/// (a copy made in one of the program's windows joins the history at once, not at the next
/// safety-net poll); acknowledgeCurrentChangeCount() right after a write still keeps it out,
/// since the count is then the acknowledged one.
///
/// Reads: the owner's TARGETS first (kept while the count stays), then only the one target
/// that stands for the type asked for, so that nothing is fetched that the caller didn't ask
/// for (a secret's text is never transferred to find out that it is a secret). Large data
/// comes in pieces (INCR). A read waits at most kTransferTimeout for the owner, and meanwhile
/// keeps answering other clients' requests; what the program owns itself is answered from
/// memory.
///
/// Writes: the selection is taken with a fresh server time, so that a write made right after
/// another client's claim, before its notice has been read, is never ignored by the server.
/// Every offered type is served, with TARGETS, TIMESTAMP and MULTIPLE, and in pieces (INCR)
/// when larger than one request. A secret (the concealed type) carries the password manager
/// hint "secret" as well.
///
/// Events are read when the owner calls dispatchPending(), whenever fileDescriptor() is
/// readable; events read in the course of a call are handled in a later turn of the loop.
/// Main thread only.
class X11Clipboard final : public platform::Pasteboard, public platform::TextSelection {
public:
    /// How long a read waits for the owner to answer (and, in pieces, for each next piece).
    static constexpr std::chrono::milliseconds kTransferTimeout{1000};

    /// Connects to `displayName` ($DISPLAY when null). Null without a display or the XFixes
    /// extension. `loop` must outlive the clipboard; `log` may be null.
    static std::unique_ptr<X11Clipboard> open(const char* displayName, platform::MainLoop& loop,
                                              const LogCategory* log);
    ~X11Clipboard() override;
    X11Clipboard(const X11Clipboard&) = delete;
    X11Clipboard& operator=(const X11Clipboard&) = delete;

    // platform::Pasteboard
    std::int64_t changeCount() const override;
    /// Empty when the clipboard has no owner or the owner does not answer.
    std::vector<std::string> types() const override;
    /// Nullopt when the owner offers no target for `type`, refuses it or does not answer.
    std::optional<std::string> data(std::string_view type) const override;
    /// Nothing changes on the desktop when the server refuses the selection (logged).
    void write(const platform::PasteboardItem& item) override;
    bool reportsChanges() const override { return true; }
    [[nodiscard]] Subscription onChange(std::function<void()> callback) override;

    // platform::TextSelection: the PRIMARY selection.
    std::optional<std::string> selectionText() const override;
    void setSelectionText(std::string_view utf8) override;

    /// The connection's descriptor, to watch for input.
    int fileDescriptor() const;
    /// Reads and handles every event that has arrived, then tells of changes. Never blocks.
    void dispatchPending();
    /// True once the X server has gone away: the descriptor then stays readable with nothing
    /// to read, so the owner stops watching it.
    bool connectionLost() const;

    struct State;  ///< the connection and the selections; opaque outside the backend

private:
    explicit X11Clipboard(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace orvantis::x11
