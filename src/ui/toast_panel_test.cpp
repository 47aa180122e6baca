#include "ui/toast_panel.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QWidget>

#include "platform/sim/virtual_main_loop.h"

namespace orvantis::ui {
namespace {

using namespace std::chrono_literals;

void screenshot(QWidget& widget, const char* name) {
    const QByteArray dir = qgetenv("ORVANTIS_POPUP_SCREENSHOTS");
    if (dir.isEmpty()) return;
    QDir().mkpath(QString::fromUtf8(dir));
    widget.grab().save(QString::fromUtf8(dir) + QStringLiteral("/") + QString::fromLatin1(name) +
                       QStringLiteral(".png"));
}

ToastContent copied(std::optional<std::string> subtitle, std::string title = "Password copied") {
    return ToastContent{std::move(title), std::move(subtitle), "checkmark.circle.fill", ToastTint::green, 2500ms};
}

TEST(ToastPanelTest, ATitleAndSubtitleAt320By56NearTheTop) {
    sim::VirtualMainLoop loop;
    ToastPanel toast(loop);
    toast.show(copied("16 chars · clears in 60 s"));
    EXPECT_TRUE(toast.isVisible());
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_EQ(toast.window().geometry(), QRect(area.x() + area.width() / 2 - 160, area.y() + 24, 320, 56));
    EXPECT_EQ(toast.titleLabel().text(), QStringLiteral("Password copied"));
    EXPECT_EQ(toast.subtitleLabel().text(), QStringLiteral("16 chars · clears in 60 s"));
    EXPECT_FALSE(toast.subtitleLabel().isHidden());
    // It never takes the focus and lets clicks through.
    EXPECT_TRUE(toast.window().windowFlags() & Qt::WindowDoesNotAcceptFocus);
    EXPECT_TRUE(toast.window().windowFlags() & Qt::WindowTransparentForInput);
    screenshot(toast.window(), "toast-en");
    toast.show(copied("16 символов · очистится через 60 с", "Пароль скопирован"));
    screenshot(toast.window(), "toast-ru");
}

TEST(ToastPanelTest, AnEmptySubtitleGivesTheSmallHeightAndNoSecondLine) {
    sim::VirtualMainLoop loop;
    ToastPanel toast(loop);
    for (std::optional<std::string> none : {std::optional<std::string>(), std::optional<std::string>("")}) {
        toast.show(copied(none, "Password typed"));
        EXPECT_EQ(toast.window().height(), 44);
        EXPECT_EQ(toast.window().width(), 320);
        EXPECT_TRUE(toast.subtitleLabel().isHidden());
    }
    screenshot(toast.window(), "toast-en-one-line");
}

TEST(ToastPanelTest, HidesAfterItsDuration) {
    sim::VirtualMainLoop loop;
    ToastPanel toast(loop);
    toast.show(copied("x"));
    loop.runFor(2499ms);
    EXPECT_TRUE(toast.isVisible());
    loop.runFor(1ms);
    EXPECT_FALSE(toast.isVisible());
}

TEST(ToastPanelTest, ASecondToastReplacesTheFirstAndStaysItsOwnFullDuration) {
    sim::VirtualMainLoop loop;
    ToastPanel toast(loop);
    toast.show(copied("first"));
    loop.runFor(2s);
    toast.show(copied("second"));
    EXPECT_EQ(toast.subtitleLabel().text(), QStringLiteral("second"));
    loop.runFor(1s);  // past the first one's end
    EXPECT_TRUE(toast.isVisible());
    loop.runFor(1499ms);
    EXPECT_TRUE(toast.isVisible());
    loop.runFor(1ms);
    EXPECT_FALSE(toast.isVisible());
}

TEST(ToastPanelTest, WithoutAScreenItKeepsItsLastFrameAndStillShows) {
    sim::VirtualMainLoop loop;
    std::optional<QRect> screen = QRect(0, 0, 1000, 700);
    ToastPanel toast(loop, [&screen] { return screen; });
    toast.show(copied("first"));
    const QRect frame(340, 24, 320, 56);
    EXPECT_EQ(toast.window().geometry(), frame);
    toast.window().hide();
    screen.reset();
    toast.show(copied(std::nullopt, "Password typed"));
    EXPECT_TRUE(toast.isVisible());
    EXPECT_EQ(toast.window().geometry(), frame);
    EXPECT_EQ(toast.titleLabel().text(), QStringLiteral("Password typed"));
}

}  // namespace
}  // namespace orvantis::ui
