#include "platform/freedesktop/xdg_mail_composer.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/main_loop.h"
#include "platform/serial_queue.h"

extern char** environ;

namespace orvantis::freedesktop {

/// What the queue's tasks share with the composer: whether it still wants answers, and the
/// tools that outlived their patience, to be reaped.
struct XdgMailComposer::Shared {
    std::mutex mutex;
    bool alive = true;
    std::vector<pid_t> lingering;

    void reap() {
        std::lock_guard lock(mutex);
        std::erase_if(lingering, [](pid_t pid) {
            int status = 0;
            return ::waitpid(pid, &status, WNOHANG) != 0;
        });
    }
};

namespace {

enum class Outcome { succeeded, failed, stillRunning };

/// Starts `arguments` (looked up on PATH) with its input from /dev/null and every signal at
/// its default, and waits up to `patience` for its end.
Outcome runTool(const std::vector<std::string>& arguments, std::chrono::milliseconds patience, pid_t& pid) {
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const int spawned = ::posix_spawnp(&pid, argv[0], &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (spawned != 0) return Outcome::failed;

    const auto deadline = std::chrono::steady_clock::now() + patience;
    auto pause = std::chrono::milliseconds(1);
    for (;;) {
        int status = 0;
        const pid_t done = ::waitpid(pid, &status, WNOHANG);
        if (done == pid) return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? Outcome::succeeded : Outcome::failed;
        if (done < 0 && errno != EINTR) return Outcome::failed;
        if (std::chrono::steady_clock::now() >= deadline) return Outcome::stillRunning;
        std::this_thread::sleep_for(pause);  // the queue's own thread, never the main one
        pause = std::min(pause * 2, std::chrono::milliseconds(50));
    }
}

}  // namespace

XdgMailComposer::XdgMailComposer(platform::MainLoop& loop, std::chrono::milliseconds patience)
    : loop_(loop), patience_(patience), shared_(std::make_shared<Shared>()) {}

XdgMailComposer::~XdgMailComposer() {
    {
        std::lock_guard lock(shared_->mutex);
        shared_->alive = false;
    }
    queue_.reset();  // waits for a tool being started, at most `patience`
    shared_->reap();
}

std::vector<std::string> XdgMailComposer::emailArguments(const platform::MailDraft& draft) {
    std::vector<std::string> arguments{"xdg-email", "--subject", draft.subject, "--body", draft.body};
    if (draft.attachment) {
        arguments.push_back("--attach");
        arguments.push_back(draft.attachment->string());
    }
    arguments.push_back(draft.recipient);
    return arguments;
}

void XdgMailComposer::compose(const platform::MailDraft& draft, std::function<void(bool)> done) {
    run(emailArguments(draft), std::move(done));
}

void XdgMailComposer::openURL(const std::string& url, std::function<void(bool)> done) {
    run({"xdg-open", url}, std::move(done));
}

void XdgMailComposer::run(std::vector<std::string> arguments, std::function<void(bool)> done) {
    shared_->reap();
    // The thread starts with the first mail, not with the program.
    if (!queue_) queue_ = std::make_unique<platform::ThreadSerialQueue>("MOLVEX.Orvantis.MailComposer");
    queue_->async([shared = shared_, &loop = loop_, patience = patience_, arguments = std::move(arguments),
                   done = std::move(done)]() mutable {
        pid_t pid = 0;
        const Outcome outcome = runTool(arguments, patience, pid);
        std::lock_guard lock(shared->mutex);
        if (outcome == Outcome::stillRunning) shared->lingering.push_back(pid);
        if (!shared->alive) return;
        // The loop outlives the composer, which stops answering when it goes.
        loop.post([shared, done = std::move(done), ok = outcome != Outcome::failed] {
            {
                std::lock_guard lock(shared->mutex);
                if (!shared->alive) return;
            }
            done(ok);
        });
    });
}

}  // namespace orvantis::freedesktop
