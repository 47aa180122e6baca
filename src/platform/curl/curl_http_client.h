#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "platform/http_client.h"
#include "platform/main_loop.h"

namespace orvantis::curl {

/// HttpClient over libcurl. One worker thread drives a curl multi handle, so any number of
/// requests are in flight at once; every completion is posted back through `loop`, which must
/// outlive the client. The request goes out as curl sends a plain GET (only http and https,
/// redirects followed as a browser would, proxies from the environment); the body of a reply is
/// capped, so a huge answer ends as a transfer error instead of filling the memory.
/// libcurl is loaded (see CurlLibrary), set up and the worker started at the first request, so
/// that a program that never translates never pays for them; an idle worker sleeps until a
/// request or the end wakes it. Without libcurl every request fails with a transfer error.
/// Destruction abandons whatever is in flight, no completion runs afterwards, and the worker is
/// joined. Main thread only.
class CurlHttpClient final : public platform::HttpClient {
public:
    /// The largest body kept by default; a longer one fails the transfer.
    static constexpr std::size_t kDefaultMaxBodyBytes = 16 * 1024 * 1024;

    explicit CurlHttpClient(platform::MainLoop& loop, std::size_t maxBodyBytes = kDefaultMaxBodyBytes);
    ~CurlHttpClient() override;
    CurlHttpClient(const CurlHttpClient&) = delete;
    CurlHttpClient& operator=(const CurlHttpClient&) = delete;

    [[nodiscard]] platform::HttpRequest get(std::string url, std::chrono::milliseconds timeout,
                                            Completion completion) override;

    /// True once the first request has started the worker.
    bool isStarted() const;

private:
    /// Loads libcurl and starts the worker, once; false when the library cannot be loaded
    /// (`loadError_` says why, and every request fails with it).
    bool startWorkerIfNeeded();

    struct Inbox;
    struct Completions;
    class Worker;

    platform::MainLoop& loop_;
    std::size_t maxBodyBytes_;
    std::string loadError_;
    // The commands for the worker, shared with it and with the handles of the requests.
    std::shared_ptr<Inbox> inbox_;
    // The completions of the requests in flight, by id. Main thread only; posted results and
    // handles hold it weakly, so nothing reaches a completion once the client is gone.
    std::shared_ptr<Completions> completions_;
    std::uint64_t nextId_ = 0;
    std::unique_ptr<Worker> worker_;
    std::thread thread_;
};

}  // namespace orvantis::curl
