#pragma once

// A tiny HTTP/1.1 server on 127.0.0.1 for the tests of the HTTP client and of what is built on
// it: one thread accepts, one thread a connection answers, each connection carries one request
// and is closed after the reply. Tests only.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvantis::testing {

/// A server on an ephemeral port of 127.0.0.1 whose replies a handler chooses per request.
/// Destruction stops it at once, cutting short any reply still waiting out its delay.
class LocalHttpServer {
public:
    /// What one request gets.
    struct Reply {
        enum class Kind {
            respond,          ///< a status line, a few headers and `body`
            close,            ///< the connection is closed without a byte sent
            raw,              ///< `body` is sent as it is, status line and all
        };
        int status = 200;
        std::string body;
        std::chrono::milliseconds delay{0};  ///< waited before anything is sent
        Kind kind = Kind::respond;
    };
    /// One request as it arrived.
    struct Request {
        std::string target;  ///< path and query of the request line
        std::string head;    ///< the request line and headers as sent
    };
    using Handler = std::function<Reply(const Request&)>;

    explicit LocalHttpServer(Handler handler) : handler_(std::move(handler)) {
        listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        int yes = 1;
        ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        ::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        ::listen(listener_, 64);
        socklen_t length = sizeof address;
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
        acceptor_ = std::thread([this] { acceptLoop(); });
    }

    /// Always answers `reply`.
    explicit LocalHttpServer(Reply reply) : LocalHttpServer([reply](const Request&) { return reply; }) {}

    ~LocalHttpServer() {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
            for (int fd : open_) ::shutdown(fd, SHUT_RDWR);
        }
        wake_.notify_all();
        ::shutdown(listener_, SHUT_RDWR);
        acceptor_.join();
        ::close(listener_);
        std::vector<std::thread> connections;
        {
            std::lock_guard lock(mutex_);
            connections.swap(connections_);
        }
        for (auto& t : connections) t.join();
    }

    LocalHttpServer(const LocalHttpServer&) = delete;
    LocalHttpServer& operator=(const LocalHttpServer&) = delete;

    int port() const { return port_; }
    /// "http://127.0.0.1:<port>", an endpoint without a trailing slash.
    std::string origin() const { return "http://127.0.0.1:" + std::to_string(port_); }
    /// Every request received so far, in the order they arrived.
    std::vector<Request> requests() const {
        std::lock_guard lock(mutex_);
        return requests_;
    }
    /// Number of connections whose reply is fully sent or abandoned.
    int finishedConnections() const { return finished_.load(); }

private:
    void acceptLoop() {
        for (;;) {
            const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd < 0) {
                std::lock_guard lock(mutex_);
                if (stopping_) return;
                continue;
            }
            std::lock_guard lock(mutex_);
            if (stopping_) {
                ::close(fd);
                return;
            }
            open_.push_back(fd);
            connections_.emplace_back([this, fd] { serve(fd); });
        }
    }

    void serve(int fd) {
        std::string head;
        char buffer[4096];
        while (head.find("\r\n\r\n") == std::string::npos) {
            const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
            if (n <= 0) break;
            head.append(buffer, static_cast<std::size_t>(n));
        }
        Request request;
        request.head = head.substr(0, head.find("\r\n\r\n"));
        const auto firstSpace = head.find(' ');
        const auto secondSpace = firstSpace == std::string::npos ? std::string::npos : head.find(' ', firstSpace + 1);
        if (secondSpace != std::string::npos) request.target = head.substr(firstSpace + 1, secondSpace - firstSpace - 1);
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(request);
        }
        const Reply reply = handler_(request);
        bool stopped = false;
        if (reply.delay.count() > 0) {
            std::unique_lock lock(mutex_);
            stopped = wake_.wait_for(lock, reply.delay, [this] { return stopping_; });
        }
        if (!stopped && reply.kind != Reply::Kind::close) {
            std::string out;
            if (reply.kind == Reply::Kind::raw) {
                out = reply.body;
            } else {
                out = "HTTP/1.1 " + std::to_string(reply.status) + " " + reason(reply.status) +
                      "\r\nContent-Type: application/json; charset=UTF-8\r\nContent-Length: " +
                      std::to_string(reply.body.size()) + "\r\nConnection: close\r\n\r\n" + reply.body;
            }
            std::size_t sent = 0;
            while (sent < out.size()) {
                const ssize_t n = ::send(fd, out.data() + sent, out.size() - sent, MSG_NOSIGNAL);
                if (n <= 0) break;
                sent += static_cast<std::size_t>(n);
            }
        }
        {
            std::lock_guard lock(mutex_);
            open_.erase(std::remove(open_.begin(), open_.end(), fd), open_.end());
        }
        ::close(fd);
        ++finished_;
    }

    static std::string reason(int status) {
        switch (status) {
            case 200: return "OK";
            case 404: return "Not Found";
            case 429: return "Too Many Requests";
            case 500: return "Internal Server Error";
            default: return "Status";
        }
    }

    Handler handler_;
    int listener_ = -1;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::vector<int> open_;
    std::vector<Request> requests_;
    std::vector<std::thread> connections_;
    std::atomic<int> finished_{0};
    std::thread acceptor_;
};

/// Runs `loop` until `done()` holds or `limit` of real time has passed; answers `done()`.
/// For tests whose results come from real threads (a socket, a worker) through `loop.post`.
template <typename Loop, typename Done>
bool runLoopUntil(Loop& loop, Done done, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        loop.runUntilIdle();
        if (done()) return true;
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace orvantis::testing
