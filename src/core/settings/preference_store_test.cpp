#include "core/settings/preference_store.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

#include <plist/plist.h>

#include "core/log/app_logger.h"
#include "testing/test_support.h"
#include "platform/sim/virtual_main_loop.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using testing::readFile;
using testing::TemporaryDirectory;
using testing::writeFile;

class PreferenceStoreTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return dir_.path() / "orvantis" / "preferences.plist"; }
    std::unique_ptr<PreferenceStore> makeStore(AppLog* log = nullptr) {
        return std::make_unique<PreferenceStore>(file(), *queue_, log);
    }
    std::vector<std::filesystem::path> corruptCopies() const {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(file().parent_path()))
            if (entry.path().filename().string().rfind("preferences.plist.corrupt-", 0) == 0)
                found.push_back(entry.path());
        return found;
    }

    TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("prefs");
};

TEST_F(PreferenceStoreTest, ValuesOfEveryTypeSurviveARestart) {
    {
        auto store = makeStore();
        store->set("b", true);
        store->set("i", std::int64_t{-42});
        store->set("r", 2.5);
        store->set("s", std::string("привет <&> \"x\""));
        store->set("a", std::vector<std::string>{"org.gnome.Terminal", "xterm"});
        store->set("d", PreferenceData{std::string("\x00\x01\xff", 3)});
    }
    auto store = makeStore();
    EXPECT_TRUE(store->boolForKey("b"));
    EXPECT_EQ(store->integerForKey("i"), -42);
    EXPECT_EQ(store->object("r"), PreferenceValue(2.5));
    EXPECT_EQ(store->stringForKey("s"), "привет <&> \"x\"");
    EXPECT_EQ(store->stringArrayForKey("a"), (std::vector<std::string>{"org.gnome.Terminal", "xterm"}));
    EXPECT_EQ(store->dataForKey("d"), std::string("\x00\x01\xff", 3));
}

TEST_F(PreferenceStoreTest, TheFileIsAnXmlPropertyList) {
    auto store = makeStore();
    store->set("MOLVEX.Orvantis.switchDelayMs", std::int64_t{150});
    store->flush();
    const std::string xml = readFile(file());
    EXPECT_NE(xml.find("<?xml"), std::string::npos);
    EXPECT_NE(xml.find("<key>MOLVEX.Orvantis.switchDelayMs</key>"), std::string::npos);
    EXPECT_NE(xml.find("<integer>150</integer>"), std::string::npos);
}

TEST_F(PreferenceStoreTest, ASetIsInMemoryAtOnceAndQueuedForDiskWithoutDelay) {
    auto store = makeStore();
    store->set("k", std::string("v"));
    EXPECT_EQ(store->stringForKey("k"), "v");
    EXPECT_FALSE(std::filesystem::exists(file()));
    loop_.runUntilIdle();  // no time passes: the write does not wait for a timer
    EXPECT_NE(readFile(file()).find("<key>k</key>"), std::string::npos);
}

TEST_F(PreferenceStoreTest, RegisteredDefaultsAnswerButAreNeverWritten) {
    auto store = makeStore();
    store->registerDefaults({{"reg", std::int64_t{7}}});
    EXPECT_EQ(store->integerForKey("reg"), 7);
    EXPECT_TRUE(store->contains("reg"));
    EXPECT_FALSE(store->hasStoredValue("reg"));
    store->set("other", true);
    store->flush();
    EXPECT_EQ(readFile(file()).find("reg"), std::string::npos);
    store->set("reg", std::int64_t{9});
    EXPECT_EQ(store->integerForKey("reg"), 9);
    store->remove("reg");
    EXPECT_EQ(store->integerForKey("reg"), 7);
    store->flush();
    EXPECT_EQ(readFile(file()).find("reg"), std::string::npos);
}

TEST_F(PreferenceStoreTest, TypedReadsConvertLikeAPreferenceStoreShould) {
    auto store = makeStore();
    store->set("t", std::string("YES"));
    store->set("n", std::string("12abc"));
    store->set("r", 3.9);
    store->set("arr", std::vector<std::string>{"x"});
    EXPECT_TRUE(store->boolForKey("t"));
    EXPECT_EQ(store->integerForKey("n"), 12);
    EXPECT_EQ(store->integerForKey("r"), 3);
    EXPECT_EQ(store->integerForKey("arr"), 0);
    EXPECT_FALSE(store->boolForKey("absent"));
    EXPECT_EQ(store->stringForKey("r"), "3.9");
    EXPECT_FALSE(store->stringForKey("arr").has_value());
    EXPECT_FALSE(store->stringArrayForKey("t").has_value());
    EXPECT_FALSE(store->dataForKey("arr").has_value());
}

TEST_F(PreferenceStoreTest, ChangeEventNamesTheKeyAndStopsWithItsSubscription) {
    auto store = makeStore();
    std::vector<std::string> seen;
    auto sub = store->onChange([&](const std::vector<std::string>& keys) {
        seen.insert(seen.end(), keys.begin(), keys.end());
    });
    store->set("a", true);
    store->remove("a");
    sub.reset();
    store->set("b", true);
    EXPECT_EQ(seen, (std::vector<std::string>{"a", "a"}));
}

TEST_F(PreferenceStoreTest, AnUnparsableFileIsKeptAsideLoggedAndDefaultsUsed) {
    const std::string garbage = "<plist><dict><key>broken";
    writeFile(file(), garbage);
    auto logQueue = loop_.makeSerialQueue("log");
    AppLogger logger(dir_.path() / "logs", *logQueue, loop_);
    auto store = makeStore(&logger.log());
    EXPECT_FALSE(store->contains("broken"));
    EXPECT_FALSE(std::filesystem::exists(file()));
    const auto copies = corruptCopies();
    ASSERT_EQ(copies.size(), 1u);
    EXPECT_EQ(readFile(copies[0]), garbage);
    const std::string recent = logger.recentLogs(1);
    EXPECT_NE(recent.find("[ERROR] App: settings: "), std::string::npos) << recent;
    EXPECT_NE(recent.find("preferences.plist.corrupt-"), std::string::npos) << recent;
    store->set("fresh", true);
    store->flush();
    EXPECT_TRUE(makeStore()->boolForKey("fresh"));
}

TEST_F(PreferenceStoreTest, ARootThatIsNoDictionaryCountsAsDamaged) {
    writeFile(file(), R"(<?xml version="1.0"?><plist version="1.0"><array><string>x</string></array></plist>)");
    auto store = makeStore();
    EXPECT_EQ(corruptCopies().size(), 1u);
}

TEST_F(PreferenceStoreTest, ABinaryPropertyListIsReadToo) {
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "x", plist_new_uint(5));
    plist_dict_set_item(root, "s", plist_new_string("bin"));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    writeFile(file(), std::string(bytes, length));
    std::free(bytes);
    plist_free(root);
    ASSERT_EQ(readFile(file()).rfind("bplist", 0), 0u);
    auto store = makeStore();
    EXPECT_EQ(store->integerForKey("x"), 5);
    EXPECT_EQ(store->stringForKey("s"), "bin");
    store->set("y", true);
    store->flush();
    EXPECT_NE(readFile(file()).find("<key>x</key>"), std::string::npos) << "rewritten as XML, keeping x";
}

TEST_F(PreferenceStoreTest, ValuesOfTypesTheStoreDoesNotModelSurviveItsWrites) {
    writeFile(file(), R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>nested</key><dict><key>inner</key><string>kept</string></dict>
<key>when</key><date>2026-01-01T00:00:00Z</date>
<key>plain</key><string>old</string>
</dict></plist>)");
    auto store = makeStore();
    EXPECT_FALSE(store->contains("nested"));
    store->set("plain", std::string("new"));
    store->flush();
    const std::string xml = readFile(file());
    EXPECT_NE(xml.find("<key>inner</key>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<date>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<string>new</string>"), std::string::npos);
}

TEST_F(PreferenceStoreTest, TwoWritersKeepEachOthersKeys) {
    auto first = makeStore();
    auto second = makeStore();
    first->set("fromFirst", std::int64_t{1});
    second->set("fromSecond", std::int64_t{2});
    first->flush();
    second->flush();
    auto reader = makeStore();
    EXPECT_EQ(reader->integerForKey("fromFirst"), 1);
    EXPECT_EQ(reader->integerForKey("fromSecond"), 2);
    // The second writer also took the first one's key into memory when it merged.
    EXPECT_EQ(second->integerForKey("fromFirst"), 1);
}

TEST_F(PreferenceStoreTest, AResetByAnotherWriterIsNotUndone) {
    auto mine = makeStore();
    mine->set("a", true);
    mine->set("b", true);
    mine->flush();
    auto other = makeStore();
    other->remove("a");
    other->flush();
    mine->set("b", false);
    mine->flush();
    auto reader = makeStore();
    EXPECT_FALSE(reader->hasStoredValue("a"));
    EXPECT_FALSE(mine->hasStoredValue("a"));
}

TEST_F(PreferenceStoreTest, RacingProcessesLoseNoKey) {
    constexpr int kWriters = 2, kSetsEach = 200;
    std::vector<pid_t> children;
    for (int w = 0; w < kWriters; ++w) {
        const pid_t pid = ::fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            {
                platform::ThreadSerialQueue queue("writer");
                for (int i = 0; i < kSetsEach; ++i) {
                    PreferenceStore store(file(), queue, nullptr);
                    store.set("w" + std::to_string(w) + "-" + std::to_string(i), std::int64_t{i});
                }
            }
            ::_exit(0);
        }
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        ::waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    auto reader = makeStore();
    EXPECT_EQ(reader->storedValues().size(), static_cast<std::size_t>(kWriters * kSetsEach));
    EXPECT_TRUE(corruptCopies().empty());
}

TEST_F(PreferenceStoreTest, AChangeWrittenByAnotherProcessIsNoticedAndAnnounced) {
    auto running = makeStore();
    running->set("shared", std::int64_t{1});
    running->flush();
    running->startWatching(loop_);
    std::vector<std::string> announced;
    auto sub = running->onChange([&](const std::vector<std::string>& keys) {
        announced.insert(announced.end(), keys.begin(), keys.end());
    });
    loop_.runFor(1s);
    EXPECT_TRUE(announced.empty()) << "its own write is no outside change";

    auto other = makeStore();
    other->set("shared", std::int64_t{2});
    other->set("added", true);
    other->flush();
    loop_.runFor(500ms);
    EXPECT_EQ(running->integerForKey("shared"), 2);
    EXPECT_TRUE(running->boolForKey("added"));
    EXPECT_EQ(announced, (std::vector<std::string>{"added", "shared"}));
}

/// Sets `key` to `value` from a process of its own, as the command line or a second copy
/// would, and waits for it to end.
void setInAnotherProcess(const std::filesystem::path& file, const std::string& key, std::int64_t value) {
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        {
            platform::ThreadSerialQueue queue("other-process");
            PreferenceStore store(file, queue, nullptr);
            store.set(key, value);
        }
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(PreferenceStoreTest, AWriteByAnotherProcessIsNoticedThroughTheFolderEventWithoutATimer) {
    auto running = makeStore();
    running->set("shared", std::int64_t{1});
    running->flush();
    running->startWatching(loop_);
    std::vector<std::string> announced;
    auto sub = running->onChange([&](const std::vector<std::string>& keys) {
        announced.insert(announced.end(), keys.begin(), keys.end());
    });
    EXPECT_EQ(loop_.pendingTimers(), 0u) << "nothing wakes the idle program";

    setInAnotherProcess(file(), "shared", 2);
    loop_.runUntilIdle();  // no time passes: only the folder's event can bring the change
    EXPECT_EQ(running->integerForKey("shared"), 2);
    EXPECT_EQ(announced, (std::vector<std::string>{"shared"}));
    EXPECT_EQ(loop_.pendingTimers(), 0u);
}

TEST_F(PreferenceStoreTest, AFolderMadeOnlyByTheWatchStillBringsTheFirstFileOfAnotherProcess) {
    // A fresh profile: neither the folder nor the file exists when the program starts.
    ASSERT_FALSE(std::filesystem::exists(file().parent_path()));
    auto running = makeStore();
    running->startWatching(loop_);
    setInAnotherProcess(file(), "first", 5);
    loop_.runUntilIdle();
    EXPECT_EQ(running->integerForKey("first"), 5);
}

TEST_F(PreferenceStoreTest, AFolderRemovedAndMadeAgainIsWatchedAgain) {
    auto running = makeStore();
    running->set("k", std::int64_t{1});
    running->flush();
    running->startWatching(loop_);
    std::filesystem::remove_all(file().parent_path());
    loop_.runUntilIdle();
    EXPECT_FALSE(running->hasStoredValue("k")) << "the file is gone, and with it the stored value";
    setInAnotherProcess(file(), "k", 3);
    loop_.runUntilIdle();
    EXPECT_EQ(running->integerForKey("k"), 3);
}

/// A main loop that cannot watch descriptors, over the virtual one.
class LoopWithoutDescriptors final : public platform::MainLoop {
public:
    explicit LoopWithoutDescriptors(sim::VirtualMainLoop& loop) : loop_(loop) {}
    void post(platform::Task task) override { loop_.post(std::move(task)); }
    platform::TimerHandle postAfter(platform::Duration delay, platform::Task task) override {
        return loop_.postAfter(delay, std::move(task));
    }
    platform::TimerHandle every(platform::Duration interval, platform::Task task) override {
        return loop_.every(interval, std::move(task));
    }
    Subscription watchReadable(int, platform::Task) override { return {}; }
    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string label) override {
        return loop_.makeSerialQueue(std::move(label));
    }

private:
    sim::VirtualMainLoop& loop_;
};

TEST_F(PreferenceStoreTest, WithoutAFolderWatchTheFileIsCheckedOnATimerAndThatIsLogged) {
    auto logQueue = loop_.makeSerialQueue("log");
    AppLogger logger(dir_.path() / "logs", *logQueue, loop_);
    auto running = makeStore(&logger.log());
    LoopWithoutDescriptors loop(loop_);
    running->startWatching(loop);
    EXPECT_EQ(loop_.pendingTimers(), 1u);
    setInAnotherProcess(file(), "k", 4);
    loop_.runUntilIdle();
    EXPECT_FALSE(running->hasStoredValue("k"));
    loop_.runFor(PreferenceStore::kFallbackCheckInterval);
    EXPECT_EQ(running->integerForKey("k"), 4);
    EXPECT_NE(logger.recentLogs(1).find("checking the file every 0.5 s instead"), std::string::npos);
}

TEST_F(PreferenceStoreTest, AFileDamagedWhileRunningKeepsMemoryAndIsSetAsideOnTheNextWrite) {
    auto store = makeStore();
    store->set("keep", std::string("me"));
    store->flush();
    store->startWatching(loop_);
    writeFile(file(), "not a plist at all");
    loop_.runFor(1s);
    EXPECT_EQ(store->stringForKey("keep"), "me");
    store->set("next", true);
    store->flush();
    EXPECT_EQ(corruptCopies().size(), 1u);
    auto reader = makeStore();
    EXPECT_EQ(reader->stringForKey("keep"), "me");
    EXPECT_TRUE(reader->boolForKey("next"));
}

TEST_F(PreferenceStoreTest, AnUnwritableFolderLosesNothingInMemoryAndLogsTheFailure) {
    // Nobody, not even root, may create files under /proc.
    auto logQueue = loop_.makeSerialQueue("log");
    AppLogger logger(dir_.path() / "logs", *logQueue, loop_);
    PreferenceStore store("/proc/orvantis-test/preferences.plist", *queue_, &logger.log());
    store.set("k", true);
    store.flush();
    EXPECT_TRUE(store.boolForKey("k"));
    EXPECT_NE(logger.recentLogs(1).find("settings: cannot write /proc/orvantis-test/preferences.plist"),
              std::string::npos);
    // The change stays pending: a later write still carries it.
    store.set("other", true);
    store.flush();
    EXPECT_TRUE(store.boolForKey("k"));
}

TEST_F(PreferenceStoreTest, AFolderThatCannotBeCreatedLosesNothingInMemory) {
    writeFile(dir_.path() / "blocker", "a file where the folder should be");
    PreferenceStore store(dir_.path() / "blocker" / "preferences.plist", *queue_, nullptr);
    store.set("k", std::int64_t{3});
    store.flush();
    EXPECT_EQ(store.integerForKey("k"), 3);
}

TEST_F(PreferenceStoreTest, NoTemporaryFileIsLeftBehind) {
    auto store = makeStore();
    for (int i = 0; i < 20; ++i) store->set("k" + std::to_string(i), std::int64_t{i});
    store->flush();
    std::set<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(file().parent_path()))
        names.insert(e.path().filename().string());
    EXPECT_EQ(names, (std::set<std::string>{"preferences.plist", "preferences.plist.lock"}));
}

TEST_F(PreferenceStoreTest, StringsWithNulAreCutNotLost) {
    auto store = makeStore();
    store->set("s", std::string("ab\0cd", 5));
    EXPECT_EQ(store->stringForKey("s"), "ab");
}

TEST_F(PreferenceStoreTest, ManyThreadsSettingAtOnceLoseNoKey) {
    platform::ThreadSerialQueue queue("prefs");
    {
        PreferenceStore store(file(), queue, nullptr);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&store, t] {
                for (int i = 0; i < 100; ++i)
                    store.set("t" + std::to_string(t) + "-" + std::to_string(i), std::int64_t{i});
            });
        for (auto& thread : threads) thread.join();
    }
    PreferenceStore reader(file(), queue, nullptr);
    EXPECT_EQ(reader.storedValues().size(), 400u);
}

}  // namespace
}  // namespace orvantis
