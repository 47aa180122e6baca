// The service over the real HTTP client, against a server on 127.0.0.1.

#include "core/translation/translation_service.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/curl/curl_http_client.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/local_http_server.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;
using testing::LocalHttpServer;
using testing::runLoopUntil;
using Reply = LocalHttpServer::Reply;

class RecordingSink final : public SystemLogSink {
public:
    explicit RecordingSink(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type, std::string_view category, std::string_view message) override {
        lines_.push_back(std::string(category) + ": " + std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

class TranslationServiceCurlTest : public ::testing::Test {
protected:
    TranslationResult<std::string> translate(const LocalHttpServer& server, std::string_view text,
                                             std::chrono::milliseconds limit = 10s) {
        endpoint_ = server.origin();
        std::optional<TranslationResult<std::string>> result;
        auto request = service_.translate(text, "auto", "en", [&result](auto r) { result.emplace(std::move(r)); });
        EXPECT_TRUE(runLoopUntil(loop_, [&] { return result.has_value(); }, limit));
        return result.value_or(TranslationError::network("no reply in time"));
    }

    sim::VirtualMainLoop loop_;
    curl::CurlHttpClient http_{loop_};
    testing::TemporaryDirectory dir_;
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    std::vector<std::string> logLines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<RecordingSink>(logLines_)};
    std::string endpoint_;
    TranslationService service_{http_, loop_, logger_.log().translate, [this] { return endpoint_; }};
};

TEST_F(TranslationServiceCurlTest, ACannedReplyIsTranslatedAndTheServerSeesTheExactQuery) {
    LocalHttpServer server(Reply{200, R"([[["hello","привет",null,null]],null,"ru"])"});
    auto result = translate(server, "a&b=c+d привет");
    ASSERT_TRUE(result.ok()) << result.error().message();
    EXPECT_EQ(result.value(), "hello");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].target,
              "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=a&b=c+d%20%D0%BF%D1%80%D0%B8%D0%B2%D0%B5%D1%82");
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(TranslationServiceCurlTest, AlternatesAskForTheDictionaryAndReadIt) {
    LocalHttpServer server(Reply{200, R"([[["Home","дом",null,null]],[["noun",["house","home","Home "]]],"ru"])"});
    endpoint_ = server.origin() + "/";
    std::optional<TranslationResult<Strings>> result;
    auto request = service_.translateWithAlternates("дом", "ru", "en", [&](auto r) { result.emplace(std::move(r)); });
    ASSERT_TRUE(runLoopUntil(loop_, [&] { return result.has_value(); }));
    ASSERT_TRUE(result->ok());
    EXPECT_EQ(result->value(), (Strings{"Home", "house"}));
    EXPECT_EQ(server.requests().at(0).target,
              "/translate_a/single?client=gtx&sl=ru&tl=en&dt=t&dt=at&dt=bd&q=%D0%B4%D0%BE%D0%BC");
}

TEST_F(TranslationServiceCurlTest, Status429IsAnHttpError) {
    LocalHttpServer server(Reply{429, "Too many requests"});
    EXPECT_EQ(translate(server, "x").error(), TranslationError::httpError(429));
    EXPECT_EQ(logLines_, Strings{"Translate: translate(auto→en): HTTP 429"});
}

TEST_F(TranslationServiceCurlTest, ABodyThatIsNotJsonIsAParseFailure) {
    LocalHttpServer server(Reply{200, "<!doctype html><title>Sorry</title>"});
    EXPECT_EQ(translate(server, "x").error(), TranslationError::parseFailure());
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(TranslationServiceCurlTest, AClosedConnectionIsANetworkErrorWithTheTransportsWords) {
    LocalHttpServer server(Reply{0, "", 0ms, Reply::Kind::close});
    const auto result = translate(server, "x");
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.error().kind(), TranslationError::Kind::network);
    EXPECT_FALSE(result.error().description().empty());
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "Translate: translate(auto→en): network error — " + result.error().description());
}

TEST_F(TranslationServiceCurlTest, OverlappingRequestsAreAnsweredAsTheirRepliesArrive) {
    LocalHttpServer server([](const LocalHttpServer::Request& request) {
        const bool slow = request.target.ends_with("q=slow");
        return Reply{200, slow ? R"([[["SLOW"]]])" : R"([[["FAST"]]])", slow ? 300ms : 0ms};
    });
    endpoint_ = server.origin();
    std::vector<std::string> order;
    auto slow = service_.translate("slow", "auto", "en", [&](auto r) { order.push_back(r.value()); });
    auto fast = service_.translate("fast", "auto", "en", [&](auto r) { order.push_back(r.value()); });
    ASSERT_TRUE(runLoopUntil(loop_, [&] { return order.size() == 2; }));
    EXPECT_EQ(order, (Strings{"FAST", "SLOW"}));
}

TEST_F(TranslationServiceCurlTest, AReplySlowerThanFiveSecondsIsATimeout) {
    LocalHttpServer server(Reply{200, R"([[["late"]]])", 8s});
    const auto started = std::chrono::steady_clock::now();
    const auto result = translate(server, "x", 7s);
    const auto took = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(result.error(), TranslationError::timeout());
    EXPECT_EQ(logLines_, Strings{"Translate: translate(auto→en): timeout after 5s"});
    EXPECT_GE(took, 4900ms);
    EXPECT_LT(took, 6s);
}

}  // namespace
}  // namespace orvantis
