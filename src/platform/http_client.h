#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <variant>

namespace orvantis::platform {

/// What a server answered: its status and the bytes of the body, whatever the status.
struct HttpResponse {
    int status = 0;
    std::string body;
    /// False when the transfer ended without an HTTP status line to read (nothing but HTTP is
    /// ever asked for, so this marks a broken or foreign answer).
    bool isHttp = true;
};

/// Why a request came back without a response.
struct HttpTransferError {
    enum class Kind {
        timedOut,  ///< the time-out given with the request ran out
        other,     ///< no connection, a reset, a refused or oversized reply, a TLS failure...
    };
    Kind kind = Kind::other;
    /// A sentence for a person ("Failed to connect to 127.0.0.1 port 9: Connection refused").
    std::string description;
};

/// The outcome of one request: a response or a transfer error.
using HttpResult = std::variant<HttpResponse, HttpTransferError>;

/// The handle of one request in flight. Destroying it, or calling cancel(), abandons the
/// request: its completion never runs afterwards and the transfer is stopped as soon as the
/// backend can. Move-only; main thread only.
class HttpRequest {
public:
    HttpRequest() = default;
    explicit HttpRequest(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    HttpRequest(const HttpRequest&) = delete;
    HttpRequest& operator=(const HttpRequest&) = delete;
    HttpRequest(HttpRequest&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
    HttpRequest& operator=(HttpRequest&& other) noexcept {
        if (this != &other) {
            cancel();
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    ~HttpRequest() { cancel(); }

    /// Abandons the request; later calls, and calls after the completion ran, do nothing.
    void cancel() {
        if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
    }

private:
    std::function<void()> cancel_;
};

/// Plain HTTP GET requests, several in flight at once. The request carries no header of the
/// caller's own and no body. Completions run on the main loop, one per request that was
/// neither cancelled nor left behind by the destruction of the client. Main thread only.
class HttpClient {
public:
    using Completion = std::function<void(HttpResult)>;

    virtual ~HttpClient() = default;
    /// Starts a GET of `url` that gives up after `timeout` in all (connecting included).
    /// `completion` runs on the main loop, never from within this call, with the response or
    /// with the transfer error; a URL the backend cannot use is a transfer error of kind other.
    [[nodiscard]] virtual HttpRequest get(std::string url, std::chrono::milliseconds timeout,
                                          Completion completion) = 0;
};

}  // namespace orvantis::platform
