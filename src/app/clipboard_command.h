#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/freedesktop/clipboard_bus.h"

namespace orvantis::app {

/// How the command reaches the running program. The default goes over the session bus; tests
/// hand in their own answers.
struct ClipboardBusClient {
    /// List() for no search, Search(text) otherwise.
    std::function<freedesktop::ClipboardBusReply(std::optional<std::string_view> search)> list;
    std::function<freedesktop::ClipboardBusReply()> clear;
};

/// The client that calls the running program on the session bus.
ClipboardBusClient sessionBusClipboardClient();

/// `orvantis clipboard list [--json]`, `orvantis clipboard search [--json] TEXT` and
/// `orvantis clipboard clear`. `args` starts with "clipboard".
///
/// The running program is asked over the session bus first (it alone knows the entries that
/// are not text); when nobody owns its name, the snapshot file is read instead (list, search)
/// or removed (clear: as the settings window's button, pinned entries go too). When the
/// program's listing is too large for one bus message, list and search read the file too and
/// say so on standard error. List and
/// search print one line per entry (position from 1, a tab, `*` for pinned or `-`, a tab, the
/// preview) or with --json the JSON array of the entries.
///
/// Answers the exit status: 0 on success, 2 for a usage error, 1 when the program's answer or
/// the file could not be had (a damaged file is named on standard error and left as it is).
int runClipboardCommand(const std::vector<std::string>& args,
                        const ClipboardBusClient& bus = sessionBusClipboardClient());

/// How long the command waits for the session bus and the running program.
inline constexpr std::chrono::milliseconds kClipboardBusTimeout{1000};

}  // namespace orvantis::app
