#include "ui/translation_popup_controller.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>
#include <QWidget>
#include <gtest/gtest.h>

#include "platform/sim/virtual_main_loop.h"

namespace orvantis::ui {
namespace {

using namespace std::chrono_literals;

/// Counts grabs; refuses the first `refusals` attempts as if another client held the keyboard.
class FakeKeyboardGrab final : public KeyboardGrab {
public:
    explicit FakeKeyboardGrab(int refusals = 0) : refusals_(refusals) {}
    bool tryGrab(QWindow&) override {
        ++attempts;
        if (refusals_ > 0) {
            --refusals_;
            return false;
        }
        held = true;
        return true;
    }
    void release() override {
        held = false;
        ++releases;
    }
    bool holdsPointer() const override { return held; }

    int attempts = 0;
    int releases = 0;
    bool held = false;

private:
    int refusals_;
};

std::vector<PopupOption> threeOptions() { return {{"fooBar", "fooBar"}, {"FooBar", "FooBar"}, {"foo_bar", "foo_bar"}}; }

std::vector<QWidget*> optionRows(QWidget& panel) {
    auto rows = panel.findChildren<QWidget*>(QStringLiteral("translationPopupOption"));
    std::vector<QWidget*> sorted(rows.begin(), rows.end());
    std::sort(sorted.begin(), sorted.end(), [](QWidget* a, QWidget* b) { return a->y() < b->y(); });
    return sorted;
}

class TranslationPopupControllerTest : public ::testing::Test {
protected:
    TranslationPopupControllerTest() {
        auto grab = std::make_unique<FakeKeyboardGrab>();
        grab_ = grab.get();
        controller_ =
            std::make_unique<TranslationPopupController>(loop_, std::move(grab), [this](std::function<void()> changed) {
                activation_ = std::move(changed);
                return Subscription([this] { activation_ = nullptr; });
            });
        controller_->setOnConfirm([this](const std::string& value) {
            events_.push_back("confirm " + value);
            confirmedWhileVisible_ = controller_->isVisible();
        });
        controller_->setOnDismiss([this] { events_.push_back("dismiss"); });
        controller_->setOnTabPressed([this] { events_.push_back("tab"); });
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(&controller_->panel(), &event);
        lastKeyAccepted_ = event.isAccepted();
    }

    void clickRow(int row, bool twice = false) {
        QWidget* target = optionRows(controller_->panel()).at(static_cast<std::size_t>(row));
        const QPointF local(20, 10);
        QMouseEvent down(QEvent::MouseButtonPress, local, target->mapToGlobal(local), Qt::LeftButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(target, &down);
        if (!twice) return;
        QMouseEvent again(QEvent::MouseButtonDblClick, local, target->mapToGlobal(local), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &again);
    }

    QRect screenArea() const { return QGuiApplication::primaryScreen()->availableGeometry(); }

    sim::VirtualMainLoop loop_;
    FakeKeyboardGrab* grab_ = nullptr;
    std::function<void()> activation_;
    std::unique_ptr<TranslationPopupController> controller_;
    std::vector<std::string> events_;
    bool confirmedWhileVisible_ = true;
    bool lastKeyAccepted_ = false;
};

TEST_F(TranslationPopupControllerTest, StartsHidden) {
    EXPECT_FALSE(controller_->isVisible());
    EXPECT_FALSE(controller_->panel().isVisible());
    EXPECT_EQ(grab_->attempts, 0);
}

TEST_F(TranslationPopupControllerTest, ThePanelFloatsWithoutTakingTheFocus) {
    const Qt::WindowFlags flags = controller_->panel().windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(flags.testFlag(Qt::X11BypassWindowManagerHint));
    EXPECT_TRUE(controller_->panel().testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(TranslationPopupControllerTest, ShowPutsTheLoadingRow30BelowThePointer) {
    controller_->show(QPoint(100, 100));
    EXPECT_TRUE(controller_->isVisible());
    EXPECT_TRUE(controller_->panel().isVisible());
    EXPECT_EQ(controller_->panel().geometry(), QRect(100, 130, 300, 38));
    auto* loading = controller_->panel().findChild<QWidget*>(QStringLiteral("translationPopupLoading"));
    ASSERT_NE(loading, nullptr);
    EXPECT_TRUE(loading->isVisible());
    EXPECT_EQ(loading->geometry(), QRect(0, 4, 300, 30));
    EXPECT_EQ(loading->findChild<QLabel*>(QStringLiteral("message"))->text(), QStringLiteral("Translating…"));
}

TEST_F(TranslationPopupControllerTest, NearTheBottomOfTheScreenThePopupStands4AboveTheEdge) {
    const QRect area = screenArea();
    controller_->show(QPoint(area.x() + 50, area.bottom() - 5));
    EXPECT_EQ(controller_->panel().geometry().bottom() + 1, area.y() + area.height() - 4);
}

TEST_F(TranslationPopupControllerTest, ShowTakesTheKeyboardAndDismissGivesItBack) {
    controller_->show(QPoint(100, 100));
    EXPECT_TRUE(grab_->held);
    EXPECT_TRUE(controller_->holdsKeyboard());
    controller_->dismiss();
    EXPECT_FALSE(grab_->held);
    EXPECT_FALSE(controller_->holdsKeyboard());
}

TEST_F(TranslationPopupControllerTest, TheGrabIsRetriedWhileAnotherClientHoldsTheKeyboard) {
    auto grab = std::make_unique<FakeKeyboardGrab>(3);
    FakeKeyboardGrab* fake = grab.get();
    TranslationPopupController controller(loop_, std::move(grab), [](std::function<void()>) { return Subscription(); });
    controller.show(QPoint(100, 100));
    EXPECT_FALSE(fake->held);
    loop_.runFor(100ms);
    EXPECT_EQ(fake->attempts, 3);
    EXPECT_FALSE(fake->held);
    loop_.runFor(50ms);
    EXPECT_EQ(fake->attempts, 4);
    EXPECT_TRUE(fake->held);
    loop_.runFor(1s);
    EXPECT_EQ(fake->attempts, 4);
}

TEST_F(TranslationPopupControllerTest, TheGrabGivesUpAfterOneSecond) {
    auto grab = std::make_unique<FakeKeyboardGrab>(1000);
    FakeKeyboardGrab* fake = grab.get();
    TranslationPopupController controller(loop_, std::move(grab), [](std::function<void()>) { return Subscription(); });
    controller.show(QPoint(100, 100));
    loop_.runFor(1s);
    EXPECT_EQ(fake->attempts, 21);  // at once, then every 50 ms up to 1 s
    loop_.runFor(2s);
    EXPECT_EQ(fake->attempts, 21);
    EXPECT_TRUE(controller.isVisible());
    EXPECT_FALSE(controller.holdsKeyboard());
}

TEST_F(TranslationPopupControllerTest, DismissStopsTheRetries) {
    auto grab = std::make_unique<FakeKeyboardGrab>(1000);
    FakeKeyboardGrab* fake = grab.get();
    TranslationPopupController controller(loop_, std::move(grab), [](std::function<void()>) { return Subscription(); });
    controller.show(QPoint(100, 100));
    loop_.runFor(100ms);
    controller.dismiss();
    const int attempts = fake->attempts;
    loop_.runFor(1s);
    EXPECT_EQ(fake->attempts, attempts);
}

TEST_F(TranslationPopupControllerTest, OptionsAreNumberedRowsWithTheFirstSelected) {
    controller_->show(QPoint(100, 100));
    controller_->setFooterHint("Tab: synonyms");
    controller_->showOptions(threeOptions());
    auto rows = optionRows(controller_->panel());
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0]->property("text").toString(), QStringLiteral("fooBar"));
    EXPECT_EQ(rows[2]->property("index").toULongLong(), 2u);
    EXPECT_TRUE(rows[0]->property("highlighted").toBool());
    EXPECT_FALSE(rows[1]->property("highlighted").toBool());
    EXPECT_FALSE(controller_->panel().findChild<QWidget*>(QStringLiteral("translationPopupLoading"))->isVisible());
    auto* hint = controller_->panel().findChild<QWidget*>(QStringLiteral("translationPopupHint"));
    ASSERT_NE(hint, nullptr);
    EXPECT_TRUE(hint->isVisible());
    EXPECT_EQ(hint->property("text").toString(), QStringLiteral("Tab: synonyms"));
    EXPECT_EQ(hint->height(), 22);
    EXPECT_EQ(hint->geometry().bottom() + 1, controller_->panel().height() - 4);
    // The panel follows the model's frame; the top edge stayed.
    const PopupRect& frame = controller_->model().frame();
    EXPECT_EQ(controller_->panel().geometry(),
              QRect(100, 130, static_cast<int>(frame.width), static_cast<int>(frame.height)));
    EXPECT_EQ(controller_->panel().width(), 300);
}

TEST_F(TranslationPopupControllerTest, RowsPastNineAreNumberedToo) {
    controller_->show(QPoint(100, 100));
    std::vector<PopupOption> options;
    for (int i = 1; i <= 11; ++i) options.push_back({"option" + std::to_string(i), std::to_string(i)});
    controller_->showOptions(options);
    auto rows = optionRows(controller_->panel());
    ASSERT_EQ(rows.size(), 11u);
    EXPECT_EQ(rows[10]->property("index").toULongLong(), 10u);
    press(Qt::Key_9, Qt::ControlModifier);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm 9"}));
}

TEST_F(TranslationPopupControllerTest, DownThenReturnConfirmsTheSecondAfterClosing) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    press(Qt::Key_Down);
    EXPECT_TRUE(lastKeyAccepted_);
    EXPECT_TRUE(optionRows(controller_->panel())[1]->property("highlighted").toBool());
    EXPECT_FALSE(optionRows(controller_->panel())[0]->property("highlighted").toBool());
    press(Qt::Key_Return);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm FooBar"}));
    EXPECT_FALSE(confirmedWhileVisible_);
    EXPECT_FALSE(controller_->panel().isVisible());
    EXPECT_FALSE(grab_->held);
}

TEST_F(TranslationPopupControllerTest, KeypadEnterConfirms) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm fooBar"}));
}

TEST_F(TranslationPopupControllerTest, CtrlDigitConfirmsThatRow) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    press(Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm foo_bar"}));
}

TEST_F(TranslationPopupControllerTest, CtrlNineWithThreeRowsIsTakenAndNothingHappens) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    press(Qt::Key_9, Qt::ControlModifier);
    EXPECT_TRUE(lastKeyAccepted_);
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(controller_->isVisible());
}

TEST_F(TranslationPopupControllerTest, LettersPassOnAndChangeNothing) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    press(Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    EXPECT_FALSE(lastKeyAccepted_);
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(controller_->isVisible());
}

TEST_F(TranslationPopupControllerTest, TabCallsOnTabPressedAndStaysOpen) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    press(Qt::Key_Tab);
    EXPECT_TRUE(lastKeyAccepted_);
    EXPECT_EQ(events_, (std::vector<std::string>{"tab"}));
    EXPECT_TRUE(controller_->isVisible());
}

TEST_F(TranslationPopupControllerTest, TabWithoutACallbackIsStillTaken) {
    TranslationPopupController controller(loop_, KeyboardGrab::none(),
                                          [](std::function<void()>) { return Subscription(); });
    controller.show(QPoint(100, 100));
    QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
    QApplication::sendEvent(&controller.panel(), &tab);
    EXPECT_TRUE(tab.isAccepted());
    EXPECT_TRUE(controller.isVisible());
}

TEST_F(TranslationPopupControllerTest, EscDuringLoadingDismissesAndALateResultStaysHidden) {
    controller_->show(QPoint(100, 100));
    press(Qt::Key_Escape);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
    EXPECT_FALSE(controller_->isVisible());
    controller_->showOptions(threeOptions());
    EXPECT_FALSE(controller_->isVisible());
    EXPECT_FALSE(controller_->panel().isVisible());
}

TEST_F(TranslationPopupControllerTest, AnEmptyListStandsWithItsHintAndReturnDoesNothing) {
    controller_->show(QPoint(100, 100));
    controller_->setFooterHint("hint");
    controller_->showOptions({});
    EXPECT_EQ(controller_->panel().height(), 30);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(controller_->isVisible());
}

TEST_F(TranslationPopupControllerTest, AClickSelectsAndADoubleClickConfirms) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    clickRow(2);
    EXPECT_TRUE(optionRows(controller_->panel())[2]->property("highlighted").toBool());
    EXPECT_EQ(controller_->model().selectedIndex(), 2u);
    EXPECT_TRUE(events_.empty());
    clickRow(1, true);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "confirm FooBar"}));
}

void pressOutside(QWidget& panel, Qt::MouseButton button = Qt::LeftButton) {
    const QPoint outside = panel.geometry().bottomRight() + QPoint(50, 50);
    QMouseEvent down(QEvent::MouseButtonPress, QPointF(panel.mapFromGlobal(outside)), QPointF(outside), button, button,
                     Qt::NoModifier);
    QApplication::sendEvent(&panel, &down);
}

TEST_F(TranslationPopupControllerTest, AClickOutsideClosesWithoutAChoiceOnTheNextTurn) {
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    loop_.runUntilIdle();
    pressOutside(controller_->panel());
    EXPECT_TRUE(controller_->isVisible());
    loop_.runUntilIdle();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
    EXPECT_FALSE(controller_->isVisible());
}

TEST_F(TranslationPopupControllerTest, ARightClickOutsideClosesToo) {
    controller_->show(QPoint(100, 100));
    loop_.runUntilIdle();
    pressOutside(controller_->panel(), Qt::RightButton);
    loop_.runUntilIdle();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
}

TEST_F(TranslationPopupControllerTest, AClickThatCameWithTheShowingDoesNotClose) {
    controller_->show(QPoint(100, 100));
    pressOutside(controller_->panel());
    loop_.runUntilIdle();
    EXPECT_TRUE(controller_->isVisible());
    EXPECT_TRUE(events_.empty());
}

TEST_F(TranslationPopupControllerTest, KeysMeantForAnotherOfOurWindowsReachThePopup) {
    QWidget other;
    other.show();
    controller_->show(QPoint(100, 100));
    controller_->showOptions(threeOptions());
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QApplication::sendEvent(&other, &down);
    EXPECT_EQ(controller_->model().selectedIndex(), 1u);
    QKeyEvent letter(QEvent::KeyPress, Qt::Key_B, Qt::NoModifier, QStringLiteral("b"));
    QApplication::sendEvent(&other, &letter);
    EXPECT_FALSE(letter.isAccepted());
    controller_->dismiss();
    // Once closed, keys are left alone.
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(&other, &escape);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
}

TEST_F(TranslationPopupControllerTest, AnotherApplicationsActivationCloses) {
    controller_->show(QPoint(100, 100));
    EXPECT_FALSE(activation_);  // not yet: the activation that came with the hotkey may still arrive
    loop_.runUntilIdle();
    ASSERT_TRUE(activation_);
    activation_();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
    EXPECT_FALSE(activation_);  // unsubscribed on close
}

TEST_F(TranslationPopupControllerTest, AnErrorClosesAfterThreeSeconds) {
    controller_->show(QPoint(100, 100));
    controller_->showError("Translation failed");
    auto* error = controller_->panel().findChild<QWidget*>(QStringLiteral("translationPopupError"));
    ASSERT_NE(error, nullptr);
    EXPECT_TRUE(error->isVisible());
    EXPECT_EQ(error->findChild<QLabel*>(QStringLiteral("message"))->text(), QStringLiteral("Translation failed"));
    EXPECT_EQ(controller_->panel().height(), 38);
    loop_.runFor(2900ms);
    EXPECT_TRUE(controller_->isVisible());
    loop_.runFor(100ms);
    EXPECT_FALSE(controller_->isVisible());
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
}

TEST_F(TranslationPopupControllerTest, EscOnAnErrorClosesOnce) {
    controller_->show(QPoint(100, 100));
    controller_->showError("Translation failed");
    press(Qt::Key_Escape);
    loop_.runFor(5s);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
}

TEST_F(TranslationPopupControllerTest, ShowingAgainCancelsAPendingErrorClose) {
    controller_->show(QPoint(100, 100));
    controller_->showError("Translation failed");
    loop_.runFor(2s);
    controller_->show(QPoint(200, 200));
    loop_.runFor(2s);
    EXPECT_TRUE(controller_->isVisible());
    EXPECT_TRUE(events_.empty());
}

TEST_F(TranslationPopupControllerTest, DismissWhileHiddenCallsNothing) {
    controller_->dismiss();
    EXPECT_TRUE(events_.empty());
}

TEST_F(TranslationPopupControllerTest, ALongTextStopsAtTheCapAndTheScreenHeight) {
    controller_->show(QPoint(10, 10));
    controller_->showOptions({{std::string(2000, 'w'), "long"}});
    const QRect area = screenArea();
    const double cap = std::max(300.0, std::min(720.0, area.width() * 0.6));
    EXPECT_EQ(controller_->panel().width(), static_cast<int>(cap));
    EXPECT_LE(controller_->panel().height(), static_cast<int>(area.height() * 0.7) + 1);
    EXPECT_GE(controller_->panel().geometry().top(), area.top());
    // The one row wraps onto many lines.
    auto rows = optionRows(controller_->panel());
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_GT(rows[0]->height(), 5 * 13);
    EXPECT_EQ(rows[0]->height(), static_cast<int>(controller_->model().optionRowHeight(0)));
}

}  // namespace
}  // namespace orvantis::ui
