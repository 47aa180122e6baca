#include "platform/sim/http_client.h"

#include <utility>

namespace orvantis::sim {

struct HttpClient::Entry {
    Request request;
    Completion completion;
    platform::TimerHandle timeout;
};

HttpClient::HttpClient(platform::MainLoop& loop) : loop_(loop) {}

HttpClient::~HttpClient() {
    // Whatever is still posted finds no completion.
    for (auto& entry : entries_) {
        entry->completion = nullptr;
        entry->timeout.cancel();
    }
}

platform::HttpRequest HttpClient::get(std::string url, std::chrono::milliseconds timeout, Completion completion) {
    auto entry = std::make_shared<Entry>();
    entry->request.url = std::move(url);
    entry->request.timeout = timeout;
    entry->completion = std::move(completion);
    const std::size_t index = entries_.size();
    entries_.push_back(entry);
    entry->timeout = loop_.postAfter(timeout, [this, index] {
        finish(index, platform::HttpTransferError{platform::HttpTransferError::Kind::timedOut,
                                                  "The request timed out."});
    });
    return platform::HttpRequest([weak = std::weak_ptr<Entry>(entry)] {
        auto live = weak.lock();
        if (!live || !live->completion) return;
        live->request.cancelled = true;
        live->completion = nullptr;
        live->timeout.cancel();
    });
}

std::vector<HttpClient::Request> HttpClient::requests() const {
    std::vector<Request> all;
    for (const auto& entry : entries_) all.push_back(entry->request);
    return all;
}

std::vector<std::string> HttpClient::requestedUrls() const {
    std::vector<std::string> urls;
    for (const auto& entry : entries_) urls.push_back(entry->request.url);
    return urls;
}

std::size_t HttpClient::pendingCount() const {
    std::size_t count = 0;
    for (const auto& entry : entries_)
        if (!entry->request.cancelled && !entry->request.finished) ++count;
    return count;
}

bool HttpClient::respond(std::size_t index, int status, std::string body) {
    return finish(index, platform::HttpResponse{status, std::move(body), true});
}

bool HttpClient::respondToLast(int status, std::string body) {
    return !entries_.empty() && respond(entries_.size() - 1, status, std::move(body));
}

bool HttpClient::respondNotHttp(std::size_t index, std::string body) {
    return finish(index, platform::HttpResponse{0, std::move(body), false});
}

bool HttpClient::fail(std::size_t index, platform::HttpTransferError error) {
    return finish(index, std::move(error));
}

bool HttpClient::finish(std::size_t index, platform::HttpResult result) {
    if (index >= entries_.size()) return false;
    auto& entry = entries_[index];
    if (entry->request.cancelled || entry->request.finished) return false;
    entry->request.finished = true;
    entry->timeout.cancel();
    loop_.post([weak = std::weak_ptr<Entry>(entry), result = std::move(result)]() mutable {
        auto live = weak.lock();
        if (!live || !live->completion) return;
        auto completion = std::exchange(live->completion, nullptr);
        completion(std::move(result));
    });
    return true;
}

}  // namespace orvantis::sim
