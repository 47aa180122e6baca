#include "platform/x11/x11_clipboard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/sim/virtual_main_loop.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace orvantis::x11 {
namespace {

using namespace std::chrono_literals;
namespace type = platform::pasteboard_type;

TEST(X11ClipboardTest, NoDisplayGivesNoClipboard) {
    sim::VirtualMainLoop loop;
    EXPECT_EQ(X11Clipboard::open(":9999", loop, nullptr), nullptr);
}

// --- On a real X display, against other clients ----------------------------------------------
// These need the virtual desktop's X server and xclip; they run in the end-to-end desktop
// probes and skip elsewhere.

/// Runs `command` through the shell with `input` on its standard input (xclip -i stays behind
/// as the selection's owner, its output kept away from ours).
void shellWithInput(const std::string& command, const std::string& input) {
    FILE* pipe = ::popen((command + " >/dev/null 2>&1").c_str(), "w");
    ASSERT_NE(pipe, nullptr);
    std::fwrite(input.data(), 1, input.size(), pipe);
    ::pclose(pipe);
}

/// Another client, in a child process, that takes the CLIPBOARD with `targets` (name, bytes)
/// and writes the name of every target it is asked for to a pipe. It takes the selection at
/// once (with the server's current time), tells the parent its window, and then only answers.
class ForeignOwner {
public:
    using Targets = std::vector<std::pair<std::string, std::string>>;
    explicit ForeignOwner(const Targets& targets) {
        int ready[2], log[2];
        if (::pipe(ready) != 0 || ::pipe(log) != 0) return;
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(ready[0]);
            ::close(log[0]);
            serve(targets, ready[1], log[1]);
            ::_exit(0);
        }
        ::close(ready[1]);
        ::close(log[1]);
        log_ = log[0];
        ::fcntl(log_, F_SETFL, O_NONBLOCK);
        unsigned long window = 0;
        if (::read(ready[0], &window, sizeof window) == sizeof window) window_ = window;
        ::close(ready[0]);
    }
    ~ForeignOwner() {
        if (pid_ > 0) {
            ::kill(pid_, SIGTERM);
            ::waitpid(pid_, nullptr, 0);
        }
        if (log_ >= 0) ::close(log_);
    }
    ForeignOwner(const ForeignOwner&) = delete;
    ForeignOwner& operator=(const ForeignOwner&) = delete;

    /// The owner's window, 0 when it could not take the selection.
    unsigned long window() const { return window_; }
    /// Every target asked for so far, one a line.
    std::string requests() {
        char buffer[4096];
        ssize_t n = 0;
        while ((n = ::read(log_, buffer, sizeof buffer)) > 0) requests_.append(buffer, static_cast<std::size_t>(n));
        return requests_;
    }

private:
    static void serve(const std::vector<std::pair<std::string, std::string>>& targets, int ready, int log) {
        Display* display = XOpenDisplay(nullptr);
        if (display == nullptr) return;
        const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
        const Atom clipboard = XInternAtom(display, "CLIPBOARD", False);
        const Atom targetsAtom = XInternAtom(display, "TARGETS", False);
        XSetSelectionOwner(display, clipboard, window, CurrentTime);
        XSync(display, False);
        const unsigned long id = XGetSelectionOwner(display, clipboard) == window ? window : 0;
        if (::write(ready, &id, sizeof id) != sizeof id) return;
        for (;;) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type != SelectionRequest) continue;
            const XSelectionRequestEvent& request = event.xselectionrequest;
            char* name = XGetAtomName(display, request.target);
            const std::string targetName = name != nullptr ? name : "";
            if (name != nullptr) XFree(name);
            const std::string line = targetName + "\n";
            if (::write(log, line.data(), line.size()) < 0) return;
            XSelectionEvent reply{};
            reply.type = SelectionNotify;
            reply.requestor = request.requestor;
            reply.selection = request.selection;
            reply.target = request.target;
            reply.time = request.time;
            reply.property = None;
            if (request.target == targetsAtom) {
                std::vector<Atom> list{targetsAtom};
                for (const auto& [t, bytes] : targets) list.push_back(XInternAtom(display, t.c_str(), False));
                XChangeProperty(display, request.requestor, request.property, XA_ATOM, 32, PropModeReplace,
                                reinterpret_cast<const unsigned char*>(list.data()), static_cast<int>(list.size()));
                reply.property = request.property;
            } else {
                for (const auto& [t, bytes] : targets) {
                    if (t != targetName) continue;
                    XChangeProperty(display, request.requestor, request.property, request.target, 8, PropModeReplace,
                                    reinterpret_cast<const unsigned char*>(bytes.data()),
                                    static_cast<int>(bytes.size()));
                    reply.property = request.property;
                }
            }
            XSendEvent(display, request.requestor, False, NoEventMask, reinterpret_cast<XEvent*>(&reply));
            XFlush(display);
        }
    }

    pid_t pid_ = -1;
    int log_ = -1;
    unsigned long window_ = 0;
    std::string requests_;
};

class X11ClipboardLiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        display_ = XOpenDisplay(nullptr);
        if (display_ == nullptr) GTEST_SKIP() << "no X display";
        if (std::system("command -v xclip >/dev/null 2>&1") != 0) GTEST_SKIP() << "no xclip";
        clipboard_ = X11Clipboard::open(nullptr, loop_, nullptr);
        ASSERT_NE(clipboard_, nullptr);
        notices_ = clipboard_->onChange([this] { ++noticeCount_; });
    }
    void TearDown() override {
        notices_.reset();
        clipboard_.reset();
        if (display_ != nullptr) XCloseDisplay(display_);
    }

    /// What the program's main loop does: read events when they come, run what was posted.
    void dispatch() {
        clipboard_->dispatchPending();
        loop_.runUntilIdle();
    }
    /// Dispatches until `condition` holds, at most two seconds.
    bool dispatchUntil(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + 2s;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            pollfd descriptor{clipboard_->fileDescriptor(), POLLIN, 0};
            ::poll(&descriptor, 1, 10);
            dispatch();
        }
        return true;
    }
    /// The output of `argv` (xclip -o), serving our selections while it runs.
    std::string runServing(std::vector<std::string> argv) {
        int out[2];
        if (::pipe(out) != 0) return {};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        std::vector<char*> args;
        for (std::string& arg : argv) args.push_back(arg.data());
        args.push_back(nullptr);
        pid_t pid = -1;
        const bool started = ::posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ) == 0;
        posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        std::string output;
        if (started) {
            const auto deadline = std::chrono::steady_clock::now() + 5s;
            for (;;) {
                pollfd fds[2] = {{out[0], POLLIN, 0}, {clipboard_->fileDescriptor(), POLLIN, 0}};
                ::poll(fds, 2, 10);
                dispatch();
                if (fds[0].revents != 0) {
                    char buffer[65536];
                    const ssize_t n = ::read(out[0], buffer, sizeof buffer);
                    if (n <= 0) break;
                    output.append(buffer, static_cast<std::size_t>(n));
                }
                if (std::chrono::steady_clock::now() > deadline) {
                    ::kill(pid, SIGKILL);
                    break;
                }
            }
            ::waitpid(pid, nullptr, 0);
        }
        ::close(out[0]);
        return output;
    }
    /// Another client copies `text` (xclip), and we have heard of it.
    void copyWithXclip(const std::string& text, const std::string& target = "UTF8_STRING") {
        const auto before = clipboard_->changeCount();
        shellWithInput("xclip -selection clipboard -t " + target + " -i", text);
        ASSERT_TRUE(dispatchUntil([&] { return clipboard_->changeCount() > before; }));
    }
    unsigned long clipboardOwner() {
        return XGetSelectionOwner(display_, XInternAtom(display_, "CLIPBOARD", False));
    }

    Display* display_ = nullptr;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<X11Clipboard> clipboard_;
    Subscription notices_;
    int noticeCount_ = 0;
};

TEST_F(X11ClipboardLiveTest, ReadsTextAnotherClientCopiedAndIsToldOfTheChange) {
    const int noticesBefore = noticeCount_;
    copyWithXclip("привет 😀");
    EXPECT_GT(noticeCount_, noticesBefore);
    EXPECT_EQ(clipboard_->types(), std::vector<std::string>{std::string(type::kText)});
    EXPECT_EQ(clipboard_->text(), "привет 😀");
    EXPECT_EQ(clipboard_->data(type::kFileURL), std::nullopt);
}

TEST_F(X11ClipboardLiveTest, ReadsAFileList) {
    copyWithXclip("file:///tmp/Quarterly%20report.pdf\r\n", "text/uri-list");
    EXPECT_EQ(clipboard_->types(), std::vector<std::string>{std::string(type::kFileURL)});
    EXPECT_EQ(clipboard_->data(type::kFileURL), "file:///tmp/Quarterly%20report.pdf\r\n");
    EXPECT_EQ(clipboard_->text(), std::nullopt);
}

TEST_F(X11ClipboardLiveTest, OurTextReachesAnotherClientAndIsCountedAndToldOfOnce) {
    copyWithXclip("someone else's");
    const auto before = clipboard_->changeCount();
    const int noticesBefore = noticeCount_;
    clipboard_->write(platform::PasteboardItem::text("наш текст"));
    EXPECT_EQ(clipboard_->changeCount(), before + 1);
    EXPECT_EQ(runServing({"xclip", "-selection", "clipboard", "-o"}), "наш текст");
    EXPECT_EQ(runServing({"xclip", "-selection", "clipboard", "-t", "text/plain;charset=utf-8", "-o"}),
              "наш текст");
    // Told of once, in a later turn; the server's notice of our claim is not counted again.
    dispatch();
    EXPECT_EQ(clipboard_->changeCount(), before + 1);
    EXPECT_EQ(noticeCount_, noticesBefore + 1);
    EXPECT_EQ(clipboard_->text(), "наш текст");
}

TEST_F(X11ClipboardLiveTest, AMegabyteGoesOutAndComesInInPieces) {
    std::string big = "big text head\n";
    big.append(1024 * 1024, 'x');
    clipboard_->write(platform::PasteboardItem::text(big));
    const std::string out = runServing({"xclip", "-selection", "clipboard", "-o"});
    EXPECT_EQ(out.size(), big.size());
    EXPECT_TRUE(out == big);

    // xclip sends a megabyte in pieces too.
    copyWithXclip(big + "y");
    const std::optional<std::string> in = clipboard_->text();
    ASSERT_TRUE(in.has_value());
    EXPECT_EQ(in->size(), big.size() + 1);
    EXPECT_TRUE(*in == big + "y");
}

TEST_F(X11ClipboardLiveTest, AMegabyteOfAnotherX11ClipboardComesInPieces) {
    // Both ends of the transfer in pieces are ours: another clipboard, in a child process.
    std::string big = "piece by piece\n";
    big.append(1024 * 1024, 'z');
    const auto before = clipboard_->changeCount();
    const pid_t child = ::fork();
    if (child == 0) {
        sim::VirtualMainLoop loop;
        auto other = X11Clipboard::open(nullptr, loop, nullptr);
        if (!other) ::_exit(1);
        other->write(platform::PasteboardItem::text(big));
        for (;;) {
            pollfd descriptor{other->fileDescriptor(), POLLIN, 0};
            ::poll(&descriptor, 1, 100);
            other->dispatchPending();
            loop.runUntilIdle();
        }
    }
    ASSERT_GT(child, 0);
    EXPECT_TRUE(dispatchUntil([&] { return clipboard_->changeCount() > before; }));
    const std::optional<std::string> in = clipboard_->text();
    ::kill(child, SIGTERM);
    ::waitpid(child, nullptr, 0);
    ASSERT_TRUE(in.has_value());
    EXPECT_EQ(in->size(), big.size());
    EXPECT_TRUE(*in == big);
}

TEST_F(X11ClipboardLiveTest, TheTargetsAnswerListsEveryTypeAndASecretCarriesBothMarkers) {
    platform::PasteboardItem item = platform::PasteboardItem::text("hunter2");
    item.representations.emplace_back(std::string(type::kConcealed), std::string("\x01", 1));
    clipboard_->write(item);
    const std::string targets = runServing({"xclip", "-selection", "clipboard", "-t", "TARGETS", "-o"});
    for (const char* expected : {"TARGETS", "TIMESTAMP", "UTF8_STRING", "text/plain;charset=utf-8",
                                 "org.nspasteboard.ConcealedType", "x-kde-passwordManagerHint"}) {
        EXPECT_NE(targets.find(expected), std::string::npos) << expected << " in " << targets;
    }
    EXPECT_EQ(runServing({"xclip", "-selection", "clipboard", "-t", "x-kde-passwordManagerHint", "-o"}), "secret");
}

TEST_F(X11ClipboardLiveTest, OurWriteWinsRightAfterAnotherClientsClaim) {
    for (int round = 0; round < 50; ++round) {
        ForeignOwner other(ForeignOwner::Targets{{"UTF8_STRING", "theirs"}});
        ASSERT_NE(other.window(), 0u) << "round " << round;
        // Their claim's notice has not been read yet.
        clipboard_->write(platform::PasteboardItem::text("ours " + std::to_string(round)));
        const unsigned long owner = clipboardOwner();
        ASSERT_NE(owner, other.window()) << "round " << round << ": the server kept their claim";
        ASSERT_NE(owner, 0u);
        dispatch();
    }
    EXPECT_EQ(runServing({"xclip", "-selection", "clipboard", "-o"}), "ours 49");
}

TEST_F(X11ClipboardLiveTest, TheSelectionIsReadAndWrittenApartFromTheClipboard) {
    clipboard_->write(platform::PasteboardItem::text("clipboard text"));
    clipboard_->setSelectionText("наш выбор");
    EXPECT_EQ(runServing({"xclip", "-selection", "primary", "-o"}), "наш выбор");
    EXPECT_EQ(clipboard_->selectionText(), "наш выбор");
    const Window ours = XGetSelectionOwner(display_, XA_PRIMARY);
    shellWithInput("xclip -selection primary -i", "selected words");
    // xclip takes the selection from its background process, maybe after its first one ended.
    ASSERT_TRUE(dispatchUntil([&] { return XGetSelectionOwner(display_, XA_PRIMARY) != ours; }));
    EXPECT_EQ(clipboard_->selectionText(), "selected words");
    EXPECT_EQ(clipboard_->text(), "clipboard text");
}

TEST_F(X11ClipboardLiveTest, ASecretsTextIsNeverAskedForWhenOnlyItsMarkersAreRead) {
    for (const auto& [marker, value] : std::vector<std::pair<std::string, std::string>>{
             {std::string(type::kConcealed), std::string("\x01", 1)},
             {std::string(type::kPasswordManagerHint), "secret"}}) {
        const auto before = clipboard_->changeCount();
        ForeignOwner owner(
            ForeignOwner::Targets{{"UTF8_STRING", "hunter2"}, {"text/plain", "hunter2"}, {marker, value}});
        ASSERT_NE(owner.window(), 0u);
        ASSERT_TRUE(dispatchUntil([&] { return clipboard_->changeCount() > before; }));
        // What the clipboard monitor asks first.
        const bool concealed = clipboard_->data(type::kConcealed).has_value();
        const std::optional<std::string> hint = clipboard_->data(type::kPasswordManagerHint);
        EXPECT_TRUE(concealed || hint == "secret") << marker;
        dispatch();
        EXPECT_EQ(owner.requests(), "TARGETS\n" + marker + "\n") << marker;
    }
}

}  // namespace
}  // namespace orvantis::x11
