#include "platform/curl/curl_http_client.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "platform/sim/virtual_main_loop.h"
#include "testing/local_http_server.h"

namespace orvantis::curl {
namespace {

using namespace std::chrono_literals;
using platform::HttpResponse;
using platform::HttpResult;
using platform::HttpTransferError;
using testing::LocalHttpServer;
using testing::runLoopUntil;
using Reply = LocalHttpServer::Reply;

class CurlHttpClientTest : public ::testing::Test {
protected:
    /// Starts a GET whose result lands in `result`.
    platform::HttpRequest get(const std::string& url, std::optional<HttpResult>& result,
                              std::chrono::milliseconds timeout = 5s) {
        return client_->get(url, timeout, [&result](HttpResult r) { result = std::move(r); });
    }
    bool waitFor(const std::optional<HttpResult>& result) {
        return runLoopUntil(loop_, [&] { return result.has_value(); });
    }

    sim::VirtualMainLoop loop_;
    std::unique_ptr<CurlHttpClient> client_ = std::make_unique<CurlHttpClient>(loop_);
};

TEST_F(CurlHttpClientTest, AnOkReplyGivesTheStatusAndTheBodyOnTheMainLoop) {
    LocalHttpServer server(Reply{200, R"([[["hello","привет",null,null]],null,"ru"])"});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/translate_a/single?client=gtx&q=x", result);
    EXPECT_FALSE(result) << "never from within get()";
    ASSERT_TRUE(waitFor(result));
    const auto* response = std::get_if<HttpResponse>(&*result);
    ASSERT_NE(response, nullptr);
    EXPECT_EQ(response->status, 200);
    EXPECT_TRUE(response->isHttp);
    EXPECT_EQ(response->body, R"([[["hello","привет",null,null]],null,"ru"])");
}

TEST_F(CurlHttpClientTest, TheServerReceivesAPlainGetOfTheExactTarget) {
    LocalHttpServer server(Reply{200, "[]"});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=a&b=c+d%20e", result);
    ASSERT_TRUE(waitFor(result));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].target, "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=a&b=c+d%20e");
    EXPECT_TRUE(requests[0].head.starts_with("GET /translate_a/single?"));
    // Only what HTTP itself needs: no agent, no encoding, no cookies of our own.
    EXPECT_EQ(requests[0].head.find("User-Agent"), std::string::npos);
    EXPECT_EQ(requests[0].head.find("Accept-Encoding"), std::string::npos);
    EXPECT_EQ(requests[0].head.find("Cookie"), std::string::npos);
}

TEST_F(CurlHttpClientTest, AnErrorStatusIsAResponseWithItsBody) {
    LocalHttpServer server(Reply{429, "slow down"});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/", result);
    ASSERT_TRUE(waitFor(result));
    const auto* response = std::get_if<HttpResponse>(&*result);
    ASSERT_NE(response, nullptr);
    EXPECT_EQ(response->status, 429);
    EXPECT_EQ(response->body, "slow down");
}

TEST_F(CurlHttpClientTest, ABodyThatIsNotJsonComesAsItIs) {
    LocalHttpServer server(Reply{200, "<html>not json</html>"});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/", result);
    ASSERT_TRUE(waitFor(result));
    ASSERT_TRUE(std::holds_alternative<HttpResponse>(*result));
    EXPECT_EQ(std::get<HttpResponse>(*result).body, "<html>not json</html>");
}

TEST_F(CurlHttpClientTest, AReplySlowerThanTheTimeOutIsATimedOutError) {
    LocalHttpServer server(Reply{200, "[]", 3s});
    std::optional<HttpResult> result;
    const auto started = std::chrono::steady_clock::now();
    auto request = get(server.origin() + "/", result, 200ms);
    ASSERT_TRUE(waitFor(result));
    const auto took = std::chrono::steady_clock::now() - started;
    const auto* error = std::get_if<HttpTransferError>(&*result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, HttpTransferError::Kind::timedOut);
    EXPECT_FALSE(error->description.empty());
    EXPECT_GE(took, 190ms);
    EXPECT_LT(took, 2s);
}

TEST_F(CurlHttpClientTest, AConnectionClosedWithoutAReplyIsAnotherError) {
    LocalHttpServer server(Reply{0, "", 0ms, Reply::Kind::close});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/", result);
    ASSERT_TRUE(waitFor(result));
    const auto* error = std::get_if<HttpTransferError>(&*result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, HttpTransferError::Kind::other);
    EXPECT_FALSE(error->description.empty());
}

TEST_F(CurlHttpClientTest, ARefusedConnectionIsAnotherErrorWithADescription) {
    int port = 0;
    {
        LocalHttpServer closed(Reply{});
        port = closed.port();
    }
    std::optional<HttpResult> result;
    auto request = get("http://127.0.0.1:" + std::to_string(port) + "/", result);
    ASSERT_TRUE(waitFor(result));
    const auto* error = std::get_if<HttpTransferError>(&*result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, HttpTransferError::Kind::other);
    EXPECT_NE(error->description.find("127.0.0.1"), std::string::npos) << error->description;
}

TEST_F(CurlHttpClientTest, AReplyThatIsNotHttpIsAnError) {
    LocalHttpServer server(Reply{0, "hello there\r\n\r\n", 0ms, Reply::Kind::raw});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/", result);
    ASSERT_TRUE(waitFor(result));
    if (const auto* response = std::get_if<HttpResponse>(&*result)) {
        EXPECT_FALSE(response->isHttp);
    } else {
        EXPECT_EQ(std::get<HttpTransferError>(*result).kind, HttpTransferError::Kind::other);
    }
}

TEST_F(CurlHttpClientTest, ASchemeOtherThanHttpIsRefused) {
    std::optional<HttpResult> result;
    auto request = get("file:///etc/hostname", result);
    ASSERT_TRUE(waitFor(result));
    ASSERT_TRUE(std::holds_alternative<HttpTransferError>(*result));
    EXPECT_EQ(std::get<HttpTransferError>(*result).kind, HttpTransferError::Kind::other);
}

TEST_F(CurlHttpClientTest, ABodyOverTheCapEndsTheTransferWithAnError) {
    client_ = std::make_unique<CurlHttpClient>(loop_, 1000);
    LocalHttpServer announced(Reply{200, std::string(5000, 'x')});
    std::optional<HttpResult> first;
    auto request1 = get(announced.origin() + "/", first);
    // Without a length the cap is met while the bytes arrive.
    LocalHttpServer streamed(Reply{0, "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + std::string(5000, 'y'), 0ms,
                                   Reply::Kind::raw});
    std::optional<HttpResult> second;
    auto request2 = get(streamed.origin() + "/", second);
    ASSERT_TRUE(waitFor(first));
    ASSERT_TRUE(waitFor(second));
    for (const auto* result : {&first, &second}) {
        const auto* error = std::get_if<HttpTransferError>(&**result);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->kind, HttpTransferError::Kind::other);
        EXPECT_EQ(error->description, "The reply is larger than 1000 bytes");
    }
}

TEST_F(CurlHttpClientTest, ABodyAtTheCapIsKept) {
    client_ = std::make_unique<CurlHttpClient>(loop_, 1000);
    LocalHttpServer server(Reply{200, std::string(1000, 'x')});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/", result);
    ASSERT_TRUE(waitFor(result));
    ASSERT_TRUE(std::holds_alternative<HttpResponse>(*result));
    EXPECT_EQ(std::get<HttpResponse>(*result).body.size(), 1000u);
}

TEST_F(CurlHttpClientTest, SeveralRequestsAreInFlightAtOnce) {
    LocalHttpServer server([](const LocalHttpServer::Request& request) {
        // "/1" waits longest, so the replies come back in the other order.
        const int n = request.target.back() - '0';
        return Reply{200, request.target, std::chrono::milliseconds(800 - 200 * n)};
    });
    std::vector<std::string> order;
    std::vector<platform::HttpRequest> requests;
    const auto started = std::chrono::steady_clock::now();
    for (int n = 1; n <= 3; ++n) {
        requests.push_back(client_->get(server.origin() + "/" + std::to_string(n), 5s, [&order](HttpResult r) {
            order.push_back(std::get<HttpResponse>(r).body);
        }));
    }
    ASSERT_TRUE(runLoopUntil(loop_, [&] { return order.size() == 3; }));
    const auto took = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(order, (std::vector<std::string>{"/3", "/2", "/1"}));
    EXPECT_LT(took, 1100ms) << "one after the other would take 1200 ms";
}

TEST_F(CurlHttpClientTest, ACancelledRequestNeverCompletes) {
    LocalHttpServer server(Reply{200, "late", 200ms});
    bool called = false;
    {
        auto request = client_->get(server.origin() + "/", 5s, [&called](HttpResult) { called = true; });
        ASSERT_TRUE(runLoopUntil(loop_, [&] { return server.requests().size() == 1; }));
    }
    // Even once the server has answered, nothing reaches the completion.
    ASSERT_TRUE(runLoopUntil(loop_, [&] { return server.finishedConnections() == 1; }));
    runLoopUntil(loop_, [] { return false; }, 100ms);
    EXPECT_FALSE(called);
}

TEST_F(CurlHttpClientTest, CancelAfterTheReplyWasPostedStillPreventsTheCompletion) {
    LocalHttpServer server(Reply{200, "quick"});
    bool called = false;
    auto request = client_->get(server.origin() + "/", 5s, [&called](HttpResult) { called = true; });
    // Let the reply arrive and be posted, without running the loop.
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (server.finishedConnections() == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(50ms);
    request.cancel();
    loop_.runUntilIdle();
    EXPECT_FALSE(called);
    request.cancel();  // twice is harmless
}

TEST_F(CurlHttpClientTest, DestroyingTheClientAbandonsWhatIsInFlight) {
    LocalHttpServer server(Reply{200, "never seen", 5s});
    bool called = false;
    auto request = client_->get(server.origin() + "/", 10s, [&called](HttpResult) { called = true; });
    ASSERT_TRUE(runLoopUntil(loop_, [&] { return server.requests().size() == 1; }));
    const auto started = std::chrono::steady_clock::now();
    client_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - started, 2s);
    loop_.runUntilIdle();
    EXPECT_FALSE(called);
    request.cancel();  // the handle may outlive the client
}

TEST_F(CurlHttpClientTest, ACompletionMayStartTheNextRequest) {
    LocalHttpServer server([](const LocalHttpServer::Request& request) { return Reply{200, request.target}; });
    std::vector<std::string> bodies;
    platform::HttpRequest second;
    auto first = client_->get(server.origin() + "/first", 5s, [&](HttpResult r) {
        bodies.push_back(std::get<HttpResponse>(r).body);
        second = client_->get(server.origin() + "/second", 5s,
                              [&](HttpResult r2) { bodies.push_back(std::get<HttpResponse>(r2).body); });
    });
    ASSERT_TRUE(runLoopUntil(loop_, [&] { return bodies.size() == 2; }));
    EXPECT_EQ(bodies, (std::vector<std::string>{"/first", "/second"}));
}

TEST_F(CurlHttpClientTest, NothingStartsBeforeTheFirstRequest) {
    EXPECT_FALSE(client_->isStarted()) << "a program that never translates pays for no worker";
    client_.reset();  // and one that never started ends at once
    client_ = std::make_unique<CurlHttpClient>(loop_);
    LocalHttpServer server(Reply{200, "ok"});
    std::optional<HttpResult> result;
    auto request = get(server.origin() + "/", result);
    EXPECT_TRUE(client_->isStarted());
    ASSERT_TRUE(waitFor(result));
}

TEST_F(CurlHttpClientTest, AnIdleWorkerWakesForTheNextRequestAtOnce) {
    LocalHttpServer server([](const LocalHttpServer::Request& request) { return Reply{200, request.target}; });
    std::optional<HttpResult> first;
    auto one = get(server.origin() + "/one", first);
    ASSERT_TRUE(waitFor(first));
    // The worker now waits with no time limit of its own; only the request may wake it.
    const auto started = std::chrono::steady_clock::now();
    std::optional<HttpResult> second;
    auto two = get(server.origin() + "/two", second);
    ASSERT_TRUE(waitFor(second));
    EXPECT_EQ(std::get<HttpResponse>(*second).body, "/two");
    EXPECT_LT(std::chrono::steady_clock::now() - started, 3s);
}

}  // namespace
}  // namespace orvantis::curl
