#include "platform/freedesktop/atspi_accessibility.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/freedesktop/accessibility_bus.h"
#include "testing/test_support.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

using namespace std::chrono_literals;

using platform::TextElement;
using platform::TextRange;

// Non-ASCII letters and a character outside the Basic Multilingual Plane, which GTK counts as
// one and Qt as two units: "a" 0, "ñ" 1, U+1F600 2 and 3, "б" 4, " " 5, "x" 6.
constexpr const char* kMixedText = "a\xC3\xB1\xF0\x9F\x98\x80\xD0\xB1 x";

/// A program started for one test, ended with it (SIGTERM, then SIGKILL).
class ChildProcess {
public:
    ChildProcess(const std::vector<std::string>& argv, const std::vector<std::string>& environment = {}) {
        pid_ = ::fork();
        if (pid_ != 0) return;
        for (const std::string& assignment : environment) ::putenv(const_cast<char*>(assignment.c_str()));
        const int devNull = ::open("/dev/null", O_RDWR);
        if (devNull >= 0) {
            ::dup2(devNull, STDOUT_FILENO);
            ::dup2(devNull, STDERR_FILENO);
        }
        std::vector<char*> args;
        for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        ::execvp(args[0], args.data());
        ::_exit(127);
    }
    ~ChildProcess() { end(SIGTERM); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }

    /// Sends `signal` and waits for the end (SIGKILL after two seconds).
    void end(int signal) {
        if (pid_ <= 0) return;
        ::kill(pid_, signal);
        const auto deadline = std::chrono::steady_clock::now() + 2s;
        while (::waitpid(pid_, nullptr, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                ::kill(pid_, SIGKILL);
                ::waitpid(pid_, nullptr, 0);
                break;
            }
            std::this_thread::sleep_for(10ms);
        }
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
};

bool commandExists(const std::string& name) {
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

/// Gives the keyboard focus to the shown window of `pid`, once it exists.
bool focusWindowOf(pid_t pid) {
    const std::string command = "window=$(timeout 10 xdotool search --sync --onlyvisible --pid " +
                                std::to_string(pid) +
                                " 2>/dev/null | head -n1) && [ -n \"$window\" ] && "
                                "timeout 5 xdotool windowfocus --sync \"$window\" >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

/// The text target's path, from the environment of the end-to-end tests.
std::optional<std::string> textTargetProgram() {
    const char* path = std::getenv("ORVANTIS_TEXT_TARGET");
    if (path == nullptr || *path == '\0') return std::nullopt;
    return std::string(path);
}

/// Runs on a display with an accessibility bus, against real GTK and Qt fields.
class AtspiAccessibilityLiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* display = std::getenv("DISPLAY");
        if (display == nullptr || *display == '\0') GTEST_SKIP() << "no X display";
        if (!accessibilityBusEnabled()) GTEST_SKIP() << "no accessibility bus";
    }

    /// The focused element once `ready` holds for it, or nullptr after ten seconds.
    std::unique_ptr<TextElement> waitForElement(const std::function<bool(TextElement&)>& ready) {
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        while (std::chrono::steady_clock::now() < deadline) {
            std::unique_ptr<TextElement> element = accessibility_.focusedTextElement();
            if (element && ready(*element)) return element;
            std::this_thread::sleep_for(50ms);
        }
        return nullptr;
    }

    std::unique_ptr<TextElement> waitForValue(const std::string& expected) {
        return waitForElement([&](TextElement& element) { return element.value() == expected; });
    }

    std::unique_ptr<TextElement> waitForSecureElement() {
        return waitForElement([](TextElement& element) { return element.isSecure(); });
    }

    std::unique_ptr<ChildProcess> startZenity(const std::vector<std::string>& arguments) {
        if (!commandExists("zenity")) return nullptr;
        std::vector<std::string> argv{"zenity"};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        auto child = std::make_unique<ChildProcess>(argv);
        if (!focusWindowOf(child->pid())) return nullptr;
        return child;
    }

    std::unique_ptr<ChildProcess> startQtTarget(const std::vector<std::string>& arguments) {
        const std::optional<std::string> program = textTargetProgram();
        if (!program) return nullptr;
        std::vector<std::string> argv{*program};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        auto child = std::make_unique<ChildProcess>(
            argv, std::vector<std::string>{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1", "QT_QPA_PLATFORM=xcb"});
        if (!focusWindowOf(child->pid())) return nullptr;
        return child;
    }

    /// Reads, selects and replaces in a field that shows `kMixedText`, in UTF-16 units.
    void exerciseMixedText(TextElement& element) {
        EXPECT_FALSE(element.isSecure());
        EXPECT_EQ(element.value(), kMixedText);

        ASSERT_TRUE(element.setSelectedRange(TextRange{2, 2}));
        EXPECT_EQ(element.selectedRange(), (TextRange{2, 2}));
        EXPECT_EQ(element.selectedText(), "\xF0\x9F\x98\x80");

        ASSERT_TRUE(element.setSelectedRange(TextRange{4, 1}));
        EXPECT_EQ(element.selectedRange(), (TextRange{4, 1}));
        EXPECT_EQ(element.selectedText(), "\xD0\xB1");

        // "б" becomes "Ж" and U+1F642; the caret stands after them.
        ASSERT_TRUE(element.replaceSelectedText("\xD0\x96\xF0\x9F\x99\x82"));
        EXPECT_EQ(element.value(), "a\xC3\xB1\xF0\x9F\x98\x80\xD0\x96\xF0\x9F\x99\x82 x");
        EXPECT_EQ(element.selectedRange(), (TextRange{7, 0}));
        EXPECT_EQ(element.selectedText(), "");

        // A range that starts inside a surrogate pair starts at its code point.
        ASSERT_TRUE(element.setSelectedRange(TextRange{3, 2}));
        EXPECT_EQ(element.selectedRange(), (TextRange{2, 3}));

        // A caret alone, and a selection that covers everything.
        ASSERT_TRUE(element.setSelectedRange(TextRange{1, 0}));
        EXPECT_EQ(element.selectedRange(), (TextRange{1, 0}));
        ASSERT_TRUE(element.setSelectedRange(TextRange{0, 9}));
        EXPECT_EQ(element.selectedRange(), (TextRange{0, 9}));
        EXPECT_EQ(element.selectedText(), "a\xC3\xB1\xF0\x9F\x98\x80\xD0\x96\xF0\x9F\x99\x82 x");
    }

    AtspiAccessibility accessibility_;
};

TEST_F(AtspiAccessibilityLiveTest, GtkEntryCountsInUtf16Units) {
    std::unique_ptr<ChildProcess> zenity = startZenity({"--entry", "--entry-text", kMixedText});
    if (!zenity) GTEST_SKIP() << "no zenity window (is zenity installed?)";
    std::unique_ptr<TextElement> element = waitForValue(kMixedText);
    ASSERT_NE(element, nullptr) << "the GTK entry never showed as the focused text element";
    exerciseMixedText(*element);
}

TEST_F(AtspiAccessibilityLiveTest, QtLineEditCountsInUtf16Units) {
    testing::TemporaryDirectory folder;
    const std::filesystem::path out = folder.path() / "text";
    std::unique_ptr<ChildProcess> target = startQtTarget({"--out", out.string(), "--text", kMixedText});
    if (!target) GTEST_SKIP() << "no text target window (ORVANTIS_TEXT_TARGET)";
    std::unique_ptr<TextElement> element = waitForValue(kMixedText);
    ASSERT_NE(element, nullptr) << "the Qt line edit never showed as the focused text element";
    exerciseMixedText(*element);
    // The field itself changed, not only what the bus shows.
    EXPECT_EQ(testing::readFile(out), "a\xC3\xB1\xF0\x9F\x98\x80\xD0\x96\xF0\x9F\x99\x82 x");
}

TEST_F(AtspiAccessibilityLiveTest, GtkPasswordEntryIsSecureAndUntouched) {
    std::unique_ptr<ChildProcess> zenity = startZenity({"--password"});
    if (!zenity) GTEST_SKIP() << "no zenity window (is zenity installed?)";
    std::unique_ptr<TextElement> element = waitForSecureElement();
    ASSERT_NE(element, nullptr) << "the GTK password entry never showed as a secure element";
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_EQ(element->selectedRange(), std::nullopt);
    EXPECT_EQ(element->selectedText(), std::nullopt);
    EXPECT_FALSE(element->setSelectedRange(TextRange{0, 0}));
    EXPECT_FALSE(element->replaceSelectedText("x"));
}

TEST_F(AtspiAccessibilityLiveTest, QtPasswordFieldIsSecureAndUntouched) {
    testing::TemporaryDirectory folder;
    const std::filesystem::path out = folder.path() / "text";
    std::unique_ptr<ChildProcess> target = startQtTarget({"--out", out.string(), "--password", "--text", "ghbdtn"});
    if (!target) GTEST_SKIP() << "no text target window (ORVANTIS_TEXT_TARGET)";
    std::unique_ptr<TextElement> element = waitForSecureElement();
    ASSERT_NE(element, nullptr) << "the Qt password field never showed as a secure element";
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_EQ(element->selectedText(), std::nullopt);
    EXPECT_FALSE(element->setSelectedRange(TextRange{0, 6}));
    EXPECT_FALSE(element->replaceSelectedText("x"));
    EXPECT_EQ(testing::readFile(out), "ghbdtn");
}

TEST_F(AtspiAccessibilityLiveTest, AnElementWhoseApplicationEndedFailsQuietly) {
    std::unique_ptr<ChildProcess> target = startQtTarget({"--text", "ghbdtn"});
    if (!target) GTEST_SKIP() << "no text target window (ORVANTIS_TEXT_TARGET)";
    std::unique_ptr<TextElement> element = waitForValue("ghbdtn");
    ASSERT_NE(element, nullptr);
    target->end(SIGKILL);

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_EQ(element->selectedRange(), std::nullopt);
    EXPECT_EQ(element->selectedText(), std::nullopt);
    EXPECT_FALSE(element->setSelectedRange(TextRange{0, 1}));
    EXPECT_FALSE(element->replaceSelectedText("x"));
    EXPECT_FALSE(element->isSecure());
    // Nothing is focused any more; the lookup copes with the application's stale entry.
    EXPECT_EQ(accessibility_.focusedTextElement(), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST_F(AtspiAccessibilityLiveTest, AFocusedButtonIsNoTextElement) {
    std::unique_ptr<ChildProcess> zenity = startZenity({"--info", "--text", "Orvantis"});
    if (!zenity) GTEST_SKIP() << "no zenity window (is zenity installed?)";
    // The dialog's button takes the focus as the window becomes active.
    const auto deadline = std::chrono::steady_clock::now() + 1s;
    while (std::chrono::steady_clock::now() < deadline) {
        EXPECT_EQ(accessibility_.focusedTextElement(), nullptr);
        std::this_thread::sleep_for(100ms);
    }
}

// Runs in a fresh process: there libatspi has never connected, and the lookup must see that the
// bus is missing without trying it.
TEST(AtspiAccessibilityTest, WithoutAnAccessibilityBusThereIsNoElement) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const testing::ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus");
            const testing::ScopedEnv runtime("XDG_RUNTIME_DIR", "/nonexistent/orvantis-runtime");
            AtspiAccessibility accessibility;
            const auto start = std::chrono::steady_clock::now();
            const bool none = accessibility.focusedTextElement() == nullptr &&
                              accessibility.focusedTextElement() == nullptr;
            const bool quick = std::chrono::steady_clock::now() - start < 3s;
            std::_Exit(none && quick ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvantis::freedesktop
