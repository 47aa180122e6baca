#include "core/clipboard/clipboard_history_coordinator.h"

#include <algorithm>
#include <string>
#include <utility>

#include "core/strings/settings_strings.h"

namespace orvantis {

ClipboardHistoryCoordinator::ClipboardHistoryCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                                         ClipboardHistoryPopup& popup, ClipboardMonitor& clipboard,
                                                         platform::Pasteboard& pasteboard,
                                                         platform::KeyOutput& keyOutput, platform::Pointer& pointer)
    : settings_(settings),
      popup_(popup),
      clipboard_(clipboard),
      pasteboard_(pasteboard),
      keyOutput_(keyOutput),
      pointer_(pointer),
      hotkey_(monitor.onClipboardHistoryHotkey([this] { handleHotkey(); })) {
    popup_.setOnConfirm([this](const Uuid& id) { paste(id); });
    popup_.setOnDelete([this](const Uuid& id) { deleteItem(id); });
    popup_.setOnTogglePin([this](const Uuid& id) { togglePin(id); });
    popup_.setOnDismiss([] {});
}

ClipboardHistoryCoordinator::~ClipboardHistoryCoordinator() {
    popup_.setOnConfirm({});
    popup_.setOnDelete({});
    popup_.setOnTogglePin({});
    popup_.setOnDismiss({});
}

ClipboardPopupTexts ClipboardHistoryCoordinator::textsFor(SettingsLanguage language) {
    const SettingsStrings strings = SettingsStrings::make(language);
    return {
        .emptyText = std::string(strings.noHistory),
        .searchPlaceholder = std::string(strings.clipboardSearchPlaceholder),
        .shortcutsHint = std::string(strings.clipboardPopupShortcuts),
        .countFormat = std::string(strings.clipboardPopupCountFormat),
        .countFilteredFormat = std::string(strings.clipboardPopupCountFilteredFormat),
    };
}

void ClipboardHistoryCoordinator::handleHotkey() {
    if (!settings_.clipboardHistoryEnabled()) return;
    popup_.show(pointer_.location(), clipboard_.history().items(), textsFor(settings_.settingsLanguage()));
}

void ClipboardHistoryCoordinator::paste(const Uuid& id) {
    const std::vector<ClipboardItem> items = clipboard_.history().items();
    const auto found = std::find_if(items.begin(), items.end(), [&](const ClipboardItem& item) { return item.id() == id; });
    if (found == items.end()) return;

    if (const std::string* text = found->text()) {
        pasteboard_.write(platform::PasteboardItem::text(*text));
    } else {
        // Every captured type with its bytes, so the target gets the content as it was copied.
        platform::PasteboardItem content;
        const auto& nonText = std::get<NonTextContent>(found->kind());
        if (nonText.types)
            for (const auto& [type, bytes] : *nonText.types) content.representations.emplace_back(type, bytes);
        pasteboard_.write(content);
    }
    clipboard_.acknowledgeCurrentChangeCount();
    // The popup never took the focus: the application that had it gets the paste.
    keyOutput_.paste();
}

void ClipboardHistoryCoordinator::deleteItem(const Uuid& id) {
    clipboard_.history().remove(id);
    refreshPopup();
}

void ClipboardHistoryCoordinator::togglePin(const Uuid& id) {
    clipboard_.history().togglePin(id);
    refreshPopup();
}

void ClipboardHistoryCoordinator::refreshPopup() {
    if (popup_.isVisible()) popup_.refresh(clipboard_.history().items());
}

}  // namespace orvantis
