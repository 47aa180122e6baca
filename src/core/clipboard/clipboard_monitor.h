#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/clipboard/clipboard_history.h"
#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/clipboard_persistence.h"
#include "core/clipboard/uuid.h"

#include "platform/applications.h"
#include "platform/clock.h"
#include "platform/main_loop.h"
#include "platform/pasteboard.h"
#include "platform/subscription.h"
#include "platform/text_element.h"

namespace orvantis {

class AppSettings;
class LogCategory;

/// Watches the system pasteboard and feeds the clipboard history.
///
/// From start() to stop() it compares the pasteboard's change count with the one it last saw:
/// every 0.5 s on a pasteboard that can't report changes, and at once on each change notice
/// of one that can, which is then polled only every 10 s as a safety net. Only a change of the
/// count costs more than that integer read: then the settings, the
/// focused element and the frontmost application decide whether the content may enter the
/// history, and buildItem() turns it into a record. A content is dealt with once, whatever
/// was decided: secret content (the concealed type, the password manager hint, a password
/// field in the focus) and content of ignored applications never enter the history, and are
/// not taken up later either. Anything that writes to the pasteboard itself calls
/// acknowledgeCurrentChangeCount() right after the write, so that its own writes stay out.
///
/// Owns the one ClipboardHistory and its ClipboardPersistence: each change of the history is
/// saved (debounced) while persistence is on, and announced to onHistoryChanged() in a later
/// turn of the main loop either way. Created by the composition root; main thread only.
class ClipboardMonitor {
public:
    /// The poll of a pasteboard that can't report changes.
    static constexpr std::chrono::milliseconds kPollInterval{500};
    /// The poll of a pasteboard that reports changes: only a safety net for a lost notice, rare
    /// enough that an idle program seldom wakes.
    static constexpr std::chrono::milliseconds kSafetyNetPollInterval{10000};
    static constexpr std::string_view kDefaultEmoji = "\U0001F4CB";   // 📋
    static constexpr std::string_view kFileEmoji = "\U0001F4C4";      // 📄
    static constexpr std::string_view kImageEmoji = "\U0001F5BC\uFE0F";  // 🖼️
    static constexpr std::string_view kRichTextEmoji = "\U0001F4DD";  // 📝

    /// Builds the history with the configured size, reads the last snapshot back when
    /// persistence is on (without writing it again), and remembers the current change count,
    /// so that what lies on the pasteboard now is never captured. `snapshotFile` is the
    /// snapshot's path; its folder is created if missing. `log` may be null.
    ClipboardMonitor(AppSettings& settings, platform::Pasteboard& pasteboard,
                     const platform::Applications& applications, platform::Accessibility& accessibility,
                     platform::MainLoop& loop, const platform::Clock& clock, UuidGenerator& ids,
                     std::filesystem::path snapshotFile, const LogCategory* log);
    ~ClipboardMonitor();
    ClipboardMonitor(const ClipboardMonitor&) = delete;
    ClipboardMonitor& operator=(const ClipboardMonitor&) = delete;

    /// Starts watching, taking the current change count as seen: the poll, and the change
    /// notices when the pasteboard reports changes. Does nothing while watching.
    void start();
    /// Stops the poll and the notices.
    void stop();
    /// Puts a save that is still waiting on disk now; for the end of the program.
    void flushPersistence();
    bool isPolling() const { return timer_.isActive(); }

    /// Takes the current change count as seen: the content now on the pasteboard (a write of
    /// the program's own, made just before) is never captured.
    void acknowledgeCurrentChangeCount();
    /// Removes the snapshot file (persistence turned off, history cleared).
    void deletePersistedHistory();

    /// One poll; the timer and each change notice call it.
    void tick();

    /// The record for what lies on `pasteboard`, or nullopt when nothing may or can be kept:
    /// secret content, no text and no file while non-text capture is off, or no readable data.
    std::optional<ClipboardItem> buildItem(const platform::Pasteboard& pasteboard,
                                           const std::optional<std::string>& sourceBundleID);
    /// The non-text record for the first pasteboard item: every type with its bytes, named
    /// and symbolised by the file URL, image and rich-text types it offers. Nullopt when no
    /// type has data.
    std::optional<ClipboardItem> buildNonTextItem(const platform::Pasteboard& pasteboard,
                                                  const std::optional<std::string>& sourceBundleID);

    ClipboardHistory& history() { return history_; }
    const ClipboardHistory& history() const { return history_; }
    ClipboardPersistence& persistence() { return *persistence_; }
    std::int64_t lastChangeCount() const { return lastChangeCount_; }

    /// Called on the main loop, in a later turn, after every change of the history (for the
    /// sync of the clipboard file).
    [[nodiscard]] Subscription onHistoryChanged(std::function<void()> callback) {
        return historyChanged_.add(std::move(callback));
    }

    /// True when the pasteboard content marks itself as secret: the concealed type, or the
    /// password manager hint with the value "secret".
    static bool isConcealed(const platform::Pasteboard& pasteboard);
    /// The last path component of the first URL in file URL data (a URI list), percent-decoded;
    /// nullopt when the bytes are no UTF-8 or hold no URL.
    static std::optional<std::string> fileNameFromURLData(std::string_view data);

private:
    bool focusedElementIsSecure();
    void historyDidChange();

    AppSettings& settings_;
    platform::Pasteboard& pasteboard_;
    const platform::Applications& applications_;
    platform::Accessibility& accessibility_;
    platform::MainLoop& loop_;
    const platform::Clock& clock_;
    UuidGenerator& ids_;
    ClipboardHistory history_;
    std::unique_ptr<ClipboardPersistence> persistence_;
    std::int64_t lastChangeCount_ = 0;
    platform::TimerHandle timer_;
    Subscription changeNotices_;
    CallbackList<> historyChanged_;
    Subscription historySubscription_;
    /// Held weakly by tasks posted to the loop, which do nothing once the monitor is gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis
