// Writes the two sync files the way the program does, for a check by independent parsers:
// sync_file_writer FOLDER makes FOLDER/home/Sync/Orvantis/{settings.json,clipboard.json} and,
// beside them, FOLDER/local-clipboard.json, the local snapshot of the same history.

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "core/clipboard/clipboard_history.h"
#include "core/clipboard/clipboard_persistence.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/sync/sync_files.h"
#include "core/sync/sync_manager.h"

#include "platform/sim/virtual_main_loop.h"

int main(int argc, char** argv) {
    using namespace orvantis;
    using namespace std::chrono_literals;
    if (argc != 2) {
        std::fprintf(stderr, "usage: sync_file_writer FOLDER\n");
        return 2;
    }
    const std::filesystem::path root(argv[1]);
    std::filesystem::create_directories(root / "home" / "Sync");
    sim::VirtualMainLoop loop;
    auto logQueue = loop.makeSerialQueue("log");
    auto writer = loop.makeSerialQueue("prefs");
    AppLogger logger(root / "logs", *logQueue, loop);
    PreferenceStore store(root / "prefs.plist", *writer, &logger.log());
    AppSettings settings(store);
    settings.setICloudSyncClipboardEnabled(true);
    settings.setSwitchDelayMs(180);
    settings.setHotkey(HotkeyDescriptor{49, 0x60000});
    settings.setClipboardIgnoredApps({"org.keepassxc.KeePassXC", "Терминал"});
    settings.setSettingsLanguage(SettingsLanguage::ru);
    settings.setFinderCutEnabled(true);
    store.set("MOLVEX.Orvantis.snippetExpanderEntries", PreferenceData{R"([{"trigger":";sig","text":"Привет"}])"});

    ClipboardHistory history(20);
    UuidGenerator ids(3);
    auto pinned = ClipboardItem::makeText("pinned \"quoted\"/slash", std::nullopt, ids.generate(), 815616000.25);
    history.add(pinned);
    history.togglePin(pinned.id());
    history.add(ClipboardItem::makeText("line one\nline two\tтаб", std::string("org.gnome.Terminal"), ids.generate(),
                                        815616001));
    history.add(ClipboardItem::makeNonText("🖼", "Image", {{"image/png", "png"}}, std::nullopt, ids.generate(), 2));

    LocalSyncFiles files;
    SyncManager manager(settings, &history, files, loop, loop, logger.log().icloud, root / "home");
    manager.start();
    settings.setWorkDurationMinutes(45);
    manager.clipboardDidChange();
    loop.runFor(2s);

    ClipboardSnapshot local;
    for (const auto& item : history.pinned())
        if (auto p = item.toPersisted()) local.pinned.push_back(*p);
    for (const auto& item : history.unpinned())
        if (auto p = item.toPersisted()) local.unpinned.push_back(*p);
    ClipboardPersistence persistence(root / "local-clipboard.json", loop, nullptr);
    if (!persistence.writeSnapshot(local)) return 1;
    logger.flush();
    return 0;
}
