#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/http_client.h"
#include "platform/main_loop.h"

namespace orvantis::sim {

/// The simulated network: every request is recorded and waits until the test answers it with
/// a status and body, a reply that is not HTTP, or a transfer error. Answers reach the
/// completion on the loop's next turn; a request left unanswered for its time-out (in the
/// loop's virtual time) fails with a timed-out error, as a real transfer would. Main thread
/// only.
class HttpClient final : public platform::HttpClient {
public:
    /// One request as the program made it.
    struct Request {
        std::string url;
        std::chrono::milliseconds timeout{};
        bool cancelled = false;  ///< the program dropped its handle or cancelled
        bool finished = false;   ///< answered, failed or timed out
    };

    explicit HttpClient(platform::MainLoop& loop);
    ~HttpClient() override;

    [[nodiscard]] platform::HttpRequest get(std::string url, std::chrono::milliseconds timeout,
                                            Completion completion) override;

    /// Every request so far, oldest first.
    std::vector<Request> requests() const;
    /// The URLs of every request so far, oldest first.
    std::vector<std::string> requestedUrls() const;
    /// Number of requests neither cancelled nor finished.
    std::size_t pendingCount() const;

    /// Answers request `index` with an HTTP reply. False, and nothing happens, when the request
    /// does not exist, is cancelled or is already finished.
    bool respond(std::size_t index, int status, std::string body);
    /// Answers the latest request: the common case of one request at a time.
    bool respondToLast(int status, std::string body);
    /// Ends request `index` with a reply that carries no HTTP status.
    bool respondNotHttp(std::size_t index, std::string body = {});
    /// Ends request `index` with a transfer error.
    bool fail(std::size_t index, platform::HttpTransferError error);

private:
    struct Entry;
    bool finish(std::size_t index, platform::HttpResult result);

    platform::MainLoop& loop_;
    std::vector<std::shared_ptr<Entry>> entries_;
};

}  // namespace orvantis::sim
