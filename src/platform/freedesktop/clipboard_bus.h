#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sd_bus_slot;

namespace orvantis::freedesktop {

class SingleInstanceGuard;

/// Where the running program answers for its clipboard history on the session bus.
inline constexpr std::string_view kClipboardBusName = "org.orvantis.Orvantis";
inline constexpr std::string_view kClipboardObjectPath = "/org/orvantis/Orvantis";
inline constexpr std::string_view kClipboardInterface = "org.orvantis.Orvantis.Clipboard";
/// The error of a call when the program runs without a clipboard history (no X display).
inline constexpr std::string_view kNoClipboardHistoryError = "org.orvantis.Orvantis.Error.NoHistory";
/// The error of List or Search when the listing would not fit in one bus message.
inline constexpr std::string_view kReplyTooLargeError = "org.orvantis.Orvantis.Error.ReplyTooLarge";
/// The largest message the D-Bus protocol carries, header included (2^27 bytes). sd-bus builds
/// and reads nothing larger, whatever the bus daemon's own max_message_size allows.
inline constexpr std::size_t kBusMessageSizeLimit = std::size_t{128} * 1024 * 1024;

/// What the running program does for the calls. Plain functions, so that this backend never
/// sees the history's own types. Both are called on the main thread, inside processBus().
struct ClipboardBusHandlers {
    /// The listing of the entries that `search` keeps (every entry for an empty search) as
    /// JSON text, or nullopt when there is no history to list.
    std::function<std::optional<std::string>(std::string_view search)> list;
    /// Empties the history and removes its file; false when there is no history.
    std::function<bool()> clear;
};

/// The object /org/orvantis/Orvantis with the interface org.orvantis.Orvantis.Clipboard on the
/// connection of the single-instance guard:
///
///     List() -> s             the whole history as a JSON array, in the popup's order
///     Search(s text) -> s     the entries the popup's search for `text` keeps
///     Clear()                 empties the history, pinned entries too, and removes its file
///
/// A handler answering "no history" gives the error org.orvantis.Orvantis.Error.NoHistory;
/// a listing that, with the reply's header, would exceed `messageSizeLimit` gives
/// org.orvantis.Orvantis.Error.ReplyTooLarge, so the caller can turn to the snapshot file;
/// anything a handler throws becomes org.freedesktop.DBus.Error.Failed. Calls are served when
/// the guard's processBus() runs. Destroy it before the guard. Main thread only.
class ClipboardBusService {
public:
    /// The exported object, or null when the guard has no bus connection or the export fails.
    /// `messageSizeLimit` is the bus's largest message; tests make it small.
    static std::unique_ptr<ClipboardBusService> exportOn(SingleInstanceGuard& guard, ClipboardBusHandlers handlers,
                                                         std::size_t messageSizeLimit = kBusMessageSizeLimit);
    ~ClipboardBusService();
    ClipboardBusService(const ClipboardBusService&) = delete;
    ClipboardBusService& operator=(const ClipboardBusService&) = delete;

private:
    ClipboardBusService(ClipboardBusHandlers handlers, std::size_t messageSizeLimit)
        : handlers_(std::move(handlers)), messageSizeLimit_(messageSizeLimit) {}
    friend struct ClipboardBusCalls;

    ClipboardBusHandlers handlers_;
    std::size_t messageSizeLimit_;
    sd_bus_slot* slot_ = nullptr;  ///< owned; dropping it withdraws the object
};

/// The answer of the running program to a call made by the command line.
struct ClipboardBusReply {
    enum class Status {
        Answered,    ///< `text` holds the reply (empty for Clear)
        NotRunning,  ///< no session bus, or nobody owns the name: read the file instead
        Failed,      ///< the program runs but the call failed; `text` says why
        TooLarge,    ///< the listing does not fit in one bus message: read the file instead
    };
    Status status = Status::NotRunning;
    std::string text;
};

/// Calls List() (no `search`) or Search(`search`) on the running program, waiting at most
/// `timeout` for the connection and the reply.
ClipboardBusReply listRunningClipboard(std::optional<std::string_view> search, std::chrono::milliseconds timeout,
                                       std::string_view busName = kClipboardBusName);
/// Calls Clear() on the running program, waiting at most `timeout`.
ClipboardBusReply clearRunningClipboard(std::chrono::milliseconds timeout,
                                        std::string_view busName = kClipboardBusName);

}  // namespace orvantis::freedesktop
