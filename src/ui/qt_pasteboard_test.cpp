#include "ui/qt_pasteboard.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QGuiApplication>
#include <QMimeData>

namespace orvantis::ui {
namespace {

namespace type = platform::pasteboard_type;

TEST(QtPasteboardTest, MimeNamesMapToTheCoresTypes) {
    EXPECT_EQ(QtPasteboard::typeForMime("text/plain;charset=utf-8"), type::kText);
    EXPECT_EQ(QtPasteboard::typeForMime("UTF8_STRING"), type::kText);
    EXPECT_EQ(QtPasteboard::typeForMime("text/plain"), type::kText);
    EXPECT_EQ(QtPasteboard::typeForMime("text/plain;charset=UTF-8"), type::kText);
    EXPECT_EQ(QtPasteboard::typeForMime("text/uri-list"), type::kFileURL);
    EXPECT_EQ(QtPasteboard::typeForMime("image/png"), type::kPNG);
    EXPECT_EQ(QtPasteboard::typeForMime("application/rtf"), type::kRTF);
    EXPECT_EQ(QtPasteboard::typeForMime("image/webp"), "image/webp");
    EXPECT_EQ(QtPasteboard::typeForMime(type::kConcealed), type::kConcealed);
    EXPECT_EQ(QtPasteboard::mimesForType(type::kFileURL), std::vector<std::string>{"text/uri-list"});
    EXPECT_EQ(QtPasteboard::mimesForType("image/webp"), std::vector<std::string>{"image/webp"});
}

TEST(QtPasteboardTest, WritesAndReadsTextAndCountsTheChange) {
    QtPasteboard pasteboard;
    const auto before = pasteboard.changeCount();
    pasteboard.write(platform::PasteboardItem::text("привет 😀"));
    EXPECT_GT(pasteboard.changeCount(), before);
    EXPECT_EQ(pasteboard.text(), "привет 😀");
    const auto types = pasteboard.types();
    ASSERT_FALSE(types.empty());
    EXPECT_EQ(types.front(), type::kText);
}

TEST(QtPasteboardTest, AnotherWriterRaisesTheCount) {
    QtPasteboard pasteboard;
    const auto before = pasteboard.changeCount();
    auto* mime = new QMimeData;
    mime->setData(QStringLiteral("text/uri-list"), QByteArray("file:///tmp/report.pdf\r\n"));
    QGuiApplication::clipboard()->setMimeData(mime, QClipboard::Clipboard);
    EXPECT_GT(pasteboard.changeCount(), before);
    EXPECT_EQ(pasteboard.types(), std::vector<std::string>{std::string(type::kFileURL)});
    EXPECT_EQ(pasteboard.data(type::kFileURL), "file:///tmp/report.pdf\r\n");
    EXPECT_EQ(pasteboard.text(), std::nullopt);
}

TEST(QtPasteboardTest, ASecretCarriesBothConventions) {
    QtPasteboard pasteboard;
    platform::PasteboardItem item = platform::PasteboardItem::text("hunter2");
    item.representations.emplace_back(std::string(type::kConcealed), std::string("\x01", 1));
    pasteboard.write(item);
    const QMimeData* mime = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    ASSERT_NE(mime, nullptr);
    EXPECT_EQ(mime->data(QStringLiteral("x-kde-passwordManagerHint")), QByteArray("secret"));
    EXPECT_TRUE(mime->hasFormat(QStringLiteral("org.nspasteboard.ConcealedType")));
    const auto types = pasteboard.types();
    EXPECT_NE(std::find(types.begin(), types.end(), std::string(type::kPasswordManagerHint)), types.end());
    EXPECT_EQ(pasteboard.data(type::kPasswordManagerHint), "secret");
}

TEST(QtPasteboardTest, AllRepresentationsOfAnItemGoOutTogether) {
    QtPasteboard pasteboard;
    platform::PasteboardItem item;
    item.representations = {{std::string(type::kHTML), "<b>hi</b>"}, {std::string(type::kText), "hi"},
                            {"application/x-orvantis-test", std::string("\0\1\2", 3)}};
    pasteboard.write(item);
    EXPECT_EQ(pasteboard.data(type::kHTML), "<b>hi</b>");
    EXPECT_EQ(pasteboard.text(), "hi");
    EXPECT_EQ(pasteboard.data("application/x-orvantis-test"), std::string("\0\1\2", 3));
}

// --- On a real X display, against another client ---------------------------------------------

class QtPasteboardLiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (QGuiApplication::platformName() != QLatin1String("xcb")) GTEST_SKIP() << "not on an X display";
    }
    /// Runs the event loop until `done` holds or two seconds have passed.
    template <typename Predicate>
    static bool spinUntil(Predicate done) {
        const QDeadlineTimer deadline(2000);
        while (!done() && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return done();
    }
    /// Runs xclip with `args`, serving our own selection meanwhile; its standard output.
    static std::optional<QByteArray> xclip(const QStringList& args, const QByteArray& input = {}) {
        QProcess process;
        process.start(QStringLiteral("xclip"), args);
        if (!process.waitForStarted(2000)) return std::nullopt;
        if (!input.isNull()) {
            process.write(input);
            process.closeWriteChannel();
        }
        if (!spinUntil([&process] { return process.state() == QProcess::NotRunning; })) {
            // xclip -i stays as the owner of the selection until someone else takes it.
            return process.readAllStandardOutput();
        }
        return process.readAllStandardOutput();
    }
};

TEST_F(QtPasteboardLiveTest, AnotherClientsTextIsCountedAndRead) {
    QtPasteboard pasteboard;
    const auto before = pasteboard.changeCount();
    ASSERT_TRUE(xclip({"-selection", "clipboard", "-i"}, QByteArray("Съешь ещё 😀")));
    ASSERT_TRUE(spinUntil([&] { return pasteboard.changeCount() > before; }));
    EXPECT_EQ(pasteboard.text(), "Съешь ещё 😀");
    const auto types = pasteboard.types();
    ASSERT_FALSE(types.empty());
    EXPECT_EQ(types.front(), type::kText);
}

TEST_F(QtPasteboardLiveTest, AnotherClientsFileListIsAFileUrl) {
    QtPasteboard pasteboard;
    const auto before = pasteboard.changeCount();
    ASSERT_TRUE(xclip({"-selection", "clipboard", "-t", "text/uri-list", "-i"}, QByteArray("file:///tmp/a.txt")));
    ASSERT_TRUE(spinUntil([&] { return pasteboard.changeCount() > before; }));
    const auto types = pasteboard.types();
    EXPECT_NE(std::find(types.begin(), types.end(), std::string(type::kFileURL)), types.end());
    EXPECT_EQ(pasteboard.data(type::kFileURL), "file:///tmp/a.txt");
}

TEST_F(QtPasteboardLiveTest, OurTextReachesAnotherClient) {
    QtPasteboard pasteboard;
    pasteboard.write(platform::PasteboardItem::text("привет, world"));
    EXPECT_EQ(xclip({"-selection", "clipboard", "-o"}), QByteArray("привет, world"));
    const auto targets = xclip({"-selection", "clipboard", "-o", "-t", "TARGETS"});
    ASSERT_TRUE(targets);
    EXPECT_TRUE(targets->contains("UTF8_STRING")) << targets->toStdString();
}

TEST_F(QtPasteboardLiveTest, TheSelectionIsReadAndWrittenApartFromTheClipboard) {
    QtPasteboard pasteboard;
    pasteboard.write(platform::PasteboardItem::text("clipboard text"));
    // Ours first: Qt takes a selection with the time of the last event it handled, and loses
    // to a claim it has not handled yet; here nothing else has claimed it.
    pasteboard.setSelectionText("наш выбор");
    EXPECT_EQ(xclip({"-selection", "primary", "-o"}), QByteArray("наш выбор"));
    ASSERT_TRUE(xclip({"-selection", "primary", "-i"}, QByteArray("selected words")));
    ASSERT_TRUE(spinUntil([&] { return pasteboard.selectionText() == std::optional<std::string>("selected words"); }));
    EXPECT_EQ(pasteboard.text(), "clipboard text");
}

TEST_F(QtPasteboardLiveTest, OurSecretIsMarkedBothWaysForOtherClients) {
    QtPasteboard pasteboard;
    platform::PasteboardItem item = platform::PasteboardItem::text("hunter2");
    item.representations.emplace_back(std::string(type::kConcealed), std::string("\x01", 1));
    pasteboard.write(item);
    EXPECT_EQ(xclip({"-selection", "clipboard", "-o", "-t", "x-kde-passwordManagerHint"}), QByteArray("secret"));
    const auto targets = xclip({"-selection", "clipboard", "-o", "-t", "TARGETS"});
    ASSERT_TRUE(targets);
    EXPECT_TRUE(targets->contains("org.nspasteboard.ConcealedType")) << targets->toStdString();
}

}  // namespace
}  // namespace orvantis::ui
