#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/pasteboard.h"

namespace orvantis::platform {

/// The mapping between the core's pasteboard type names and the desktop's MIME types and X
/// selection targets, shared by every pasteboard backend of the Linux desktop.

/// The core's name for a MIME type or X target ("text/uri-list" is the file URL type,
/// "UTF8_STRING" text); a name it doesn't know passes through as it is.
std::string typeForMime(std::string_view mime);

/// The MIME types that stand for a core type, the preferred one first; a type without a
/// mapping stands for itself.
std::vector<std::string> mimesForType(std::string_view type);

/// Whether an X selection target names content, rather than a request about the selection
/// (TARGETS, TIMESTAMP, MULTIPLE, SAVE_TARGETS, DELETE and the like) or a legacy encoding that
/// the core doesn't read (TEXT, COMPOUND_TEXT).
bool isContentTarget(std::string_view target);

/// The X targets to ask for `type`, in the order to try them among those the owner offers:
/// for text the UTF-8 ones first, then Latin-1 STRING.
std::vector<std::string> targetsForType(std::string_view type);

/// The native form of an item: each representation under every MIME type that stands for it,
/// in the item's order, without repeats. A secret (the concealed type) gets the password
/// manager hint "secret" as well, so that every clipboard history on the desktop skips it.
std::vector<std::pair<std::string, std::string>> nativeRepresentations(const PasteboardItem& item);

/// ISO 8859-1 bytes (the X target STRING) as UTF-8.
std::string latin1ToUtf8(std::string_view latin1);

}  // namespace orvantis::platform
