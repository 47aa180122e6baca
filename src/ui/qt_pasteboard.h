#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pasteboard.h"

class QObject;

namespace orvantis::ui {

/// The desktop's clipboard (on X11 the CLIPBOARD selection) through Qt, in the pasteboard
/// type names the core uses. Text is offered under the UTF-8 text MIME types, a file URL list
/// as text/uri-list, images, HTML and RTF under their MIME names; any other MIME type passes
/// through under its own name. A secret written by the program carries both conventions: the
/// concealed type and the password-manager hint "secret". Qt takes a selection with the time of
/// the last X event it handled; it hears of every change of owner, so only a write made before
/// Qt has handled another client's fresh claim loses to it. Main thread only.
class QtPasteboard final : public platform::Pasteboard, public platform::TextSelection {
public:
    QtPasteboard();
    ~QtPasteboard() override;
    QtPasteboard(const QtPasteboard&) = delete;
    QtPasteboard& operator=(const QtPasteboard&) = delete;

    /// Rises on every change of the clipboard's owner or content, ours included.
    std::int64_t changeCount() const override { return changeCount_; }
    std::vector<std::string> types() const override;
    std::optional<std::string> data(std::string_view type) const override;
    void write(const platform::PasteboardItem& item) override;

    /// The text of the current selection (on X11 the PRIMARY selection: whatever is selected
    /// in any application), or nullopt where the desktop has no such selection or none is made.
    std::optional<std::string> selectionText() const override;
    /// Makes `utf8` the current selection, where the desktop has one.
    void setSelectionText(std::string_view utf8) override;

    /// The core's name for a MIME type ("text/uri-list" is the file URL type).
    static std::string typeForMime(std::string_view mime);
    /// The MIME types that stand for a core type, the preferred one first.
    static std::vector<std::string> mimesForType(std::string_view type);

private:
    std::int64_t changeCount_ = 0;
    std::unique_ptr<QObject> context_;  // owns the connection to the clipboard's signal
};

}  // namespace orvantis::ui
