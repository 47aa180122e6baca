#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/subscription.h"

namespace orvantis::platform {

/// Pasteboard type names. These are the cross-platform names the core works with; backends
/// map them to their own and back (on Linux, MIME types and X selection targets):
///
///   kText         text/plain;charset=utf-8, UTF8_STRING, text/plain
///   kFileURL      text/uri-list (the whole list: the core reads its first URI)
///   kPNG, kTIFF, kJPEG   image/png, image/tiff, image/jpeg; other image/* types pass through
///                 under their MIME name, which still reads as an image
///   kHTML         text/html
///   kRTF          text/rtf, application/rtf
///   kConcealed    the same name as a MIME type
///   kPasswordManagerHint  the same name; the value kPasswordManagerHintSecret marks a secret
///
/// A type a backend does not know passes through under its own name.
namespace pasteboard_type {
inline constexpr std::string_view kText = "public.utf8-plain-text";
inline constexpr std::string_view kFileURL = "public.file-url";
inline constexpr std::string_view kPNG = "public.png";
inline constexpr std::string_view kTIFF = "public.tiff";
inline constexpr std::string_view kJPEG = "public.jpeg";
inline constexpr std::string_view kHTML = "public.html";
inline constexpr std::string_view kRTF = "public.rtf";
/// Secret content (a password): one byte 0x01 when written by the program.
inline constexpr std::string_view kConcealed = "org.nspasteboard.ConcealedType";
/// The other desktop convention for secret content, together with kPasswordManagerHintSecret.
inline constexpr std::string_view kPasswordManagerHint = "x-kde-passwordManagerHint";
inline constexpr std::string_view kPasswordManagerHintSecret = "secret";
}  // namespace pasteboard_type

/// One pasteboard item: its representations, in the item's own order of preference.
struct PasteboardItem {
    std::vector<std::pair<std::string, std::string>> representations;  ///< type, bytes

    static PasteboardItem text(std::string utf8) {
        return PasteboardItem{{{std::string(pasteboard_type::kText), std::move(utf8)}}};
    }
    /// Bytes of `type`, or nullopt.
    std::optional<std::string> data(std::string_view type) const {
        for (const auto& [t, bytes] : representations)
            if (t == type) return bytes;
        return std::nullopt;
    }
};

/// The system pasteboard. Main thread only. Backends hide every native handle.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    /// Rises by at least one on every write, ours or another application's.
    virtual std::int64_t changeCount() const = 0;
    /// Types of the first item, in the item's own order; empty when nothing is there.
    virtual std::vector<std::string> types() const = 0;
    /// Bytes for `type`, or nullopt when the item has none.
    virtual std::optional<std::string> data(std::string_view type) const = 0;
    /// Replaces the whole content with one item.
    virtual void write(const PasteboardItem& item) = 0;
    /// The text of the first item, or nullopt.
    std::optional<std::string> text() const { return data(pasteboard_type::kText); }

    /// Whether onChange() tells of changes. A backend that can't (the default) is polled.
    virtual bool reportsChanges() const { return false; }
    /// Called on the main thread, in a turn of its own, soon after the change count has risen
    /// for a write of another application (the program's own writes are counted at once and
    /// told of by no notice). Without reportsChanges() the callback is never called.
    [[nodiscard]] virtual Subscription onChange(std::function<void()> callback) {
        (void)callback;
        return {};
    }
};

/// The desktop's other selection, where it has one: on X11 the PRIMARY selection, whatever is
/// selected in any application, without a copy. Main thread only.
class TextSelection {
public:
    virtual ~TextSelection() = default;
    /// The selected text, or nullopt when none is made or it can't be read.
    virtual std::optional<std::string> selectionText() const = 0;
    /// Makes `utf8` the selection; does nothing where the desktop has no selection.
    virtual void setSelectionText(std::string_view utf8) = 0;
};

}  // namespace orvantis::platform
