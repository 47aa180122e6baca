#include "core/clipboard/clipboard_monitor.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/clipboard/reference_date.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "testing/recording_log_sink.h"
#include "testing/test_support.h"

#include "platform/sim/accessibility.h"
#include "platform/sim/pasteboard.h"
#include "platform/sim/text_field.h"
#include "platform/sim/virtual_main_loop.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
namespace type = platform::pasteboard_type;
using platform::PasteboardItem;

/// The frontmost application, as a test sets it.
class FakeApplications final : public platform::Applications {
public:
    std::optional<platform::ApplicationInfo> frontmost;
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return frontmost; }
};

PasteboardItem item(std::vector<std::pair<std::string, std::string>> representations) {
    return PasteboardItem{std::move(representations)};
}

class ClipboardMonitorTest : public ::testing::Test {
protected:
    ClipboardMonitor& monitor() {
        if (!monitor_) {
            monitor_ = std::make_unique<ClipboardMonitor>(settings_, pasteboard_, applications_, accessibility_, loop_,
                                                          loop_, ids_, file_, &logger_.log().clipboard);
            changedSubscription_ = monitor_->onHistoryChanged([this] { ++syncNotices_; });
        }
        return *monitor_;
    }
    /// The monitor, polling.
    ClipboardMonitor& started() {
        monitor().start();
        return *monitor_;
    }
    /// The user copies in `app`, which is frontmost.
    void copy(const PasteboardItem& content, std::string app = "org.example.editor") {
        applications_.frontmost = platform::ApplicationInfo{app, app, 42};
        pasteboard_.writeFromOtherApp(content, app);
    }
    void copyText(std::string text, std::string app = "org.example.editor") {
        copy(PasteboardItem::text(std::move(text)), std::move(app));
    }
    void poll() { loop_.runFor(ClipboardMonitor::kPollInterval); }
    std::vector<std::string> previews() {
        std::vector<std::string> out;
        for (const auto& entry : monitor().history().items()) out.push_back(entry.previewText());
        return out;
    }
    void writeSnapshotFile(const std::string& bytes) { testing::writeFile(file_, bytes); }
    static std::string record(const char* id, const char* text, bool pinned) {
        return std::string("{\"id\":\"") + id + "\",\"timestamp\":815616000,\"text\":\"" + text +
               "\",\"isPinned\":" + (pinned ? "true" : "false") + "}";
    }
    void focusPasswordField() {
        field_ = std::make_unique<sim::TextField>("password", "org.example.browser", pasteboard_);
        field_->setSecure(true);
        focused_ = field_.get();
    }
    using Strings = std::vector<std::string>;

    testing::TemporaryDirectory dir_;
    std::filesystem::path file_ = dir_.path() / "share" / "orvantis" / "clipboard.json";
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = loop_.makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    std::vector<std::string> logLines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<testing::RecordingLogSink>(logLines_)};
    sim::Pasteboard pasteboard_{100};
    FakeApplications applications_;
    std::unique_ptr<sim::TextField> field_;
    sim::TextField* focused_ = nullptr;
    sim::Accessibility accessibility_{[this] { return focused_; }};
    UuidGenerator ids_{5};
    std::unique_ptr<ClipboardMonitor> monitor_;
    Subscription changedSubscription_;
    int syncNotices_ = 0;
};

// --- Polling ---------------------------------------------------------------------------------

TEST_F(ClipboardMonitorTest, CapturesACopyAtTheNextPollWithItsSourceAndTime) {
    started();
    copyText("hello", "org.gnome.Terminal");
    loop_.runFor(499ms);
    EXPECT_TRUE(monitor().history().isEmpty());
    loop_.runFor(1ms);
    ASSERT_EQ(monitor().history().count(), 1u);
    const ClipboardItem& entry = monitor().history().unpinned()[0];
    EXPECT_EQ(*entry.text(), "hello");
    EXPECT_EQ(entry.sourceBundleID(), "org.gnome.Terminal");
    EXPECT_EQ(entry.timestamp(), secondsSinceReferenceDate(loop_.wallNow()));
    EXPECT_EQ(monitor().lastChangeCount(), pasteboard_.changeCount());
}

TEST_F(ClipboardMonitorTest, WhatLiesOnThePasteboardAtStartIsNeverCaptured) {
    copyText("before");
    started();
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
}

TEST_F(ClipboardMonitorTest, StartTwiceKeepsOneTimerAndStopEndsPolling) {
    started();
    copyText("a");
    monitor().start();  // does nothing: the copy is still unseen
    poll();
    EXPECT_EQ(previews(), (Strings{"a"}));
    monitor().stop();
    EXPECT_FALSE(monitor().isPolling());
    copyText("b");
    loop_.runFor(5s);
    EXPECT_EQ(previews(), (Strings{"a"}));
}

// --- Change notices ------------------------------------------------------------------------

TEST_F(ClipboardMonitorTest, APasteboardThatCantReportChangesIsStillPolledEveryHalfSecond) {
    ASSERT_FALSE(pasteboard_.reportsChanges());
    started();
    copyText("polled");
    loop_.runUntilIdle();
    loop_.runFor(499ms);
    EXPECT_TRUE(monitor().history().isEmpty());
    loop_.runFor(1ms);
    EXPECT_EQ(previews(), (Strings{"polled"}));
}

TEST_F(ClipboardMonitorTest, AReportedChangeIsCapturedWithNoTimePassing) {
    pasteboard_.reportChangesOn(&loop_);
    started();
    copyText("told of");
    loop_.runUntilIdle();
    EXPECT_EQ(previews(), (Strings{"told of"}));
    EXPECT_EQ(monitor().lastChangeCount(), pasteboard_.changeCount());
}

TEST_F(ClipboardMonitorTest, TwoCopiesInQuickSuccessionAreBothCapturedWhenChangesAreReported) {
    pasteboard_.reportChangesOn(&loop_);
    started();
    copyText("first");
    loop_.runUntilIdle();
    copyText("second");
    loop_.runUntilIdle();
    EXPECT_EQ(previews(), (Strings{"second", "first"}));
}

TEST_F(ClipboardMonitorTest, WithReportedChangesThePollIsOnlyASafetyNet) {
    pasteboard_.reportChangesOn(&loop_);
    started();
    // A change the notice of which was lost: the count rose, no notice came.
    pasteboard_.reportChangesOn(nullptr);
    copyText("notice lost");
    loop_.runFor(ClipboardMonitor::kSafetyNetPollInterval - 1ms);
    EXPECT_TRUE(monitor().history().isEmpty());
    loop_.runFor(1ms);
    EXPECT_EQ(previews(), (Strings{"notice lost"}));
}

TEST_F(ClipboardMonitorTest, TheProgramsOwnAcknowledgedWriteStaysOutWhenChangesAreReported) {
    pasteboard_.reportChangesOn(&loop_);
    started();
    pasteboard_.write(PasteboardItem::text("ours"));
    monitor().acknowledgeCurrentChangeCount();
    loop_.runFor(ClipboardMonitor::kSafetyNetPollInterval * 2);
    EXPECT_TRUE(monitor().history().isEmpty());
}

TEST_F(ClipboardMonitorTest, TheProgramsOwnUnacknowledgedWriteIsCapturedAtItsNotice) {
    // A copy made in one of the program's windows (the text tools' Copy) joins the history as
    // any copy does, with no time passing.
    pasteboard_.reportChangesOn(&loop_);
    started();
    pasteboard_.write(PasteboardItem::text("a result"));
    loop_.runUntilIdle();
    EXPECT_EQ(previews(), (Strings{"a result"}));
}

TEST_F(ClipboardMonitorTest, StopEndsBothTheNoticesAndThePoll) {
    pasteboard_.reportChangesOn(&loop_);
    started();
    monitor().stop();
    EXPECT_FALSE(monitor().isPolling());
    copyText("after stop");
    loop_.runUntilIdle();
    loop_.runFor(ClipboardMonitor::kSafetyNetPollInterval * 2);
    EXPECT_TRUE(monitor().history().isEmpty());
}

TEST_F(ClipboardMonitorTest, AContentCopiedWhileTheHistoryIsOffIsTakenUpWhenItIsBackOn) {
    started();
    settings_.setClipboardHistoryEnabled(false);
    copyText("copied while off");
    loop_.runFor(2s);
    EXPECT_TRUE(monitor().history().isEmpty());
    settings_.setClipboardHistoryEnabled(true);
    poll();
    EXPECT_EQ(previews(), (Strings{"copied while off"}));
}

TEST_F(ClipboardMonitorTest, ACopyWithAPasswordFieldInTheFocusIsNeverCaptured) {
    started();
    focusPasswordField();
    copyText("hunter2");
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
    focused_ = nullptr;
    loop_.runFor(2s);
    EXPECT_TRUE(monitor().history().isEmpty());
    field_->setSecure(false);
    focused_ = field_.get();
    copyText("visible");
    poll();
    EXPECT_EQ(previews(), (Strings{"visible"}));
}

TEST_F(ClipboardMonitorTest, ConcealedContentIsNotCaptured) {
    started();
    copy(item({{std::string(type::kText), "pa55word"}, {std::string(type::kConcealed), "\x01"}}));
    poll();
    copy(item({{std::string(type::kText), "pa55word"}, {std::string(type::kPasswordManagerHint), "secret"}}));
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
    // Another value of the hint marks nothing.
    copy(item({{std::string(type::kText), "plain"}, {std::string(type::kPasswordManagerHint), "other"}}));
    poll();
    EXPECT_EQ(previews(), (Strings{"plain"}));
}

TEST_F(ClipboardMonitorTest, IgnoredApplicationsAreComparedExactly) {
    settings_.setClipboardIgnoredApps({"org.keepassxc.KeePassXC"});
    started();
    copyText("from the password manager", "org.keepassxc.KeePassXC");
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
    copyText("similar name", "org.keepassxc.keepassxc");
    poll();
    EXPECT_EQ(previews(), (Strings{"similar name"}));
}

TEST_F(ClipboardMonitorTest, WithoutAFrontmostApplicationTheCaptureHasNoSource) {
    started();
    pasteboard_.writeTextFromOtherApp("x");
    applications_.frontmost.reset();
    poll();
    ASSERT_EQ(monitor().history().count(), 1u);
    EXPECT_FALSE(monitor().history().unpinned()[0].sourceBundleID().has_value());
    applications_.frontmost = platform::ApplicationInfo{"", "Nameless", 1};
    pasteboard_.writeTextFromOtherApp("y");
    poll();
    EXPECT_FALSE(monitor().history().unpinned()[0].sourceBundleID().has_value());
}

TEST_F(ClipboardMonitorTest, AnAcknowledgedWriteOfTheProgramStaysOut) {
    started();
    pasteboard_.write(PasteboardItem::text("our own paste"));
    monitor().acknowledgeCurrentChangeCount();
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
}

TEST_F(ClipboardMonitorTest, EachCaptureReadsTheHistorySizeAfresh) {
    started();
    for (const char* t : {"a", "b", "c"}) {
        copyText(t);
        poll();
    }
    store_.set(settings::kClipboardHistorySize.key, std::int64_t{2});
    EXPECT_EQ(monitor().history().count(), 3u);
    copyText("d");
    poll();
    EXPECT_EQ(previews(), (Strings{"d", "c"}));
    EXPECT_EQ(monitor().history().maxSize(), 2);
}

TEST_F(ClipboardMonitorTest, EachChangeReachesTheSyncInALaterTurnEvenWithPersistenceOff) {
    settings_.setClipboardPersistEnabled(false);
    started();
    copyText("a");
    poll();
    EXPECT_EQ(syncNotices_, 2);  // add, then resize
    monitor().history().clear();
    EXPECT_EQ(syncNotices_, 2);
    loop_.runUntilIdle();
    EXPECT_EQ(syncNotices_, 3);
    loop_.runFor(1s);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

// --- Classification --------------------------------------------------------------------------

TEST_F(ClipboardMonitorTest, ACopiedFileIsKeptWithNonTextOffButOnlyInMemory) {
    started();
    copy(item({{std::string(type::kFileURL), "file:///home/ann/Documents/report%202026.pdf"},
               {std::string(type::kText), "/home/ann/Documents/report 2026.pdf"}}));
    poll();
    EXPECT_EQ(previews(), (Strings{"\U0001F4C4 report 2026.pdf"}));
    EXPECT_FALSE(monitor().history().unpinned()[0].isText());
    loop_.runFor(1s);
    EXPECT_EQ(testing::readFile(file_), "{\"pinned\":[],\"unpinned\":[]}");
}

TEST_F(ClipboardMonitorTest, AnImageIsCapturedOnlyWithNonTextOn) {
    started();
    copy(item({{std::string(type::kPNG), "\x89PNG..."}}));
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
    settings_.setClipboardStoreNonText(true);
    copy(item({{std::string(type::kPNG), "\x89PNG..."}, {"image/webp", "RIFF"}}));
    poll();
    EXPECT_EQ(previews(), (Strings{"\U0001F5BC\uFE0F image"}));
    const auto& content = std::get<NonTextContent>(monitor().history().unpinned()[0].kind());
    EXPECT_EQ(content.types->size(), 2u);
    EXPECT_EQ(content.types->at("image/webp"), "RIFF");
}

TEST_F(ClipboardMonitorTest, UnknownTypesOnlyAreData) {
    settings_.setClipboardStoreNonText(true);
    started();
    copy(item({{"application/x-custom", std::string("\x00\x01", 2)}, {"application/octet-stream", "zz"}}));
    poll();
    EXPECT_EQ(previews(), (Strings{"\U0001F4CB data"}));
}

TEST_F(ClipboardMonitorTest, RichTextWithAPlainFormIsATextEntry) {
    settings_.setClipboardStoreNonText(true);
    started();
    copy(item({{std::string(type::kRTF), "{\\rtf1 bold}"}, {std::string(type::kHTML), "<b>bold</b>"},
               {std::string(type::kText), "bold"}}));
    poll();
    ASSERT_EQ(monitor().history().count(), 1u);
    EXPECT_TRUE(monitor().history().unpinned()[0].isText());
    EXPECT_EQ(previews(), (Strings{"bold"}));
    copy(item({{std::string(type::kHTML), "<i>only html</i>"}}));
    poll();
    EXPECT_EQ(previews()[0], "\U0001F4DD rich text");
}

TEST_F(ClipboardMonitorTest, AnEmptyStringIsNothingWithNonTextOffAndDataWithItOn) {
    started();
    copyText("");
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
    settings_.setClipboardStoreNonText(true);
    copyText("");
    poll();
    EXPECT_EQ(previews(), (Strings{"\U0001F4CB data"}));
    copyText("   ");  // blanks are text
    poll();
    EXPECT_EQ(previews()[0], "   ");
}

TEST_F(ClipboardMonitorTest, TheLastMatchingTypeDecidesTheSymbolAndAFileAlwaysItsName) {
    settings_.setClipboardStoreNonText(true);
    started();
    copy(item({{std::string(type::kHTML), "<p>"}, {std::string(type::kTIFF), "II*"}}));
    poll();
    EXPECT_EQ(previews()[0], "\U0001F5BC\uFE0F rich text");
    copy(item({{std::string(type::kTIFF), "II*"}, {std::string(type::kFileURL), "file:///tmp/photo.tiff"}}));
    poll();
    EXPECT_EQ(previews()[0], "\U0001F4C4 photo.tiff");
    copy(item({{std::string(type::kFileURL), "file:///tmp/photo.jpg"}, {std::string(type::kJPEG), "JFIF"}}));
    poll();
    EXPECT_EQ(previews()[0], "\U0001F5BC\uFE0F photo.jpg");
}

TEST_F(ClipboardMonitorTest, TheSameBytesInAnotherOrderOfTypesAreTheSameContent) {
    settings_.setClipboardStoreNonText(true);
    started();
    copy(item({{"public.png", "P"}, {"public.tiff", "T"}}));
    poll();
    const auto hash = monitor().history().unpinned()[0].nonTextContentHash();
    copy(item({{"public.tiff", "T"}, {"public.png", "P"}}));
    poll();
    ASSERT_EQ(monitor().history().count(), 1u);
    EXPECT_EQ(monitor().history().unpinned()[0].nonTextContentHash(), hash);
}

TEST(ClipboardMonitorFileNameTest, ReadsTheFirstFileOfAUriList) {
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file:///a/b/c.txt"), "c.txt");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("# comment\r\nfile:///x/one.png\r\nfile:///x/two.png\r\n"), "one.png");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file:///x/Folder/"), "Folder");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file://host/share/%D0%BE%D1%82%D1%87%D1%91%D1%82.odt"), "отчёт.odt");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file:///x/a%ZZb"), "a%ZZb");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file:///x/bad%FF"), "bad%FF");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file:///x/q.txt?v=1#frag"), "q.txt");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("file:///"), "/");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("https://example.org"), "");
    EXPECT_EQ(ClipboardMonitor::fileNameFromURLData("relative/name.txt"), "name.txt");
    EXPECT_FALSE(ClipboardMonitor::fileNameFromURLData("").has_value());
    EXPECT_FALSE(ClipboardMonitor::fileNameFromURLData("\n# only a comment\n").has_value());
    EXPECT_FALSE(ClipboardMonitor::fileNameFromURLData("file:///x/\xff").has_value());
}

TEST_F(ClipboardMonitorTest, AFileUrlWithoutAUsableUrlKeepsTheOtherNames) {
    started();
    copy(item({{std::string(type::kFileURL), ""}}));
    poll();
    EXPECT_EQ(previews(), (Strings{"\U0001F4CB data"}));
    copy(item({{std::string(type::kFileURL), "https://example.org"}}));
    poll();
    EXPECT_EQ(previews()[0], "\U0001F4C4 file");
}

// --- Bad input -------------------------------------------------------------------------------

TEST_F(ClipboardMonitorTest, ContentThatVanishesWhileBeingReadIsSkippedTypeByType) {
    settings_.setClipboardStoreNonText(true);
    started();
    copy(item({{std::string(type::kText), "gone"}}));
    pasteboard_.loseData(std::string(type::kText));
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());  // listed, but no type had data

    copy(item({{std::string(type::kFileURL), "file:///x/a.txt"}, {std::string(type::kText), "kept"}}));
    pasteboard_.loseData(std::string(type::kFileURL));
    poll();
    EXPECT_EQ(previews(), (Strings{"kept"}));

    copy(item({{std::string(type::kPNG), "P"}, {"application/x-extra", "E"}}));
    pasteboard_.loseData("application/x-extra");
    poll();
    ASSERT_EQ(previews()[0], "\U0001F5BC\uFE0F image");
    EXPECT_EQ(std::get<NonTextContent>(monitor().history().unpinned()[0].kind()).types->size(), 1u);
}

TEST_F(ClipboardMonitorTest, AnEmptiedPasteboardGivesNothing) {
    settings_.setClipboardStoreNonText(true);
    started();
    pasteboard_.clear();
    poll();
    EXPECT_TRUE(monitor().history().isEmpty());
    EXPECT_EQ(monitor().lastChangeCount(), pasteboard_.changeCount());
}

TEST_F(ClipboardMonitorTest, HugeContentIsKeptWhole) {
    settings_.setClipboardStoreNonText(true);
    started();
    const std::size_t size = 50u * 1024u * 1024u;
    copyText(std::string(size, 'a'));
    poll();
    ASSERT_EQ(monitor().history().count(), 1u);
    EXPECT_EQ(monitor().history().unpinned()[0].text()->size(), size);
    EXPECT_EQ(previews()[0], std::string(80, 'a') + "\u2026");

    copy(item({{std::string(type::kTIFF), std::string(size, '\x7f')}}));
    poll();
    const auto& content = std::get<NonTextContent>(monitor().history().unpinned()[0].kind());
    EXPECT_EQ(content.types->at(std::string(type::kTIFF)).size(), size);
    EXPECT_EQ(monitor().history().unpinned()[0].nonTextContentHash()->size(), 64u);
    loop_.runFor(1s);
    EXPECT_EQ(ClipboardPersistence(file_, loop_, nullptr).loadSnapshot()->unpinned[0].text()->size(), size);
}

TEST_F(ClipboardMonitorTest, IllFormedTextIsRepairedAndSurvivesARestart) {
    started();
    copyText("caf\xe9 \xff!");
    poll();
    EXPECT_EQ(previews(), (Strings{"caf\uFFFD \uFFFD!"}));
    loop_.runFor(1s);
    monitor_.reset();
    EXPECT_EQ(previews(), (Strings{"caf\uFFFD \uFFFD!"}));
}

TEST_F(ClipboardMonitorTest, ADataFolderThatCantBeCreatedLosesNoHistoryInMemory) {
    testing::writeFile(dir_.path() / "share", "a file where the data folder should be");
    started();
    copyText("first");
    poll();
    copyText("second");
    poll();
    loop_.runFor(1s);
    EXPECT_EQ(previews(), (Strings{"second", "first"}));
    ASSERT_FALSE(logLines_.empty());
    for (const auto& line : logLines_) {
        EXPECT_TRUE(line.starts_with("error Clipboard: writeSnapshot failed at " + file_.string() + " \u2014 ")) << line;
        EXPECT_EQ(line.find("first"), std::string::npos);
        EXPECT_EQ(line.find("second"), std::string::npos);
    }
}

// --- Start-up and persistence ----------------------------------------------------------------

TEST_F(ClipboardMonitorTest, ASnapshotOfThreeUnpinnedEntriesLoadsTwoWithSizeTwoAndIsNotRewritten) {
    store_.set(settings::kClipboardHistorySize.key, std::int64_t{2});
    const std::string bytes = "{\"pinned\":[],\"unpinned\":[" +
                              record("00000000-0000-4000-8000-000000000001", "one", false) + "," +
                              record("00000000-0000-4000-8000-000000000002", "two", false) + "," +
                              record("00000000-0000-4000-8000-000000000003", "three", false) + "]}";
    writeSnapshotFile(bytes);
    started();
    EXPECT_EQ(previews(), (Strings{"one", "two"}));
    loop_.runFor(1s);
    EXPECT_EQ(testing::readFile(file_), bytes);
    EXPECT_EQ(monitor().persistence().completedWrites(), 0u);
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "info Clipboard: loaded snapshot: 0 pinned + 3 unpinned from " + file_.string());
}

TEST_F(ClipboardMonitorTest, APinnedRecordWithoutItsFlagStaysPinnedWithTheFlagAsStored) {
    writeSnapshotFile("{\"pinned\":[" + record("00000000-0000-4000-8000-000000000001", "p", false) +
                      "],\"unpinned\":[" + record("00000000-0000-4000-8000-000000000002", "u", true) + "]}");
    monitor();
    ASSERT_EQ(monitor().history().pinned().size(), 1u);
    EXPECT_FALSE(monitor().history().pinned()[0].isPinned());
    EXPECT_TRUE(monitor().history().unpinned()[0].isPinned());
}

TEST_F(ClipboardMonitorTest, ASnapshotWithAWrongTypeInOneRecordLeavesTheHistoryEmptyAndTheFileInPlace) {
    const std::string bytes = "{\"pinned\":[],\"unpinned\":[" + record("00000000-0000-4000-8000-000000000001", "ok", false) +
                              ",{\"id\":\"00000000-0000-4000-8000-000000000002\",\"timestamp\":true,\"text\":\"x\",\"isPinned\":false}]}";
    writeSnapshotFile(bytes);
    started();
    EXPECT_TRUE(monitor().history().isEmpty());
    EXPECT_EQ(testing::readFile(file_), bytes);
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "error Clipboard: loadSnapshot failed at " + file_.string() +
                                " \u2014 the data is not in the correct format: unpinned[1].timestamp is not a number");
    // The next change replaces the bad file.
    copyText("new");
    poll();
    loop_.runFor(1s);
    EXPECT_EQ(ClipboardPersistence(file_, loop_, nullptr).loadSnapshot()->unpinned.size(), 1u);
}

TEST_F(ClipboardMonitorTest, ATruncatedSnapshotLeavesTheHistoryEmpty) {
    writeSnapshotFile("{\"pinned\":[],\"unpinned\":[" + record("00000000-0000-4000-8000-000000000001", "ok", false));
    started();
    EXPECT_TRUE(monitor().history().isEmpty());
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_TRUE(logLines_[0].starts_with("error Clipboard: loadSnapshot failed at " + file_.string()));
}

TEST_F(ClipboardMonitorTest, WithPersistenceOffNothingIsReadOrWritten) {
    writeSnapshotFile("{\"pinned\":[],\"unpinned\":[" + record("00000000-0000-4000-8000-000000000001", "old", false) + "]}");
    settings_.setClipboardPersistEnabled(false);
    started();
    EXPECT_TRUE(monitor().history().isEmpty());
    copyText("new");
    poll();
    loop_.runFor(1s);
    EXPECT_EQ(monitor().persistence().completedWrites(), 0u);
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(ClipboardMonitorTest, CapturesSurviveARestartInOrder) {
    started();
    for (const char* t : {"one", "two", "three"}) {
        copyText(t);
        poll();
    }
    monitor().history().togglePin(monitor().history().unpinned()[1].id());
    loop_.runFor(1s);
    const std::vector<ClipboardItem> before = monitor().history().items();
    monitor_.reset();
    ASSERT_EQ(monitor().history().count(), 3u);
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(monitor().history().items()[i].toPersisted(), before[i].toPersisted());
    }
    EXPECT_EQ(previews(), (Strings{"two", "three", "one"}));
}

TEST_F(ClipboardMonitorTest, FiveChangesWithin100MillisecondsCauseOneWrite) {
    started();
    for (int i = 0; i < 5; ++i) {
        monitor().history().add(ClipboardItem::makeText("t" + std::to_string(i), std::nullopt, ids_.generate(), i));
        loop_.runFor(20ms);
    }
    loop_.runFor(1s);
    EXPECT_EQ(monitor().persistence().completedWrites(), 1u);
}

TEST_F(ClipboardMonitorTest, ClearingThenDeletingTheFileBringsItBackEmpty) {
    started();
    copyText("a");
    poll();
    loop_.runFor(1s);
    monitor().history().clear();
    monitor().deletePersistedHistory();
    EXPECT_FALSE(std::filesystem::exists(file_));
    loop_.runFor(200ms);
    EXPECT_EQ(testing::readFile(file_), "{\"pinned\":[],\"unpinned\":[]}");
}

TEST_F(ClipboardMonitorTest, NoLogLineCarriesClipboardContent) {
    writeSnapshotFile("{\"pinned\":[],\"unpinned\":[{\"id\":\"bad\",\"timestamp\":1,\"text\":\"tops3cret\",\"isPinned\":false}]}");
    started();
    copyText("tops3cret too");
    poll();
    loop_.runFor(1s);
    logger_.flush();
    for (const auto& line : logLines_) EXPECT_EQ(line.find("tops3cret"), std::string::npos) << line;
    for (const auto& entry : std::filesystem::directory_iterator(dir_.path() / "logs")) {
        EXPECT_EQ(testing::readFile(entry.path()).find("tops3cret"), std::string::npos);
    }
}

}  // namespace
}  // namespace orvantis
