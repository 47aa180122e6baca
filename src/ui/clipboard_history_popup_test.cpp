#include "ui/clipboard_history_popup.h"

#include <algorithm>
#include <string>
#include <vector>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMouseEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QWidget>
#include <gtest/gtest.h>

#include "platform/sim/virtual_main_loop.h"

namespace orvantis::ui {
namespace {

class CountingGrab final : public KeyboardGrab {
public:
    bool tryGrab(QWindow&) override {
        ++attempts;
        held = true;
        return true;
    }
    void release() override { held = false; }
    bool holdsPointer() const override { return held; }
    int attempts = 0;
    bool held = false;
};

ClipboardPopupTexts englishTexts() {
    return {"No clipboard history", "Search clipboard…", "↑↓ select · Enter paste", "%d items", "%d of %d"};
}

std::vector<QWidget*> rows(QWidget& panel) {
    auto found = panel.findChildren<QWidget*>(QStringLiteral("clipboardPopupRow"));
    std::vector<QWidget*> sorted(found.begin(), found.end());
    std::sort(sorted.begin(), sorted.end(),
              [](QWidget* a, QWidget* b) { return a->property("index").toULongLong() < b->property("index").toULongLong(); });
    return sorted;
}

class ClipboardPopupControllerTest : public ::testing::Test {
protected:
    ClipboardPopupControllerTest() {
        auto grab = std::make_unique<CountingGrab>();
        grab_ = grab.get();
        controller_ = std::make_unique<ClipboardPopupController>(
            loop_, std::move(grab),
            [this](const std::string& id) -> std::optional<std::string> {
                ++lookups_;
                if (id == "org.example.editor") return std::string("Editor.app");
                return std::nullopt;
            },
            [this](std::function<void()> changed) {
                activation_ = std::move(changed);
                return Subscription([this] { activation_ = nullptr; });
            });
        controller_->setOnConfirm([this](const Uuid& id) {
            events_.push_back("confirm " + label(id));
            confirmedWhileVisible_ = controller_->isVisible();
        });
        controller_->setOnDelete([this](const Uuid& id) { events_.push_back("delete " + label(id)); });
        controller_->setOnTogglePin([this](const Uuid& id) { events_.push_back("pin " + label(id)); });
        controller_->setOnDismiss([this] { events_.push_back("dismiss"); });
    }

    ClipboardItem text(const std::string& content, std::optional<std::string> app = std::nullopt) {
        ClipboardItem item = ClipboardItem::makeText(content, std::move(app), ids_.generate(), 0);
        items_.push_back(item);
        return item;
    }
    std::string label(const Uuid& id) const {
        for (const auto& item : items_)
            if (item.id() == id) return item.previewText();
        return "?";
    }
    void show(std::vector<ClipboardItem> items, QPoint at = QPoint(100, 100)) {
        controller_->show(at, std::move(items), englishTexts());
    }
    std::vector<ClipboardItem> several(int count) {
        std::vector<ClipboardItem> out;
        for (int i = 0; i < count; ++i) out.push_back(text("entry " + std::to_string(i)));
        return out;
    }
    /// A key as the grab brings it: to the focus widget of the panel.
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& typed = {}) {
        QWidget* target = controller_->panel().focusWidget();
        if (!target) target = &controller_->panel();
        QKeyEvent event(QEvent::KeyPress, key, modifiers, typed);
        QApplication::sendEvent(target, &event);
    }
    void type(const QString& typed) {
        for (QChar c : typed) press(c.isLetter() ? Qt::Key_A + (c.toUpper().unicode() - 'A') : Qt::Key_Space,
                                    Qt::NoModifier, QString(c));
    }
    QLabel* label(const char* name) { return controller_->panel().findChild<QLabel*>(QString::fromLatin1(name)); }
    void clickRow(int row, bool twice = false) {
        QWidget* target = rows(controller_->panel()).at(static_cast<std::size_t>(row));
        const QPointF local(40, 10);
        QMouseEvent down(QEvent::MouseButtonPress, local, target->mapToGlobal(local), Qt::LeftButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(target, &down);
        if (!twice) return;
        QMouseEvent again(QEvent::MouseButtonDblClick, local, target->mapToGlobal(local), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &again);
    }

    sim::VirtualMainLoop loop_;
    UuidGenerator ids_{21};
    std::vector<ClipboardItem> items_;
    CountingGrab* grab_ = nullptr;
    std::function<void()> activation_;
    int lookups_ = 0;
    std::unique_ptr<ClipboardPopupController> controller_;
    std::vector<std::string> events_;
    bool confirmedWhileVisible_ = true;
};

TEST_F(ClipboardPopupControllerTest, ThePanelFloatsWithoutTakingTheFocus) {
    const Qt::WindowFlags flags = controller_->panel().windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(flags.testFlag(Qt::X11BypassWindowManagerHint));
    EXPECT_TRUE(controller_->panel().testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(controller_->isVisible());
}

TEST_F(ClipboardPopupControllerTest, ShowHangsThePanelBelowThePointerWithNumberedRows) {
    show({text("alpha", "org.example.editor"), text("beta"), text("gamma")});
    EXPECT_TRUE(controller_->panel().isVisible());
    EXPECT_EQ(controller_->panel().geometry(), QRect(100, 108, 440, 66 + 3 * 36));
    const auto shown = rows(controller_->panel());
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[0]->property("number").toString(), QStringLiteral("1"));
    EXPECT_EQ(shown[2]->property("preview").toString(), QStringLiteral("gamma"));
    EXPECT_EQ(shown[0]->property("appName").toString(), QStringLiteral("Editor")) << "\".app\" is cut";
    EXPECT_EQ(shown[1]->property("appName").toString(), QString());
    EXPECT_TRUE(shown[0]->property("highlighted").toBool());
    EXPECT_EQ(label("clipboardPopupCount")->text(), QStringLiteral("3 items"));
    EXPECT_EQ(label("clipboardPopupShortcuts")->text(), QStringLiteral("↑↓ select · Enter paste"));
    EXPECT_EQ(controller_->searchField().placeholderText(), QStringLiteral("Search clipboard…"));
    EXPECT_TRUE(controller_->panel().findChild<QWidget*>(QStringLiteral("clipboardPopupSearchIcon")));
    EXPECT_EQ(controller_->panel().focusWidget(), &controller_->searchField());
    EXPECT_TRUE(controller_->holdsKeyboard());
}

TEST_F(ClipboardPopupControllerTest, AnEmptyHistoryShowsTheEmptyLabelInOneRowOfHeight) {
    show({});
    EXPECT_EQ(controller_->panel().height(), 102);
    EXPECT_TRUE(label("clipboardPopupEmpty")->isVisible());
    EXPECT_EQ(label("clipboardPopupEmpty")->text(), QStringLiteral("No clipboard history"));
    EXPECT_FALSE(controller_->panel().findChild<QScrollArea*>(QStringLiteral("clipboardPopupScroll"))->isVisible());
    press(Qt::Key_Return);
    EXPECT_TRUE(controller_->isVisible());
    EXPECT_TRUE(events_.empty());
}

TEST_F(ClipboardPopupControllerTest, TypedKeysGoToTheSearchFieldWhichFiltersAndMarks) {
    show({text("apple pie"), text("banana"), text("Apple apple")});
    const int top = controller_->panel().y();
    type(QStringLiteral("apple"));
    EXPECT_EQ(controller_->searchField().text(), QStringLiteral("apple"));
    const auto shown = rows(controller_->panel());
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[1]->property("preview").toString(), QStringLiteral("Apple apple"));
    EXPECT_EQ(shown[1]->property("markCount").toInt(), 2);
    EXPECT_EQ(label("clipboardPopupCount")->text(), QStringLiteral("2 of 3"));
    EXPECT_EQ(controller_->panel().y(), top);
    EXPECT_EQ(controller_->panel().height(), 66 + 2 * 36);
    press(Qt::Key_Backspace);
    EXPECT_EQ(controller_->searchField().text(), QStringLiteral("appl"));
}

TEST_F(ClipboardPopupControllerTest, ChordsWithSuperAreNotTyped) {
    show({text("one"), text("two")});
    press(Qt::Key_V, Qt::MetaModifier | Qt::ShiftModifier, QStringLiteral("V"));
    EXPECT_EQ(controller_->searchField().text(), QString());
    EXPECT_TRUE(controller_->isVisible());
}

TEST_F(ClipboardPopupControllerTest, EscClearsTheSearchThenCloses) {
    show({text("one"), text("two")});
    type(QStringLiteral("tw"));
    ASSERT_EQ(rows(controller_->panel()).size(), 1u);
    press(Qt::Key_Escape);
    EXPECT_TRUE(controller_->isVisible());
    EXPECT_EQ(controller_->searchField().text(), QString());
    EXPECT_EQ(rows(controller_->panel()).size(), 2u);
    EXPECT_EQ(label("clipboardPopupCount")->text(), QStringLiteral("2 items"));
    press(Qt::Key_Escape);
    EXPECT_FALSE(controller_->isVisible());
    EXPECT_FALSE(controller_->panel().isVisible());
    EXPECT_FALSE(controller_->holdsKeyboard());
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
}

TEST_F(ClipboardPopupControllerTest, ArrowsMoveTheHighlightAndReturnConfirmsAfterClosing) {
    show({text("one"), text("two"), text("three")});
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_TRUE(rows(controller_->panel())[2]->property("highlighted").toBool());
    EXPECT_FALSE(rows(controller_->panel())[0]->property("highlighted").toBool());
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm two"}));
    EXPECT_FALSE(confirmedWhileVisible_);
}

TEST_F(ClipboardPopupControllerTest, CtrlDigitsPinAndDeleteGoToTheCallbacks) {
    show({text("one"), text("two"), text("three")});
    press(Qt::Key_P, Qt::ControlModifier);
    press(Qt::Key_Down);
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(events_, (std::vector<std::string>{"pin one", "delete two"}));
    EXPECT_EQ(controller_->searchField().text(), QString()) << "nothing was typed";
    press(Qt::Key_9, Qt::ControlModifier);
    EXPECT_TRUE(controller_->isVisible());
    press(Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(events_.back(), "confirm three");
    EXPECT_FALSE(controller_->isVisible());
}

TEST_F(ClipboardPopupControllerTest, ARefreshKeepsTheSearchAndTheTopEdge) {
    std::vector<ClipboardItem> items{text("note a"), text("other"), text("note b")};
    show(items);
    type(QStringLiteral("note"));
    const int top = controller_->panel().y();
    items.erase(items.begin());
    controller_->refresh(items);
    EXPECT_EQ(controller_->searchField().text(), QStringLiteral("note"));
    EXPECT_EQ(rows(controller_->panel()).size(), 1u);
    EXPECT_EQ(label("clipboardPopupCount")->text(), QStringLiteral("1 of 2"));
    EXPECT_EQ(controller_->panel().y(), top);
    controller_->panel().layout()->activate();
    QApplication::processEvents();
    EXPECT_EQ(controller_->panel().height(), 66 + 36) << "one row high, whatever the parts would like";
}

TEST_F(ClipboardPopupControllerTest, FifteenEntriesShowTenRowsAndScrollToTheSelection) {
    show(several(15));
    EXPECT_EQ(controller_->panel().height(), 66 + 10 * 36);
    EXPECT_EQ(rows(controller_->panel()).size(), 15u);
    EXPECT_EQ(rows(controller_->panel())[14]->property("number").toString(), QStringLiteral("15"));
    controller_->panel().layout()->activate();
    auto* scroll = controller_->panel().findChild<QScrollArea*>(QStringLiteral("clipboardPopupScroll"));
    scroll->widget()->layout()->activate();
    QApplication::processEvents();
    for (int i = 0; i < 14; ++i) press(Qt::Key_Down);
    EXPECT_GT(scroll->verticalScrollBar()->value(), 0);
}

TEST_F(ClipboardPopupControllerTest, AClickSelectsAndADoubleClickConfirms) {
    show({text("one"), text("two"), text("three")});
    clickRow(2);
    EXPECT_TRUE(rows(controller_->panel())[2]->property("highlighted").toBool());
    EXPECT_TRUE(controller_->isVisible());
    clickRow(1, true);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm two"}));
}

TEST_F(ClipboardPopupControllerTest, AnotherApplicationsActivationClosesOnlyAfterTwoTurns) {
    show({text("one")});
    EXPECT_FALSE(activation_);
    loop_.runUntilIdle();
    ASSERT_TRUE(activation_);
    activation_();
    EXPECT_FALSE(controller_->isVisible());
    EXPECT_FALSE(activation_) << "the watch ends with the popup";
}

TEST_F(ClipboardPopupControllerTest, APressOutsideThePanelClosesIt) {
    show({text("one")});
    controller_->handlePanelPress(QPoint(5, 5));
    loop_.runUntilIdle();
    EXPECT_TRUE(controller_->isVisible()) << "too early: the opening event";
    controller_->handlePanelPress(QPoint(5, 5));
    loop_.runUntilIdle();
    EXPECT_FALSE(controller_->isVisible());
    show({text("two")});
    loop_.runUntilIdle();
    controller_->handlePanelPress(controller_->panel().geometry().center());
    loop_.runUntilIdle();
    EXPECT_TRUE(controller_->isVisible());
}

TEST_F(ClipboardPopupControllerTest, KeysForAnotherOfOurWindowsGoToThePopup) {
    QWidget other;
    other.show();
    show({text("one"), text("two")});
    QKeyEvent typed(QEvent::KeyPress, Qt::Key_T, Qt::NoModifier, QStringLiteral("t"));
    QApplication::sendEvent(&other, &typed);
    EXPECT_EQ(controller_->searchField().text(), QStringLiteral("t"));
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(&other, &down);
    EXPECT_EQ(events_.back(), "confirm two");
}

TEST_F(ClipboardPopupControllerTest, AppNamesAreLookedUpOnce) {
    show({text("a", "org.example.editor"), text("b", "org.example.editor"), text("c", "org.unknown")});
    show({text("d", "org.example.editor"), text("e", "org.unknown")});
    EXPECT_EQ(lookups_, 2);
}

TEST_F(ClipboardPopupControllerTest, TheAdapterDrivesTheController) {
    QtClipboardHistoryPopup popup(*controller_);
    std::vector<std::string> seen;
    popup.setOnDismiss([&] { seen.push_back("dismissed"); });
    popup.show({10, 20}, {text("x")}, englishTexts());
    EXPECT_TRUE(popup.isVisible());
    EXPECT_EQ(controller_->panel().pos(), QPoint(10, 28));
    popup.dismiss();
    EXPECT_FALSE(popup.isVisible());
    EXPECT_EQ(seen, (std::vector<std::string>{"dismissed"}));
}

}  // namespace
}  // namespace orvantis::ui
