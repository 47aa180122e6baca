// orvantis_popup_probe: shows the translation popup on a real X display and drives it with
// xdotool, to check that the popup takes the keyboard and the pointer without taking the
// focus from the application that has it.
//
//   orvantis_popup_probe [--screenshot FILE] [--activate WINDOW]
//
// Steps: the popup with three options, its keyboard grab held; (a screenshot of the whole
// screen); `xdotool key Down Return` must confirm the second option; shown again, `xdotool key
// Escape` must dismiss it; shown again, a click far outside must dismiss it; shown again, a
// double click on the third row must confirm that row; with --activate, shown again, activating
// that window (which needs a window manager) must dismiss it. --screenshot FILE also writes
// FILE with "-loading" before its extension for the loading row, and with "-long" for a
// long wrapping option. Prints one line a step and exits 0
// when every step passed, 1 at the first failure.

#include <chrono>
#include <cstdlib>
#include <cstdio>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include <QApplication>
#include <QCommandLineParser>
#include <QProcess>
#include <QTimer>
#include <QWidget>

#include <xcb/xcb.h>

#include "ui/keyboard_grab.h"
#include "ui/qt_main_loop.h"
#include "ui/translation_popup_controller.h"

namespace {

using orvantis::PopupOption;
using orvantis::ui::KeyboardGrab;
using orvantis::ui::QtMainLoop;
using orvantis::ui::TranslationPopupController;

/// Runs the steps one after another; each either finishes at once or waits for a condition.
class Script {
public:
    using Step = std::function<void()>;
    void add(Step step) { steps_.push_back(std::move(step)); }
    void next() {
        if (steps_.empty()) {
            std::printf("probe: PASS\n");
            QApplication::exit(0);
            return;
        }
        Step step = std::move(steps_.front());
        steps_.pop_front();
        QTimer::singleShot(0, step);
    }
    /// Goes on when `done` holds, fails with `what` after `timeoutMs`.
    void waitFor(std::function<bool()> done, int timeoutMs, std::string what) {
        auto* timer = new QTimer(qApp);
        auto started = std::chrono::steady_clock::now();
        QObject::connect(timer, &QTimer::timeout, [this, timer, done, timeoutMs, what, started] {
            if (done()) {
                timer->deleteLater();
                next();
                return;
            }
            if (std::chrono::steady_clock::now() - started > std::chrono::milliseconds(timeoutMs)) {
                timer->deleteLater();
                fail(what);
            }
        });
        timer->start(10);
    }
    static void fail(const std::string& what) {
        std::printf("probe: FAIL: %s\n", what.c_str());
        std::fflush(stdout);
        QApplication::exit(1);
    }

private:
    std::deque<Step> steps_;
};

void run(const QString& program, const QStringList& arguments) {
    std::printf("probe: %s %s\n", qPrintable(program), qPrintable(arguments.join(QLatin1Char(' '))));
    std::fflush(stdout);
    if (QProcess::execute(program, arguments) != 0) Script::fail(program.toStdString() + " failed");
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addOption({QStringLiteral("screenshot"), QStringLiteral("Screenshot file."), QStringLiteral("file")});
    parser.addOption({QStringLiteral("activate"), QStringLiteral("Window to activate."), QStringLiteral("window")});
    parser.process(app);
    const QString screenshot = parser.value(QStringLiteral("screenshot"));
    const QString activate = parser.value(QStringLiteral("activate"));
    QString loadingShot = screenshot;
    if (!loadingShot.isEmpty())
        loadingShot.insert(loadingShot.lastIndexOf(QLatin1Char('.')), QStringLiteral("-loading"));

    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        std::printf("probe: FAIL: needs the xcb platform, got %s\n", qPrintable(QGuiApplication::platformName()));
        return 1;
    }

    QtMainLoop loop;
    TranslationPopupController popup(loop, KeyboardGrab::forPlatform());
    std::vector<std::string> confirmed;
    int dismissals = 0;
    popup.setOnConfirm([&](const std::string& value) { confirmed.push_back(value); });
    popup.setOnDismiss([&] { ++dismissals; });

    const std::vector<PopupOption> options = {
        {"fetchUserProfile", "fetchUserProfile"},
        {"FetchUserProfile", "FetchUserProfile"},
        {"fetch_user_profile", "fetch_user_profile"},
    };
    const QPoint pointer(420, 180);
    auto showList = [&] {
        popup.show(pointer);
        popup.setFooterHint("↑↓ choose · Return insert · Tab synonyms · Esc close");
        popup.showOptions(options);
    };
    auto grabbed = [&] { return popup.holdsKeyboard(); };
    auto rowCentre = [&](int row) {
        // Rows start 4 below the top; measure from the model.
        double y = popup.model().frame().y + 4;
        for (int i = 0; i < row; ++i) y += popup.model().optionRowHeight(static_cast<std::size_t>(i));
        y += popup.model().optionRowHeight(static_cast<std::size_t>(row)) / 2;
        return QPoint(static_cast<int>(popup.model().frame().x + 60), static_cast<int>(y));
    };

    Script script;
    // 0. The loading row.
    if (!loadingShot.isEmpty()) {
        script.add([&] {
            popup.show(pointer);
            script.waitFor(grabbed, 2000, "no keyboard grab for the loading popup");
        });
        script.add([&] {
            QTimer::singleShot(300, [&] {
                run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), loadingShot});
                popup.dismiss();
                dismissals = 0;
                script.next();
            });
        });
    }
    // 0b. Another client holds the keyboard for a moment, as the hotkey's own grab does until
    // the key is released: the popup keeps trying and gets the keyboard afterwards.
    xcb_connection_t* other = nullptr;
    script.add([&] {
        other = xcb_connect(nullptr, nullptr);
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other)).data->root;
        auto* reply = xcb_grab_keyboard_reply(
            other, xcb_grab_keyboard(other, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
            nullptr);
        const bool held = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
        std::free(reply);
        if (!held) return Script::fail("the other client could not take the keyboard");
        popup.show(pointer);
        QTimer::singleShot(300, [&] {
            if (popup.holdsKeyboard()) return Script::fail("the popup took a keyboard that another client held");
            std::printf("probe: keyboard held elsewhere, popup waiting\n");
            xcb_ungrab_keyboard(other, XCB_CURRENT_TIME);
            xcb_flush(other);
            script.waitFor(grabbed, 1000, "the popup did not take the keyboard once it was free");
        });
    });
    script.add([&] {
        std::printf("probe: keyboard taken once free\n");
        xcb_disconnect(other);
        popup.dismiss();
        dismissals = 0;
        script.next();
    });
    // 1. Down, Return: the second option.
    script.add([&] {
        showList();
        script.waitFor(grabbed, 2000, "no keyboard grab for the popup");
    });
    script.add([&] {
        std::printf("probe: shown at %d,%d %dx%d, keyboard held\n", popup.panel().x(), popup.panel().y(),
                    popup.panel().width(), popup.panel().height());
        if (!screenshot.isEmpty()) {
            // Painted and mapped before the picture is taken.
            QTimer::singleShot(300, [&] {
                run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), screenshot});
                script.next();
            });
            return;
        }
        script.next();
    });
    script.add([&] {
        run(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("Down"), QStringLiteral("Return")});
        script.waitFor([&] { return !confirmed.empty(); }, 3000, "Down Return confirmed nothing");
    });
    script.add([&] {
        std::printf("probe: confirmed %s\n", confirmed.front().c_str());
        if (confirmed.front() != "FetchUserProfile") return Script::fail("expected the second option");
        if (dismissals != 1 || popup.isVisible() || popup.holdsKeyboard())
            return Script::fail("the popup did not close");
        script.next();
    });
    // 2. Escape: dismissed without a choice.
    script.add([&] {
        showList();
        script.waitFor(grabbed, 2000, "no keyboard grab the second time");
    });
    script.add([&] {
        run(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("Escape")});
        script.waitFor([&] { return dismissals == 2; }, 3000, "Escape did not dismiss");
    });
    script.add([&] {
        if (confirmed.size() != 1) return Script::fail("Escape confirmed something");
        std::printf("probe: Escape dismissed\n");
        script.next();
    });
    // 3. A click far outside: dismissed without a choice.
    script.add([&] {
        showList();
        script.waitFor(grabbed, 2000, "no keyboard grab the third time");
    });
    script.add([&] {
        std::printf("probe: pointer held: %s\n", popup.holdsPointer() ? "yes" : "no");
        run(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QStringLiteral("1100"), QStringLiteral("700"),
                                        QStringLiteral("click"), QStringLiteral("1")});
        script.waitFor([&] { return dismissals == 3; }, 3000, "a click outside did not dismiss");
    });
    script.add([&] {
        if (confirmed.size() != 1) return Script::fail("the click outside confirmed something");
        std::printf("probe: click outside dismissed\n");
        script.next();
    });
    // 4. A double click on the third row confirms it.
    script.add([&] {
        showList();
        script.waitFor(grabbed, 2000, "no keyboard grab the fourth time");
    });
    script.add([&] {
        const QPoint target = rowCentre(2);
        run(QStringLiteral("xdotool"),
            {QStringLiteral("mousemove"), QString::number(target.x()), QString::number(target.y()),
             QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"), QStringLiteral("--delay"),
             QStringLiteral("80"), QStringLiteral("1")});
        script.waitFor([&] { return confirmed.size() == 2; }, 3000, "a double click on a row confirmed nothing");
    });
    script.add([&] {
        std::printf("probe: double click confirmed %s\n", confirmed.back().c_str());
        if (confirmed.back() != "fetch_user_profile") return Script::fail("expected the third option");
        script.next();
    });
    // 5. Another window becomes the active one: dismissed.
    if (!activate.isEmpty()) {
        script.add([&] {
            showList();
            script.waitFor(grabbed, 2000, "no keyboard grab the fifth time");
        });
        script.add([&] {
            // Past the turn after which the popup watches activations.
            QTimer::singleShot(100, [&] {
                run(QStringLiteral("xdotool"), {QStringLiteral("windowactivate"), activate});
                script.waitFor([&] { return dismissals == 5; }, 3000, "activating another window did not dismiss");
            });
        });
        script.add([&] {
            if (confirmed.size() != 2) return Script::fail("the activation confirmed something");
            std::printf("probe: activation dismissed\n");
            script.next();
        });
    }

    // 6. A long text wraps inside the widest popup (a picture only).
    if (!screenshot.isEmpty()) {
        script.add([&] {
            QString longShot = screenshot;
            longShot.insert(longShot.lastIndexOf(QLatin1Char('.')), QStringLiteral("-long"));
            std::string text;
            while (text.size() < 700) text += "the quick brown fox jumps over the lazy dog ";
            text += std::string(120, 'x');
            popup.show(QPoint(100, 100));
            popup.showOptions({{text, "long"}, {"short", "short"}});
            QTimer::singleShot(300, [&, longShot] {
                run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), longShot});
                popup.dismiss();
                script.next();
            });
        });
    }

    QTimer::singleShot(20000, [] { Script::fail("time out"); });
    script.next();
    return QApplication::exec();
}
