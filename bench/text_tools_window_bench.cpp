// The text tools window's recompute of a one-megabyte input: the transform, the result put into
// the read-only view, and the turn of the event loop that lays it out and paints it, as the
// user waits for it after a keystroke. Qt's offscreen platform, so it needs no display.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include <QApplication>
#include <QPlainTextEdit>

#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/text_tools/text_transform.h"
#include "platform/sim/desktop.h"
#include "ui/text_transformer_window_controller.h"

namespace orvantis {
namespace {

/// A mixed one-megabyte text (Latin and Cyrillic words, emoji, a combining mark), as the
/// in-process benchmark of the transforms takes it, in the input's format for the parsers.
std::string oneMegabyteFor(TextTransform transform) {
    const std::string unit = "Hello мир e\u0301 😀 {\"k\": [1, 2.5, \"x/y\"]} &amp; 0x41\n";
    std::string s;
    while (s.size() + unit.size() <= (1u << 20)) s += unit;
    switch (transform) {
    case TextTransform::base64Decode: return applyTransform(TextTransform::base64Encode, s).substr(0, 1u << 20);
    case TextTransform::hexDecode: return applyTransform(TextTransform::hexEncode, s).substr(0, 1u << 20);
    case TextTransform::urlDecode: return applyTransform(TextTransform::urlEncode, s);
    case TextTransform::unicodeUnescape: return applyTransform(TextTransform::unicodeEscape, s);
    case TextTransform::htmlUnescape: return applyTransform(TextTransform::htmlEscape, s).substr(0, 1u << 20);
    case TextTransform::jsonPretty:
    case TextTransform::jsonMinify: {
        std::string json = "[";
        while (json.size() < (1u << 20)) json += R"({"name":"мир 😀","n":[1,2.5,null,true],"path":"a/b"},)";
        return json + "0]";
    }
    case TextTransform::unixToISO: return "1700000000.123";
    case TextTransform::isoToUnix: return "2023-11-14T22:13:20.123Z";
    default: return s;
    }
}

struct Window {
    Window() {
        static int argc = 1;
        static char name[] = "text_tools_window_bench";
        static char* argv[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static QApplication application(argc, argv);
        controller = std::make_unique<ui::TextTransformerWindowController>(settings, desktop.pasteboard(), [] {});
        controller->show();
    }
    sim::Desktop desktop;
    std::unique_ptr<platform::SerialQueue> queue = desktop.loop().makeSerialQueue("prefs");
    PreferenceStore store{"/nonexistent/orvantis-bench/preferences.plist", *queue, nullptr};
    AppSettings settings{store};
    std::unique_ptr<ui::TextTransformerWindowController> controller;
};

Window& window() {
    static Window w;
    return w;
}

void recompute(benchmark::State& state, TextTransform transform) {
    Window& w = window();
    w.controller->selectTransform(TextTransform::trim);
    w.controller->inputTextView()->setPlainText(QString::fromStdString(oneMegabyteFor(transform)));
    QApplication::processEvents();
    for (auto _ : state) {
        // Choosing the transform recomputes, as a keystroke in the input does.
        w.controller->selectTransform(transform);
        QApplication::processEvents();
        state.PauseTiming();
        w.controller->selectTransform(TextTransform::trim);
        QApplication::processEvents();
        state.ResumeTiming();
    }
}

void registerAll() {
    for (TextTransform t : kAllTextTransforms) {
        benchmark::RegisterBenchmark(("WindowOneMB/" + std::string(id(t))).c_str(), recompute, t)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(10);
    }
}

const int kRegistered = (registerAll(), 0);

}  // namespace
}  // namespace orvantis
