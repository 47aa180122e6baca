#include "core/sync/sync_manager.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <plist/plist.h>

#include "core/clipboard/clipboard_history.h"
#include "core/clipboard/clipboard_snapshot.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "testing/recording_log_sink.h"
#include "testing/test_support.h"

#include "platform/sim/virtual_main_loop.h"

#include <sys/stat.h>

namespace orvantis {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// The real file system, with a full disk, a read-only share or a coarse date granule on demand.
class ControllableFiles final : public LocalSyncFiles {
public:
    int writeError = 0;
    std::optional<std::chrono::system_clock::time_point> fixedDate;
    int reads = 0;
    std::vector<fs::path> readPaths;

    std::optional<std::chrono::system_clock::time_point> modificationDate(const fs::path& path) const override {
        auto date = LocalSyncFiles::modificationDate(path);
        if (date && fixedDate) return fixedDate;
        return date;
    }
    files::FileRead read(const fs::path& path, std::size_t maxSize) const override {
        const_cast<ControllableFiles*>(this)->reads++;
        const_cast<ControllableFiles*>(this)->readPaths.push_back(path);
        return LocalSyncFiles::read(path, maxSize);
    }
    int replace(const fs::path& path, std::string_view bytes) override {
        if (writeError != 0) return writeError;
        return LocalSyncFiles::replace(path, bytes);
    }
};

/// One computer: its own preference file, settings, clipboard history and manager, on the
/// shared virtual loop and a shared home with the synced folder.
struct Machine {
    Machine(const fs::path& dir, const fs::path& home, sim::VirtualMainLoop& loop, const std::string& name)
        : logQueue(loop.makeSerialQueue("log-" + name)),
          writer(loop.makeSerialQueue("prefs-" + name)),
          logger(dir / ("logs-" + name), *logQueue, loop, std::make_unique<testing::RecordingLogSink>(lines)),
          store(dir / (name + ".plist"), *writer, &logger.log()),
          settings(store),
          history(settings.clipboardHistorySize()),
          loop_(loop),
          home_(home) {}
    SyncManager& make() {
        manager = std::make_unique<SyncManager>(settings, &history, files, loop_, loop_, logger.log().icloud, home_);
        return *manager;
    }
    std::size_t count(std::string_view fragment) const {
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [&](const std::string& l) {
            return l.find(fragment) != std::string::npos;
        }));
    }

    std::vector<std::string> lines;
    std::unique_ptr<platform::SerialQueue> logQueue, writer;
    AppLogger logger;
    PreferenceStore store;
    AppSettings settings;
    ClipboardHistory history;
    ControllableFiles files;
    std::unique_ptr<SyncManager> manager;
    sim::VirtualMainLoop& loop_;
    fs::path home_;
};

class SyncManagerTest : public ::testing::Test {
protected:
    SyncManagerTest() { fs::create_directories(home_ / "Sync"); }

    fs::path folder() const { return home_ / "Sync" / "Orvantis"; }
    fs::path settingsFile() const { return folder() / "settings.json"; }
    fs::path clipboardFile() const { return folder() / "clipboard.json"; }

    static std::string bplist(const std::map<std::string, PreferenceValue>& values, std::int64_t version = 1,
                              const std::map<std::string, PreferenceValue>& extraRoot = {}) {
        // The values through the store's own converter, then placed under a root.
        const std::string xml = PreferenceStore::serializePropertyList(values);
        plist_t valuesNode = nullptr;
        plist_from_memory(xml.data(), static_cast<std::uint32_t>(xml.size()), &valuesNode);
        plist_t root = plist_new_dict();
        plist_dict_set_item(root, "version", plist_new_uint(static_cast<std::uint64_t>(version)));
        plist_dict_set_item(root, "writtenAt", plist_new_string("2026-11-23T10:00:00Z"));
        plist_dict_set_item(root, "values", valuesNode);
        for (const auto& [k, v] : extraRoot)
            if (auto* s = std::get_if<std::string>(&v)) plist_dict_set_item(root, k.c_str(), plist_new_string(s->c_str()));
        char* bytes = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(root, &bytes, &length);
        std::string out(bytes, length);
        std::free(bytes);
        plist_free(root);
        return out;
    }
    static std::map<std::string, PreferenceValue> valuesOf(const fs::path& file) {
        plist_t root = nullptr;
        const std::string bytes = testing::readFile(file);
        plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
        std::map<std::string, PreferenceValue> out;
        if (root == nullptr) return out;
        plist_t values = plist_dict_get_item(root, "values");
        char* xml = nullptr;
        std::uint32_t length = 0;
        plist_to_xml(values, &xml, &length);
        if (auto parsed = PreferenceStore::parsePropertyList(std::string(xml, length))) out = *parsed;
        plist_to_xml_free(xml);
        plist_free(root);
        return out;
    }
    /// Gives a file a date of its own, so that the test does not depend on the clock's granule.
    static void setDate(const fs::path& file, std::chrono::seconds sinceEpoch) {
        fs::last_write_time(file, fs::file_time_type::clock::from_sys(std::chrono::sys_seconds(sinceEpoch)));
    }
    ClipboardItem text(const std::string& t) {
        return ClipboardItem::makeText(t, std::nullopt, ids_.generate(), stamp_ += 1);
    }
    std::string clipboardJson(int count) {
        ClipboardSnapshot snapshot;
        for (int i = 0; i < count; ++i) snapshot.unpinned.push_back(*text("remote " + std::to_string(i)).toPersisted());
        return *encodeSnapshot(snapshot);
    }

    testing::TemporaryDirectory dir_;
    fs::path home_ = dir_.path() / "home";
    sim::VirtualMainLoop loop_;
    UuidGenerator ids_{7};
    double stamp_ = 815616000;
    Machine a_{dir_.path(), home_, loop_, "a"};
    Machine b_{dir_.path(), home_, loop_, "b"};
};

TEST_F(SyncManagerTest, FindsTheFirstExistingUsualFolderAndLogsIt) {
    fs::create_directories(home_ / "Dropbox");
    auto& m = a_.make();
    ASSERT_TRUE(m.isICloudDriveAvailable());
    EXPECT_EQ(*m.folderURL(), home_ / "Dropbox" / "Orvantis");
    EXPECT_EQ(a_.count("info iCloud: init: synced folder found, target=" + (home_ / "Dropbox" / "Orvantis").string()), 1u);
}

TEST_F(SyncManagerTest, TheChosenFolderWinsOverTheUsualOnes) {
    fs::create_directories(dir_.path() / "share");
    a_.settings.set(settings::kSyncFolderPath, (dir_.path() / "share").string());
    EXPECT_EQ(*a_.make().folderURL(), dir_.path() / "share" / "Orvantis");
}

TEST_F(SyncManagerTest, NoFolderMeansANoOpAndAWarning) {
    fs::remove_all(home_ / "Sync");
    auto& m = a_.make();
    EXPECT_FALSE(m.isICloudDriveAvailable());
    EXPECT_EQ(a_.count("not present — sync will be a no-op"), 1u);
    m.start();
    EXPECT_EQ(a_.count("start: settingsSync=true, clipboardSync=false, syncFolderAvailable=false"), 1u);
    EXPECT_FALSE(m.isPolling());
}

TEST_F(SyncManagerTest, AFolderCreatedAfterLaunchIsNotUsedBeforeARestart) {
    fs::remove_all(home_ / "Sync");
    auto& m = a_.make();
    m.start();
    fs::create_directories(home_ / "Sync");
    a_.settings.setSwitchDelayMs(200);
    loop_.runFor(20s);
    EXPECT_FALSE(fs::exists(settingsFile()));
    EXPECT_FALSE(m.isPolling());
}

TEST_F(SyncManagerTest, WithoutARemoteFileEachPollSaysSoAndTheFirstLocalChangeWritesIt) {
    auto& m = a_.make();
    m.start();
    EXPECT_EQ(a_.count("info iCloud: created synced folder at " + folder().string()), 1u);
    EXPECT_TRUE(m.isPolling());
    const auto before = a_.count("debug iCloud: pull settings: file not present yet");
    loop_.runFor(15s);
    EXPECT_EQ(a_.count("debug iCloud: pull settings: file not present yet"), before + 3);
    a_.settings.setSwitchDelayMs(250);
    loop_.runFor(1499ms);
    EXPECT_FALSE(fs::exists(settingsFile()));
    loop_.runFor(1ms);
    ASSERT_TRUE(fs::exists(settingsFile()));
    EXPECT_EQ(std::get<std::int64_t>(valuesOf(settingsFile()).at("MOLVEX.Orvantis.switchDelayMs")), 250);
    EXPECT_EQ(a_.count("info iCloud: push settings: wrote "), 1u);
}

TEST_F(SyncManagerTest, ABurstOfChangesCostsOnePush) {
    a_.make().start();
    for (int i = 0; i < 5; ++i) {
        a_.settings.setSwitchDelayMs(100 + i);
        loop_.runFor(1s);
    }
    loop_.runFor(2s);
    EXPECT_EQ(a_.count("push settings: wrote "), 1u);
    EXPECT_EQ(std::get<std::int64_t>(valuesOf(settingsFile()).at("MOLVEX.Orvantis.switchDelayMs")), 104);
}

TEST_F(SyncManagerTest, TheFileHoldsOnlyTheListedKeysNeverTheSwitchesOrTheFolder) {
    a_.settings.set(settings::kSyncFolderPath, (home_ / "Sync").string());
    a_.make().start();
    a_.settings.setICloudSyncClipboardEnabled(true);
    a_.settings.setFinderCutEnabled(true);
    loop_.runFor(2s);
    const auto values = valuesOf(settingsFile());
    EXPECT_FALSE(values.contains("MOLVEX.Orvantis.iCloudSyncSettingsEnabled"));
    EXPECT_FALSE(values.contains("MOLVEX.Orvantis.iCloudSyncClipboardEnabled"));
    EXPECT_FALSE(values.contains("MOLVEX.Orvantis.syncFolderPath"));
    EXPECT_FALSE(values.contains("MOLVEX.Orvantis.translationEndpoint"));
    for (const auto& [key, value] : values) {
        const auto name = key.substr(settings::kKeyPrefix.size());
        EXPECT_NE(std::find(SyncManager::syncedKeys().begin(), SyncManager::syncedKeys().end(), name),
                  SyncManager::syncedKeys().end())
            << key;
    }
    EXPECT_TRUE(std::get<bool>(values.at("MOLVEX.Orvantis.finderCutEnabled")));
}

TEST_F(SyncManagerTest, AChangeOnAReachesBWithinOnePollAndBDoesNotWriteItBack) {
    a_.make().start();
    b_.make().start();
    a_.settings.setWorkDurationMinutes(50);
    loop_.runFor(1500ms);
    ASSERT_TRUE(fs::exists(settingsFile()));
    const auto written = fs::last_write_time(settingsFile());
    loop_.runFor(5s);
    EXPECT_EQ(b_.settings.workDurationMinutes(), 50);
    EXPECT_EQ(b_.count("info iCloud: pull settings: applying "), 1u);
    loop_.runFor(30s);
    EXPECT_EQ(b_.count("push settings: wrote"), 0u);
    EXPECT_EQ(fs::last_write_time(settingsFile()), written);
    // A does not pull its own write either.
    EXPECT_EQ(a_.count("pull settings: applying"), 0u);
}

TEST_F(SyncManagerTest, TheFirstChangeOnBWritesEveryKeyAndWinsForKeysItHoldsDifferently) {
    b_.settings.setBreakDurationMinutes(7);  // B's own value, before sync runs
    a_.make().start();
    a_.settings.setBreakDurationMinutes(12);
    loop_.runFor(1500ms);
    b_.make().start();  // applies A's file at launch
    EXPECT_EQ(b_.settings.breakDurationMinutes(), 12);
    loop_.runUntilIdle();  // the applied values have been announced
    b_.settings.setWorkDurationMinutes(40);
    loop_.runFor(1500ms);
    const auto values = valuesOf(settingsFile());
    EXPECT_EQ(b_.count("push settings: wrote " + std::to_string(values.size()) + " keys"), 1u);
    std::size_t withValue = 0;
    for (auto name : SyncManager::syncedKeys())
        if (b_.store.contains(std::string(settings::kKeyPrefix) + std::string(name))) ++withValue;
    EXPECT_EQ(values.size(), withValue);
    EXPECT_TRUE(values.contains("MOLVEX.Orvantis.breakDurationMinutes"));
    EXPECT_EQ(std::get<std::int64_t>(values.at("MOLVEX.Orvantis.workDurationMinutes")), 40);
    loop_.runFor(5s);
    EXPECT_EQ(a_.settings.workDurationMinutes(), 40);
}

TEST_F(SyncManagerTest, ExtraKeysAreIgnoredAndVersionTwoIsAppliedAllTheSame) {
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{300}},
                                              {"MOLVEX.Orvantis.iCloudSyncClipboardEnabled", true},
                                              {"MOLVEX.Orvantis.translationEndpoint", std::string("http://evil")},
                                              {"MOLVEX.Orvantis.unknownKey", std::string("x")}},
                                             2));
    a_.make().start();
    EXPECT_EQ(a_.settings.switchDelayMs(), 300);
    EXPECT_FALSE(a_.settings.iCloudSyncClipboardEnabled());
    EXPECT_FALSE(a_.store.hasStoredValue("MOLVEX.Orvantis.translationEndpoint"));
    EXPECT_FALSE(a_.store.hasStoredValue("MOLVEX.Orvantis.unknownKey"));
    EXPECT_EQ(a_.count("info iCloud: pull settings: applying 4 keys from remote"), 1u);
}

TEST_F(SyncManagerTest, AListedKeyMissingFromTheFileKeepsItsLocalValue) {
    a_.settings.setPasswordLength(33);
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{300}}}));
    a_.make().start();
    EXPECT_EQ(a_.settings.passwordLength(), 33);
}

TEST_F(SyncManagerTest, TwoWritesWithinOneDateGranuleAreOneChange) {
    const auto granule = std::chrono::system_clock::time_point(std::chrono::seconds(1795000000));
    a_.files.fixedDate = granule;
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{300}}}));
    a_.make().start();
    EXPECT_EQ(a_.settings.switchDelayMs(), 300);
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{400}}}));
    loop_.runFor(10s);
    EXPECT_EQ(a_.settings.switchDelayMs(), 300);
}

TEST_F(SyncManagerTest, ARemoteFileOlderThanTheLastAppliedIsNeverApplied) {
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{300}}}));
    setDate(settingsFile(), std::chrono::seconds(1795000000));
    a_.make().start();
    ASSERT_EQ(a_.settings.switchDelayMs(), 300);
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{450}}}));
    setDate(settingsFile(), std::chrono::seconds(1794000000));
    loop_.runFor(10s);
    a_.manager->appBecameActive();
    EXPECT_EQ(a_.settings.switchDelayMs(), 300);
}

TEST_F(SyncManagerTest, ActivationChecksAtOnce) {
    a_.make().start();
    testing::writeFile(settingsFile(), bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{321}}}));
    a_.manager->appBecameActive();
    EXPECT_EQ(a_.settings.switchDelayMs(), 321);
    EXPECT_EQ(a_.count("debug iCloud: app became active → pull check"), 1u);
}

TEST_F(SyncManagerTest, AClipboardPullDropsImagesAndKeepsTheLocalSize) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    a_.history.resize(5);
    a_.history.add(ClipboardItem::makeNonText("🖼", "Image", {{"image/png", "png"}}, std::nullopt, ids_.generate(), 1));
    a_.make().start();
    testing::writeFile(clipboardFile(), clipboardJson(20));
    loop_.runFor(5s);
    ASSERT_EQ(a_.history.unpinned().size(), 5u);
    for (const auto& item : a_.history.items()) EXPECT_TRUE(item.isText());
    EXPECT_EQ(*a_.history.unpinned()[0].text(), "remote 0");
    EXPECT_EQ(a_.count("info iCloud: pull clipboard: applying 0 pinned + 20 unpinned items from remote"), 1u);
    // The pull is silent: nothing is pushed back.
    loop_.runFor(10s);
    EXPECT_EQ(a_.count("push clipboard: wrote"), 0u);
}

TEST_F(SyncManagerTest, TheClipboardFileIsWrittenEvenWithPersistenceOff) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    a_.settings.setClipboardPersistEnabled(false);
    auto& m = a_.make();
    m.start();
    a_.history.add(text("hello"));
    a_.history.add(ClipboardItem::makeNonText("🖼", "Image", {{"image/png", "png"}}, std::nullopt, ids_.generate(), 1));
    m.clipboardDidChange();
    loop_.runFor(799ms);
    EXPECT_FALSE(fs::exists(clipboardFile()));
    loop_.runFor(1ms);
    const auto decoded = decodeSnapshot(testing::readFile(clipboardFile()));
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->unpinned.size(), 1u);
    EXPECT_EQ(decoded->unpinned[0].text, "hello");
    EXPECT_EQ(a_.count("push clipboard: wrote 0 pinned + 1 unpinned items, "), 1u);
    m.clipboardDidChange();
    loop_.runFor(1s);
    EXPECT_EQ(a_.count("debug iCloud: push clipboard: skipped (no content change, 0 pinned + 1 unpinned)"), 1u);
}

TEST_F(SyncManagerTest, AClipboardEntryOnAReachesB) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    b_.settings.setICloudSyncClipboardEnabled(true);
    a_.make().start();
    b_.make().start();
    a_.history.add(text("shared"));
    a_.manager->clipboardDidChange();
    loop_.runFor(6s);
    ASSERT_EQ(b_.history.count(), 1u);
    EXPECT_EQ(*b_.history.unpinned()[0].text(), "shared");
}

TEST_F(SyncManagerTest, TogglesLogAndStartOrStopThePoll) {
    a_.settings.setICloudSyncSettingsEnabled(false);
    auto& m = a_.make();
    m.start();
    EXPECT_FALSE(m.isPolling());
    a_.settings.setICloudSyncClipboardEnabled(true);
    m.clipboardToggleDidChange();
    EXPECT_EQ(a_.count("info iCloud: toggle: clipboard sync ENABLED"), 1u);
    EXPECT_TRUE(m.isPolling());
    loop_.runFor(1s);
    EXPECT_TRUE(fs::exists(clipboardFile()));
    a_.settings.setICloudSyncClipboardEnabled(false);
    m.clipboardToggleDidChange();
    EXPECT_EQ(a_.count("info iCloud: toggle: clipboard sync DISABLED"), 1u);
    EXPECT_FALSE(m.isPolling());
    EXPECT_EQ(a_.count("debug iCloud: polling: stopped (nothing to sync)"), 2u);
}

TEST_F(SyncManagerTest, ConflictCopiesAndPartialDownloadsAreNeverRead) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    a_.make().start();
    a_.history.add(text("local"));
    testing::writeFile(folder() / "clipboard (conflicted copy).json", clipboardJson(3));
    testing::writeFile(folder() / "clipboard.sync-conflict-20261123-101010-ABCDEFG.json", clipboardJson(3));
    testing::writeFile(folder() / "settings (conflicted copy).json",
                       bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{499}}}));
    testing::writeFile(folder() / ".syncthing.settings.json.tmp", "bplist00");
    loop_.runFor(30s);
    EXPECT_EQ(a_.files.reads, 0);
    EXPECT_EQ(a_.settings.switchDelayMs(), 100);
    EXPECT_EQ(*a_.history.unpinned()[0].text(), "local");
}

TEST_F(SyncManagerTest, AHalfWrittenFileIsLoggedOnceAndTheCompleteOneIsApplied) {
    const std::string whole = bplist({{"MOLVEX.Orvantis.switchDelayMs", std::int64_t{310}}});
    testing::writeFile(settingsFile(), whole.substr(0, whole.size() / 2));
    setDate(settingsFile(), std::chrono::seconds(1795000000));
    a_.make().start();
    loop_.runFor(30s);
    EXPECT_EQ(a_.settings.switchDelayMs(), 100);
    EXPECT_EQ(a_.count("error iCloud: pull settings: read/parse failed at " + settingsFile().string()), 1u);
    testing::writeFile(settingsFile(), whole);
    setDate(settingsFile(), std::chrono::seconds(1795000010));
    loop_.runFor(5s);
    EXPECT_EQ(a_.settings.switchDelayMs(), 310);
}

TEST_F(SyncManagerTest, FilesOfTheWrongKindAreLoggedOnceAndChangeNothing) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    fs::create_directories(settingsFile());  // a folder where the file should be
    testing::writeFile(clipboardFile(), "[1,2,3]");
    a_.history.add(text("local"));
    a_.settings.setSwitchDelayMs(222);
    a_.make().start();
    loop_.runFor(60s);
    EXPECT_EQ(a_.count("error iCloud: pull settings: read/parse failed"), 1u);
    EXPECT_EQ(a_.count("error iCloud: pull clipboard: read/decode failed"), 1u);
    EXPECT_EQ(a_.settings.switchDelayMs(), 222);
    EXPECT_EQ(*a_.history.unpinned()[0].text(), "local");
    // A property list with a values entry that is no dictionary.
    testing::writeFile(folder() / "x", "");
    fs::remove(settingsFile());
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "values", plist_new_string("nope"));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    testing::writeFile(settingsFile(), std::string(bytes, length));
    std::free(bytes);
    plist_free(root);
    loop_.runFor(30s);
    EXPECT_EQ(a_.count("error iCloud: pull settings: read/parse failed"), 2u);
    EXPECT_EQ(a_.settings.switchDelayMs(), 222);
}

TEST_F(SyncManagerTest, ANamedPipeInPlaceOfTheFileIsNotOpened) {
    fs::create_directories(folder());
    ASSERT_EQ(::mkfifo(settingsFile().c_str(), 0600), 0);
    a_.make().start();  // opening the pipe would wait here for ever
    loop_.runFor(30s);
    EXPECT_EQ(a_.count("error iCloud: pull settings: read/parse failed at " + settingsFile().string() +
                       " (" + files::errnoText(EINVAL)),
              1u);
}

TEST_F(SyncManagerTest, AFileOfFiftyMegabytesIsNotReadAndLoggedOnce) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    a_.history.add(text("local"));
    fs::create_directories(folder());
    { std::ofstream(clipboardFile()) << "{"; }
    fs::resize_file(clipboardFile(), 50u * 1024u * 1024u);  // sparse: costs no disk
    a_.make().start();
    loop_.runFor(60s);
    EXPECT_EQ(a_.count("pull clipboard: read/decode failed at " + clipboardFile().string() + " (larger than "), 1u);
    EXPECT_EQ(*a_.history.unpinned()[0].text(), "local");
}

TEST_F(SyncManagerTest, AFullDiskIsLoggedOnceAndTheSameContentIsWrittenWhenSpaceReturns) {
    auto& m = a_.make();
    m.start();
    a_.files.writeError = ENOSPC;
    a_.settings.setSwitchDelayMs(101);
    loop_.runFor(2s);
    a_.settings.setSwitchDelayMs(102);
    loop_.runFor(2s);
    EXPECT_EQ(a_.count("push settings: write failed — "), 1u);
    EXPECT_EQ(a_.settings.switchDelayMs(), 102);
    EXPECT_FALSE(fs::exists(settingsFile()));
    a_.files.writeError = 0;
    a_.settings.setSwitchDelayMs(102);  // the same value again: still written now
    loop_.runFor(2s);
    ASSERT_TRUE(fs::exists(settingsFile()));
    EXPECT_EQ(std::get<std::int64_t>(valuesOf(settingsFile()).at("MOLVEX.Orvantis.switchDelayMs")), 102);
}

TEST_F(SyncManagerTest, AReadOnlyShareIsLoggedOnceForEachSide) {
    a_.settings.setICloudSyncClipboardEnabled(true);
    auto& m = a_.make();
    m.start();
    a_.files.writeError = EROFS;
    for (int i = 0; i < 4; ++i) {
        a_.settings.setSwitchDelayMs(110 + i);
        a_.history.add(text("t" + std::to_string(i)));
        m.clipboardDidChange();
        loop_.runFor(3s);
    }
    EXPECT_EQ(a_.count("error iCloud: push settings: write failed — "), 1u);
    EXPECT_EQ(a_.count("error iCloud: push clipboard: write failed — "), 1u);
    EXPECT_EQ(a_.history.count(), 4u);
}

TEST_F(SyncManagerTest, AFolderThatVanishesIsReportedOnceAndWrittenAgainWhenBack) {
    auto& m = a_.make();
    m.start();
    a_.settings.setSwitchDelayMs(120);
    loop_.runFor(2s);
    ASSERT_TRUE(fs::exists(settingsFile()));
    fs::remove_all(home_ / "Sync");  // the share is unmounted
    loop_.runFor(5s);
    a_.settings.setSwitchDelayMs(130);
    loop_.runFor(30s);
    EXPECT_EQ(a_.count("is gone (unmounted or removed)"), 1u);
    EXPECT_EQ(a_.count("push settings: write failed"), 1u);
    EXPECT_EQ(a_.settings.switchDelayMs(), 130);
    fs::create_directories(folder());
    loop_.runFor(7s);
    EXPECT_EQ(a_.count("is back"), 1u);
    ASSERT_TRUE(fs::exists(settingsFile()));
    EXPECT_EQ(std::get<std::int64_t>(valuesOf(settingsFile()).at("MOLVEX.Orvantis.switchDelayMs")), 130);
}

TEST_F(SyncManagerTest, WritesLeaveNoTemporaryFilesBehind) {
    a_.make().start();
    a_.settings.setSwitchDelayMs(150);
    loop_.runFor(2s);
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder())) names.push_back(e.path().filename().string());
    EXPECT_EQ(names, std::vector<std::string>{"settings.json"});
}

TEST(SyncManagerFormatTest, DatesAsTheFileAndTheLogWriteThem) {
    const auto t = std::chrono::system_clock::time_point(std::chrono::seconds(1704164645));
    EXPECT_EQ(SyncManager::iso8601(t), "2024-01-02T03:04:05Z");
    EXPECT_EQ(SyncManager::describeDate(t), "2024-01-02 03:04:05 +0000");
    EXPECT_EQ(SyncManager::describeDate(std::chrono::system_clock::time_point::min()), "0001-01-01 00:00:00 +0000");
}

TEST(SyncManagerFormatTest, FiftyTwoKeysInTheirOrder) {
    const auto& keys = SyncManager::syncedKeys();
    EXPECT_EQ(keys.front(), "hotkey");
    EXPECT_EQ(keys[30], "snippetExpanderEntries");
    EXPECT_EQ(keys.back(), "finderCutEnabled");
    std::vector<std::string_view> sorted(keys.begin(), keys.end());
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
}

}  // namespace
}  // namespace orvantis
