#include "platform/curl/curl_http_client.h"

#include <cstring>
#include <deque>
#include <limits>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>

#include <pthread.h>

#include <curl/curl.h>

#include "platform/curl/curl_library.h"

namespace orvantis::curl {
namespace {

constexpr long kMaxRedirects = 10;
// The worker waits without a time limit of its own (about 24 days): a new command or the end
// wakes it, and libcurl shortens the wait to its own timers while transfers run.
constexpr int kWaitMs = std::numeric_limits<int>::max();

}  // namespace

/// What the main thread asks of the worker. Shared by the client, its worker and the handles
/// of its requests; any thread, under its mutex.
struct CurlHttpClient::Inbox {
    struct Command {
        enum class Type { start, cancel } type;
        std::uint64_t id = 0;
        std::string url;
        std::chrono::milliseconds timeout{};
    };

    /// Queues `command` and wakes the worker. Any thread.
    void push(Command command) {
        std::lock_guard lock(mutex);
        if (stopping) return;
        commands.push_back(std::move(command));
        if (multi != nullptr) wakeup(multi);
    }

    std::mutex mutex;
    std::deque<Command> commands;
    bool stopping = false;
    CURLM* multi = nullptr;  ///< null once it is cleaned up; guarded so a wake-up never meets a freed one
    decltype(&::curl_multi_wakeup) wakeup = nullptr;  ///< set with `multi`
};

/// The completions of the requests in flight. Main thread only.
struct CurlHttpClient::Completions {
    std::unordered_map<std::uint64_t, Completion> byId;
};

/// The worker thread's side: the multi handle and the transfers in it. Touched only by the
/// worker, except for construction and destruction around the thread's life.
class CurlHttpClient::Worker {
public:
    Worker(const CurlLibrary& curl, platform::MainLoop& loop, std::shared_ptr<Inbox> inbox,
           std::weak_ptr<Completions> completions, std::size_t maxBodyBytes)
        : curl_(curl), loop_(loop), inbox_(std::move(inbox)), completions_(std::move(completions)),
          maxBodyBytes_(maxBodyBytes), multi_(curl.multiInit()) {
        std::lock_guard lock(inbox_->mutex);
        inbox_->multi = multi_;
        inbox_->wakeup = curl.multiWakeup;
    }

    ~Worker() {
        for (auto& [easy, transfer] : transfers_) {
            curl_.multiRemoveHandle(multi_, easy);
            curl_.easyCleanup(easy);
        }
        transfers_.clear();
        {
            std::lock_guard lock(inbox_->mutex);
            inbox_->multi = nullptr;
        }
        if (multi_ != nullptr) curl_.multiCleanup(multi_);
    }

    void run() {
        pthread_setname_np(pthread_self(), "Orvantis.HTTP");
        for (;;) {
            std::deque<Inbox::Command> commands;
            {
                std::lock_guard lock(inbox_->mutex);
                if (inbox_->stopping) return;
                commands.swap(inbox_->commands);
            }
            for (auto& command : commands) {
                if (command.type == Inbox::Command::Type::start) {
                    start(command);
                } else {
                    cancel(command.id);
                }
            }
            if (multi_ == nullptr) {
                // libcurl could not make its multi handle (out of memory): every start is answered
                // with an error at once, and the worker only looks for new commands now and then.
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                continue;
            }
            int running = 0;
            curl_.multiPerform(multi_, &running);
            collectFinished();
            curl_.multiPoll(multi_, nullptr, 0, kWaitMs, nullptr);
        }
    }

private:
    struct Transfer {
        std::uint64_t id = 0;
        std::string body;
        std::size_t maxBodyBytes = 0;
        bool tooLarge = false;
        char error[CURL_ERROR_SIZE] = {};
    };

    static std::size_t onData(char* data, std::size_t size, std::size_t count, void* user) {
        auto* transfer = static_cast<Transfer*>(user);
        const std::size_t bytes = size * count;
        if (bytes > transfer->maxBodyBytes - transfer->body.size()) {
            transfer->tooLarge = true;
            return 0;  // anything but `bytes` ends the transfer with CURLE_WRITE_ERROR
        }
        transfer->body.append(data, bytes);
        return bytes;
    }

    void start(const Inbox::Command& command) {
        CURL* easy = multi_ != nullptr ? curl_.easyInit() : nullptr;
        if (easy == nullptr) {
            deliver(command.id, platform::HttpTransferError{platform::HttpTransferError::Kind::other,
                                                            "The HTTP library could not start a request"});
            return;
        }
        auto transfer = std::make_unique<Transfer>();
        transfer->id = command.id;
        transfer->maxBodyBytes = maxBodyBytes_;
        const long timeoutMs = command.timeout.count() > 0 ? static_cast<long>(command.timeout.count()) : 1;
        CURLcode set = curl_.easySetopt(easy, CURLOPT_URL, command.url.c_str());
        if (set == CURLE_OK) {
            curl_.easySetopt(easy, CURLOPT_ERRORBUFFER, transfer->error);
            curl_.easySetopt(easy, CURLOPT_HTTPGET, 1L);
            curl_.easySetopt(easy, CURLOPT_NOSIGNAL, 1L);
            curl_.easySetopt(easy, CURLOPT_TIMEOUT_MS, timeoutMs);
            curl_.easySetopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
            curl_.easySetopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
            curl_.easySetopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
            curl_.easySetopt(easy, CURLOPT_MAXREDIRS, kMaxRedirects);
            curl_.easySetopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maxBodyBytes_));
            curl_.easySetopt(easy, CURLOPT_WRITEFUNCTION, &Worker::onData);
            curl_.easySetopt(easy, CURLOPT_WRITEDATA, transfer.get());
            if (curl_.multiAddHandle(multi_, easy) != CURLM_OK) set = CURLE_FAILED_INIT;
        }
        if (set != CURLE_OK) {
            curl_.easyCleanup(easy);
            deliver(command.id, platform::HttpTransferError{platform::HttpTransferError::Kind::other,
                                                            curl_.easyStrerror(set)});
            return;
        }
        transfers_.emplace(easy, std::move(transfer));
    }

    void cancel(std::uint64_t id) {
        for (auto it = transfers_.begin(); it != transfers_.end(); ++it) {
            if (it->second->id != id) continue;
            curl_.multiRemoveHandle(multi_, it->first);
            curl_.easyCleanup(it->first);
            transfers_.erase(it);
            return;
        }
    }

    void collectFinished() {
        int left = 0;
        while (CURLMsg* message = curl_.multiInfoRead(multi_, &left)) {
            if (message->msg != CURLMSG_DONE) continue;
            CURL* easy = message->easy_handle;
            const CURLcode code = message->data.result;
            auto it = transfers_.find(easy);
            if (it == transfers_.end()) continue;
            Transfer& transfer = *it->second;
            platform::HttpResult result = outcome(easy, code, transfer);
            const std::uint64_t id = transfer.id;
            curl_.multiRemoveHandle(multi_, easy);
            curl_.easyCleanup(easy);
            transfers_.erase(it);
            deliver(id, std::move(result));
        }
    }

    platform::HttpResult outcome(CURL* easy, CURLcode code, Transfer& transfer) const {
        using platform::HttpTransferError;
        if (code == CURLE_OK) {
            long status = 0;
            curl_.easyGetinfo(easy, CURLINFO_RESPONSE_CODE, &status);
            return platform::HttpResponse{static_cast<int>(status), std::move(transfer.body), status > 0};
        }
        if (code == CURLE_OPERATION_TIMEDOUT) {
            return HttpTransferError{HttpTransferError::Kind::timedOut, describe(code, transfer)};
        }
        if (transfer.tooLarge || code == CURLE_FILESIZE_EXCEEDED) {
            return HttpTransferError{HttpTransferError::Kind::other,
                                     "The reply is larger than " + std::to_string(maxBodyBytes_) + " bytes"};
        }
        return HttpTransferError{HttpTransferError::Kind::other, describe(code, transfer)};
    }

    std::string describe(CURLcode code, const Transfer& transfer) const {
        if (transfer.error[0] != '\0') return std::string(transfer.error, ::strnlen(transfer.error, CURL_ERROR_SIZE));
        return curl_.easyStrerror(code);
    }

    /// Posts the result to the main loop, where it reaches the completion if the request is
    /// still wanted and the client still there.
    void deliver(std::uint64_t id, platform::HttpResult result) {
        loop_.post([completions = completions_, id, result = std::move(result)]() mutable {
            auto live = completions.lock();
            if (!live) return;
            auto it = live->byId.find(id);
            if (it == live->byId.end()) return;
            Completion completion = std::move(it->second);
            live->byId.erase(it);
            completion(std::move(result));
        });
    }

    const CurlLibrary& curl_;
    platform::MainLoop& loop_;
    std::shared_ptr<Inbox> inbox_;
    std::weak_ptr<Completions> completions_;
    std::size_t maxBodyBytes_;
    CURLM* multi_;
    std::unordered_map<CURL*, std::unique_ptr<Transfer>> transfers_;
};

CurlHttpClient::CurlHttpClient(platform::MainLoop& loop, std::size_t maxBodyBytes)
    : loop_(loop), maxBodyBytes_(maxBodyBytes), inbox_(std::make_shared<Inbox>()),
      completions_(std::make_shared<Completions>()) {}

CurlHttpClient::~CurlHttpClient() {
    // Completions first, on the main thread: a result already posted finds nothing to call.
    completions_.reset();
    {
        std::lock_guard lock(inbox_->mutex);
        inbox_->stopping = true;
        if (inbox_->multi != nullptr) inbox_->wakeup(inbox_->multi);
    }
    if (thread_.joinable()) thread_.join();
    worker_.reset();
}

bool CurlHttpClient::startWorkerIfNeeded() {
    if (worker_) return true;
    if (!loadError_.empty()) return false;
    // libcurl, and the TLS library it sets up, are loaded at the first request, not at launch.
    std::string error;
    const CurlLibrary* library = CurlLibrary::load(error);
    if (library == nullptr) {
        loadError_ = "The HTTP library could not be loaded: " + error;
        return false;
    }
    worker_ = std::make_unique<Worker>(*library, loop_, inbox_, completions_, maxBodyBytes_);
    thread_ = std::thread([worker = worker_.get()] { worker->run(); });
    return true;
}

bool CurlHttpClient::isStarted() const { return worker_ != nullptr; }

platform::HttpRequest CurlHttpClient::get(std::string url, std::chrono::milliseconds timeout,
                                          Completion completion) {
    const std::uint64_t id = ++nextId_;
    completions_->byId.emplace(id, std::move(completion));
    if (!startWorkerIfNeeded()) {
        // Answered like any failed transfer: later, on the main loop, unless cancelled first.
        loop_.post([completions = std::weak_ptr<Completions>(completions_), id, error = loadError_] {
            auto live = completions.lock();
            if (!live) return;
            auto it = live->byId.find(id);
            if (it == live->byId.end()) return;
            Completion pending = std::move(it->second);
            live->byId.erase(it);
            pending(platform::HttpTransferError{platform::HttpTransferError::Kind::other, error});
        });
    } else {
        inbox_->push({Inbox::Command::Type::start, id, std::move(url), timeout});
    }
    return platform::HttpRequest([completions = std::weak_ptr<Completions>(completions_),
                                  inbox = std::weak_ptr<Inbox>(inbox_), id] {
        if (auto live = completions.lock()) {
            // Nothing to stop when the completion already ran.
            if (live->byId.erase(id) == 0) return;
        }
        if (auto queue = inbox.lock()) queue->push({Inbox::Command::Type::cancel, id, {}, {}});
    });
}

}  // namespace orvantis::curl
