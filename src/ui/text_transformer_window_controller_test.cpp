#include "ui/text_transformer_window_controller.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QTextCursor>
#include <QTextDocument>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QKeyEvent>

#include "core/settings/preference_store.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis::ui {
namespace {

/// A key pressed and let go in `widget`, as the keyboard would.
void key(QWidget* widget, int code, const QString& text = {}) {
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, code, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &release);
}

void typeText(QWidget* widget, const QString& text) {
    for (QChar c : text) key(widget, c.unicode() < 128 ? QChar(c).toUpper().unicode() : 0, QString(c));
}

class TextTransformerWindowTest : public ::testing::Test {
protected:
    std::unique_ptr<TextTransformerWindowController> makeWindow() {
        return std::make_unique<TextTransformerWindowController>(settings_, desktop_.pasteboard(), [this] { ++closed_; });
    }
    std::string output(const TextTransformerWindowController& w) { return w.outputTextView()->toPlainText().toStdString(); }
    std::string status(const TextTransformerWindowController& w) { return w.statusLabel()->text().toStdString(); }

    orvantis::testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    int closed_ = 0;
};

TEST_F(TextTransformerWindowTest, StartsWithBase64EncodeAndItsSizes) {
    auto w = makeWindow();
    EXPECT_EQ(w->selectedTransform(), TextTransform::base64Encode);
    EXPECT_EQ(w->transformButton()->text().toStdString(), "Base64 encode");
    EXPECT_EQ(w->size(), QSize(640, 540));
    EXPECT_EQ(w->minimumSize(), QSize(480, 420));
    EXPECT_TRUE(w->outputTextView()->isReadOnly());
}

TEST_F(TextTransformerWindowTest, ShowTakesTheClipboardTextAllSelected) {
    desktop_.pasteboard().writeTextFromOtherApp("hello");
    auto w = makeWindow();
    w->showWindow();
    EXPECT_EQ(w->inputTextView()->toPlainText().toStdString(), "hello");
    EXPECT_EQ(w->inputTextView()->textCursor().selectedText().toStdString(), "hello");
    EXPECT_EQ(output(*w), "aGVsbG8=");
    EXPECT_EQ(status(*w), "");
    w->close();
}

TEST_F(TextTransformerWindowTest, AClipboardWithoutTextLeavesTheInput) {
    auto w = makeWindow();
    w->inputTextView()->setPlainText("kept");
    desktop_.pasteboard().writeFromOtherApp(platform::PasteboardItem{{{"public.png", "\x89PNG"}}});
    w->showWindow();
    EXPECT_EQ(w->inputTextView()->toPlainText().toStdString(), "kept");
    EXPECT_EQ(output(*w), "a2VwdA==");
    w->close();
}

TEST_F(TextTransformerWindowTest, EveryKeystrokeRecomputesAndErrorsClear) {
    auto w = makeWindow();
    w->selectTransform(TextTransform::base64Decode);
    EXPECT_EQ(w->transformButton()->text().toStdString(), "Base64 decode");
    typeText(w->inputTextView(), "a$");
    EXPECT_EQ(status(*w), "Invalid input for Base64.");
    EXPECT_EQ(output(*w), "");
    key(w->inputTextView(), Qt::Key_Backspace);
    typeText(w->inputTextView(), "GVsbG8");
    EXPECT_EQ(status(*w), "");
    EXPECT_EQ(output(*w), "hello");
    // Empty input is not special: hexDecode shows its error.
    w->selectTransform(TextTransform::hexDecode);
    w->inputTextView()->clear();
    EXPECT_EQ(status(*w), "Invalid input for Hex (odd length).");
}

TEST_F(TextTransformerWindowTest, CopyWritesTheResultAsText) {
    auto w = makeWindow();
    w->inputTextView()->setPlainText("Привет");
    w->selectTransform(TextTransform::upper);
    w->copyButton()->click();
    EXPECT_EQ(desktop_.pasteboard().data(platform::pasteboard_type::kText), "ПРИВЕТ");
}

TEST_F(TextTransformerWindowTest, ThePickerSearchesMovesAndChooses) {
    auto w = makeWindow();
    w->show();
    w->openPicker();
    TransformPickerViewController* picker = w->picker();
    ASSERT_NE(picker, nullptr);
    EXPECT_EQ(picker->size(), QSize(320, 292));
    EXPECT_EQ(picker->tableView()->count(), 25);
    EXPECT_EQ(picker->tableView()->currentRow(), 4);  // the current transform
    typeText(picker->searchField(), "decode");
    EXPECT_EQ(picker->tableView()->count(), 3);
    EXPECT_EQ(picker->tableView()->currentRow(), 0);
    key(picker->searchField(), Qt::Key_Down);
    key(picker->searchField(), Qt::Key_Down);
    key(picker->searchField(), Qt::Key_Down);  // stops at the end
    EXPECT_EQ(picker->tableView()->currentRow(), 2);
    w->inputTextView()->setPlainText("");
    key(picker->searchField(), Qt::Key_Return);
    EXPECT_EQ(w->selectedTransform(), TextTransform::hexDecode);
    EXPECT_EQ(w->transformButton()->text().toStdString(), "Hex decode");
    EXPECT_EQ(status(*w), "Invalid input for Hex (odd length).");
    QApplication::processEvents();
    EXPECT_TRUE(w->picker() == nullptr || !w->picker()->isVisible());
    w->close();
}

TEST_F(TextTransformerWindowTest, ThePickerShowsItsListFromTheTopWhenTheCurrentRowIsOnTheFirstPage) {
    auto w = makeWindow();
    w->show();
    w->openPicker();
    QApplication::processEvents();
    // Base64 encode, the fifth row, is in view with the four digests above it.
    EXPECT_EQ(w->picker()->tableView()->currentRow(), 4);
    EXPECT_EQ(w->picker()->tableView()->verticalScrollBar()->value(), 0);
    w->picker()->close();
    // The last transform is scrolled into view.
    w->selectTransform(TextTransform::count);
    w->openPicker();
    QApplication::processEvents();
    QListWidget* list = w->picker()->tableView();
    EXPECT_EQ(list->currentRow(), 24);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualItemRect(list->currentItem())));
    w->close();
}

TEST_F(TextTransformerWindowTest, ASearchWithoutHitsAndReturnDoNothing) {
    auto w = makeWindow();
    w->show();
    w->openPicker();
    typeText(w->picker()->searchField(), "no such tool");
    EXPECT_EQ(w->picker()->tableView()->count(), 0);
    key(w->picker()->searchField(), Qt::Key_Return);
    EXPECT_EQ(w->selectedTransform(), TextTransform::base64Encode);
    // Opening the picker while it is open closes it.
    w->openPicker();
    QApplication::processEvents();
    EXPECT_TRUE(w->picker() == nullptr || !w->picker()->isVisible());
    w->close();
}

TEST_F(TextTransformerWindowTest, ALongResultIsShownInPiecesAndCopiedWhole) {
    auto w = makeWindow();
    const std::string input(6000, 'a');  // its Base64 is one line of 8,000 characters
    w->inputTextView()->setPlainText(QString::fromStdString(input));
    const std::string shown = output(*w);
    EXPECT_EQ(shown.size(), 8001u);
    EXPECT_EQ(shown.find('\n'), 4096u);
    w->copyButton()->click();
    EXPECT_EQ(desktop_.pasteboard().data(platform::pasteboard_type::kText),
              applyTransform(TextTransform::base64Encode, input));
    // Short lines are shown as they are.
    w->inputTextView()->setPlainText("{\"a\":1}");
    w->selectTransform(TextTransform::jsonPretty);
    EXPECT_EQ(output(*w), "{\n  \"a\" : 1\n}");
}

TEST_F(TextTransformerWindowTest, ShortResultLinesAreShownInFewBlocksAndReadBackAsLines) {
    auto w = makeWindow();
    std::string input;
    for (int i = 0; i < 20000; ++i) input += "line " + std::to_string(i) + "\n";
    w->inputTextView()->setPlainText(QString::fromStdString(input));
    w->selectTransform(TextTransform::upper);
    const std::string result = applyTransform(TextTransform::upper, input);
    // A block per line costs most of the time of showing a megabyte; about 1,024 characters a
    // block instead.
    EXPECT_LE(w->outputTextView()->document()->blockCount(), static_cast<int>(result.size() / 1000 + 2));
    EXPECT_EQ(output(*w), result);
    // What the user copies out of the view has its line ends.
    QTextCursor cursor(w->outputTextView()->document());
    cursor.setPosition(0);
    cursor.movePosition(QTextCursor::Down, QTextCursor::KeepAnchor, 3);
    cursor.movePosition(QTextCursor::EndOfLine, QTextCursor::KeepAnchor);
    w->outputTextView()->setTextCursor(cursor);
    w->outputTextView()->copy();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "LINE 0\nLINE 1\nLINE 2\nLINE 3");
    // A result of a few lines keeps a block a line, as the accessibility interface reads them.
    w->inputTextView()->setPlainText("a\nb\nc");
    EXPECT_EQ(w->outputTextView()->document()->blockCount(), 3);
}

TEST_F(TextTransformerWindowTest, ClosingTellsTheOwner) {
    auto w = makeWindow();
    w->showWindow();
    w->close();
    EXPECT_EQ(closed_, 1);
}

}  // namespace
}  // namespace orvantis::ui
