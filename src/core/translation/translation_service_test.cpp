#include "core/translation/translation_service.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/sim/http_client.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using Kind = TranslationError::Kind;
using Strings = std::vector<std::string>;
using platform::HttpTransferError;

/// Keeps what reaches the system log, as "type category: message".
class RecordingSink final : public SystemLogSink {
public:
    explicit RecordingSink(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type type, std::string_view category, std::string_view message) override {
        lines_.push_back(std::string(type == Type::Error ? "error " : "other ") + std::string(category) + ": " +
                         std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

constexpr std::string_view kPrefix = "https://translate.googleapis.com/translate_a/single?client=gtx";

class TranslationServiceTest : public ::testing::Test {
protected:
    /// Runs translate() and keeps its outcome in `translated_`.
    TranslationRequest translate(std::string_view text, std::string_view from = "auto", std::string_view to = "en") {
        return service_->translate(text, from, to, [this](TranslationResult<std::string> r) {
            ++callbacks_;
            translated_.emplace(std::move(r));
        });
    }
    TranslationRequest alternates(std::string_view text, std::string_view from = "auto", std::string_view to = "en") {
        return service_->translateWithAlternates(text, from, to, [this](TranslationResult<Strings> r) {
            ++callbacks_;
            alternates_.emplace(std::move(r));
        });
    }
    /// The translation after the last request is answered with `status` and `body`.
    TranslationResult<std::string> translateAnswered(int status, std::string body) {
        auto request = translate("привет");
        loop_.runUntilIdle();
        EXPECT_TRUE(http_.respondToLast(status, std::move(body)));
        loop_.runUntilIdle();
        EXPECT_TRUE(translated_.has_value());
        return translated_.value_or(TranslationError::network("no callback"));
    }
    TranslationResult<Strings> alternatesAnswered(int status, std::string body) {
        auto request = alternates("дом");
        loop_.runUntilIdle();
        EXPECT_TRUE(http_.respondToLast(status, std::move(body)));
        loop_.runUntilIdle();
        EXPECT_TRUE(alternates_.has_value());
        return alternates_.value_or(TranslationError::network("no callback"));
    }
    std::vector<std::string> translateLog() const {
        std::vector<std::string> lines;
        for (const auto& line : logLines_)
            if (line.starts_with("error Translate: ")) lines.push_back(line.substr(17));
        return lines;
    }

    sim::VirtualMainLoop loop_;
    sim::HttpClient http_{loop_};
    testing::TemporaryDirectory dir_;
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    std::vector<std::string> logLines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<RecordingSink>(logLines_)};
    std::string endpoint_ = "https://translate.googleapis.com";
    std::unique_ptr<TranslationService> service_ =
        std::make_unique<TranslationService>(http_, loop_, logger_.log().translate, [this] { return endpoint_; });
    std::optional<TranslationResult<std::string>> translated_;
    std::optional<TranslationResult<Strings>> alternates_;
    int callbacks_ = 0;
};

// The replies

TEST_F(TranslationServiceTest, TheFirstElementOfTheOnlySegmentIsTheTranslation) {
    auto result = translateAnswered(200, R"([[["hello","привет",null,null]],null,"ru"])");
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(result.value(), "hello");
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(TranslationServiceTest, SeveralSegmentsAreJoinedWithNoBlank) {
    auto result = translateAnswered(200, R"([[["One. ","Один. "],["Two.","Два."]],null,"ru"])");
    EXPECT_EQ(result.value(), "One. Two.");
}

TEST_F(TranslationServiceTest, ASegmentLedByNullIsSkipped) {
    auto result = translateAnswered(200, R"([[["a"],[null,"b"],["c"]]])");
    EXPECT_EQ(result.value(), "ac");
}

TEST_F(TranslationServiceTest, AnEmptyArrayFailsTranslateToParseButAlternatesToEmpty) {
    EXPECT_EQ(translateAnswered(200, "[]").error().kind(), Kind::parseFailure);
    EXPECT_EQ(alternatesAnswered(200, "[]").error().kind(), Kind::emptyResult);
    EXPECT_TRUE(translateLog().empty()) << "parse failures and empty results are not logged";
}

TEST_F(TranslationServiceTest, NoSegmentsIsAnEmptyResult) {
    EXPECT_EQ(translateAnswered(200, "[[]]").error(), TranslationError::emptyResult());
    EXPECT_TRUE(translateLog().empty());
}

TEST_F(TranslationServiceTest, Status429IsAnHttpErrorWithTheStatusAndALogLine) {
    auto result = translateAnswered(429, R"({"error":"rate"})");
    EXPECT_EQ(result.error(), TranslationError::httpError(429));
    EXPECT_EQ(result.error().status(), 429);
    EXPECT_EQ(translateLog(), Strings{"translate(auto→en): HTTP 429"});
}

TEST_F(TranslationServiceTest, AnyStatusButTwoHundredIsAnHttpErrorEvenWithAGoodBody) {
    EXPECT_EQ(translateAnswered(201, R"([[["hello"]]])").error(), TranslationError::httpError(201));
    EXPECT_EQ(translateAnswered(500, "").error(), TranslationError::httpError(500));
    EXPECT_EQ(alternatesAnswered(404, "").error(), TranslationError::httpError(404));
}

TEST_F(TranslationServiceTest, AlternatesKeepTheFirstCaseAndPutTheDictionaryFirst) {
    auto result = alternatesAnswered(200, R"([[["Home","дом",null,null]],[["noun",["house","home","Home "]]],"ru"])");
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(result.value(), (Strings{"Home", "house"}));
}

TEST_F(TranslationServiceTest, AlternatesABlankPrimaryWithOneTermGivesTheTermAlone) {
    auto result = alternatesAnswered(200, R"([[[" "]],[["noun",["house"]]]])");
    EXPECT_EQ(result.value(), Strings{"house"});
}

TEST_F(TranslationServiceTest, ABodyThatIsNotJsonIsAParseFailureInBothOperations) {
    EXPECT_EQ(translateAnswered(200, "<html>sorry</html>").error(), TranslationError::parseFailure());
    EXPECT_EQ(alternatesAnswered(200, "<html>sorry</html>").error(), TranslationError::parseFailure());
    EXPECT_TRUE(translateLog().empty());
}

TEST_F(TranslationServiceTest, BadBodiesAreParseFailures) {
    std::string deep(100000, '[');
    deep += std::string(100000, ']');
    for (const std::string& body : {std::string(R"([[["hel)"), deep, std::string("[[1]]"),
                                    std::string(R"({"sentences":[]})"), std::string("[[[\"caf\xE9\"]]]")}) {
        EXPECT_EQ(translateAnswered(200, body).error(), TranslationError::parseFailure()) << body.substr(0, 40);
    }
}

TEST_F(TranslationServiceTest, ATenMegabyteReplyIsRead) {
    std::string body = "[[";
    while (body.size() < 10 * 1024 * 1024) body += R"(["ab"],)";
    body += R"(["c"]]])";
    auto result = translateAnswered(200, body);
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(result.value().size() % 2, 1u);
    EXPECT_TRUE(result.value().ends_with("abc"));
}

// The request

TEST_F(TranslationServiceTest, TheRequestIsTheEndpointPathAndEncodedText) {
    auto a = translate("a&b=c+d привет 😀", "auto", "ru");
    auto b = alternates("home", "en", "ru");
    EXPECT_EQ(http_.requestedUrls(),
              (Strings{std::string(kPrefix) + "&sl=auto&tl=ru&dt=t&q=a&b=c+d%20%D0%BF%D1%80%D0%B8%D0%B2%D0%B5%D1%82%20%F0%9F%98%80",
                       std::string(kPrefix) + "&sl=en&tl=ru&dt=t&dt=at&dt=bd&q=home"}));
    for (const auto& request : http_.requests()) EXPECT_EQ(request.timeout, 5000ms);
}

TEST_F(TranslationServiceTest, TheEndpointIsReadAtEachRequest) {
    endpoint_ = "http://127.0.0.1:8080/";
    auto a = translate("x");
    endpoint_ = "https://mirror.example";
    auto b = translate("y");
    EXPECT_EQ(http_.requestedUrls(),
              (Strings{"http://127.0.0.1:8080/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=x",
                       "https://mirror.example/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=y"}));
}

// Failures of the transfer

TEST_F(TranslationServiceTest, NoReplyWithinFiveSecondsIsATimeout) {
    auto request = translate("привет", "ru", "en");
    loop_.runFor(4999ms);
    EXPECT_FALSE(translated_);
    loop_.runFor(1ms);
    ASSERT_TRUE(translated_);
    EXPECT_EQ(translated_->error(), TranslationError::timeout());
    EXPECT_EQ(translateLog(), Strings{"translate(ru→en): timeout after 5s"});
}

TEST_F(TranslationServiceTest, AnotherTransferErrorComesAsItCame) {
    auto request = translate("привет");
    ASSERT_TRUE(http_.fail(0, HttpTransferError{HttpTransferError::Kind::other,
                                                "Failed to connect to 127.0.0.1 port 9: Connection refused"}));
    loop_.runUntilIdle();
    ASSERT_TRUE(translated_);
    EXPECT_EQ(translated_->error(),
              TranslationError::network("Failed to connect to 127.0.0.1 port 9: Connection refused"));
    EXPECT_EQ(translateLog(),
              Strings{"translate(auto→en): network error — Failed to connect to 127.0.0.1 port 9: Connection refused"});
}

TEST_F(TranslationServiceTest, AReplyThatIsNotHttpIsAParseFailure) {
    auto request = translate("привет");
    ASSERT_TRUE(http_.respondNotHttp(0, R"([[["hello"]]])"));
    loop_.runUntilIdle();
    EXPECT_EQ(translated_->error(), TranslationError::parseFailure());
    EXPECT_EQ(translateLog(), Strings{"translate(auto→en): non-HTTP response"});
}

TEST_F(TranslationServiceTest, AnUnusableEndpointIsAParseFailureWithoutARequest) {
    endpoint_ = "ftp://translate.googleapis.com";
    auto request = translate("👨‍👩‍👧 привет", "auto", "de");
    EXPECT_FALSE(translated_) << "never from within the call";
    loop_.runUntilIdle();
    ASSERT_TRUE(translated_);
    EXPECT_EQ(translated_->error(), TranslationError::parseFailure());
    EXPECT_TRUE(http_.requests().empty());
    // A family emoji is one character.
    EXPECT_EQ(translateLog(), Strings{"translate(auto→de): URL build failed for input length 8"});
}

TEST_F(TranslationServiceTest, TextThatIsNotUtf8MakesNoUrl) {
    auto request = translate("ab\xFF", "en", "ru");
    loop_.runUntilIdle();
    EXPECT_EQ(translated_->error(), TranslationError::parseFailure());
    EXPECT_TRUE(http_.requests().empty());
    EXPECT_EQ(translateLog(), Strings{"translate(en→ru): URL build failed for input length 3"});
}

TEST_F(TranslationServiceTest, AlternatesFailTheSameWaysWithoutLogLines) {
    {
        auto request = alternates("дом");
        loop_.runFor(5s);
        EXPECT_EQ(alternates_->error(), TranslationError::timeout());
    }
    {
        auto request = alternates("дом");
        http_.fail(1, HttpTransferError{HttpTransferError::Kind::other, "Connection reset by peer"});
        loop_.runUntilIdle();
        EXPECT_EQ(alternates_->error(), TranslationError::network("Connection reset by peer"));
    }
    {
        auto request = alternates("дом");
        http_.respondNotHttp(2);
        loop_.runUntilIdle();
        EXPECT_EQ(alternates_->error(), TranslationError::parseFailure());
    }
    {
        auto request = alternates("дом");
        http_.respond(3, 503, "");
        loop_.runUntilIdle();
        EXPECT_EQ(alternates_->error(), TranslationError::httpError(503));
    }
    {
        endpoint_ = "not a url";
        auto request = alternates("дом");
        loop_.runUntilIdle();
        EXPECT_EQ(alternates_->error(), TranslationError::parseFailure());
    }
    EXPECT_EQ(callbacks_, 5);
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(TranslationServiceTest, TheLinesReachTheLogFileAtErrorLevel) {
    translateAnswered(429, "");
    EXPECT_EQ(logLines_, Strings{"error Translate: translate(auto→en): HTTP 429"});
    const std::string file = logger_.recentLogs(1);
    EXPECT_NE(file.find("[ERROR] Translate: translate(auto→en): HTTP 429\n"), std::string::npos) << file;
}

TEST_F(TranslationServiceTest, TheTextNeverReachesTheLog) {
    const std::string secret = "hunter2 пароль";
    std::vector<TranslationRequest> requests;
    auto each = [&](auto&& answer) {
        requests.push_back(translate(secret));
        answer(http_.requests().size() - 1);
        loop_.runUntilIdle();
    };
    each([&](std::size_t i) { http_.respond(i, 500, secret); });
    each([&](std::size_t i) { http_.respondNotHttp(i, secret); });
    each([&](std::size_t i) {
        http_.fail(i, HttpTransferError{HttpTransferError::Kind::other,
                                        "Malformed request to " + http_.requests()[i].url});
    });
    each([&](std::size_t) { loop_.runFor(5s); });
    endpoint_ = "bad";
    each([](std::size_t) {});
    const auto lines = translateLog();
    ASSERT_EQ(lines.size(), 5u);
    for (const auto& line : logLines_) {
        EXPECT_EQ(line.find("hunter2"), std::string::npos) << line;
        EXPECT_EQ(line.find("%D0%BF"), std::string::npos) << line;
        EXPECT_EQ(line.find("пароль"), std::string::npos) << line;
    }
    EXPECT_EQ(translated_->error().kind(), Kind::parseFailure);
}

// Cancellation and overlap

TEST_F(TranslationServiceTest, ADroppedHandleMeansTheCallbackNeverRuns) {
    { auto dropped = translate("привет"); }
    EXPECT_TRUE(http_.requests().at(0).cancelled);
    EXPECT_FALSE(http_.respond(0, 200, R"([[["hello"]]])"));
    loop_.runFor(10s);
    EXPECT_EQ(callbacks_, 0);
}

TEST_F(TranslationServiceTest, CancelBeforeTheReplyStopsTheTransfer) {
    auto request = translate("привет");
    request.cancel();
    EXPECT_TRUE(http_.requests().at(0).cancelled);
    EXPECT_EQ(http_.pendingCount(), 0u);
    loop_.runFor(10s);
    EXPECT_EQ(callbacks_, 0);
    request.cancel();
}

TEST_F(TranslationServiceTest, CancelAfterTheReplyArrivedButBeforeItWasReadStillHolds) {
    auto request = translate("привет");
    http_.respond(0, 200, R"([[["hello"]]])");
    request.cancel();
    loop_.runUntilIdle();
    EXPECT_EQ(callbacks_, 0);
}

TEST_F(TranslationServiceTest, CancelWhileTheReplyIsBeingReadStillHolds) {
    auto request = translate("привет");
    http_.respond(0, 200, R"([[["hello"]]])");
    // Posted after the reply: runs once the reading is queued, before its result comes back.
    bool cancelledInBetween = false;
    loop_.post([&] {
        cancelledInBetween = http_.requests().at(0).finished;
        request.cancel();
    });
    loop_.runUntilIdle();
    EXPECT_TRUE(cancelledInBetween);
    EXPECT_EQ(callbacks_, 0);
}

TEST_F(TranslationServiceTest, CancelOfAFailureBeforeItIsDeliveredHolds) {
    endpoint_ = "bad";
    auto request = translate("привет");
    request.cancel();
    loop_.runUntilIdle();
    EXPECT_EQ(callbacks_, 0);
}

TEST_F(TranslationServiceTest, OverlappingRequestsEachGetTheirOwnReply) {
    std::vector<std::string> got(3);
    std::vector<TranslationRequest> requests;
    for (int i = 0; i < 3; ++i) {
        requests.push_back(service_->translate("t" + std::to_string(i), "auto", "en", [&got, i](auto r) {
            got[static_cast<std::size_t>(i)] = r ? r.value() : r.error().message();
        }));
    }
    EXPECT_EQ(http_.pendingCount(), 3u);
    http_.respond(2, 200, R"([[["two"]]])");
    http_.respond(0, 429, "");
    loop_.runUntilIdle();
    EXPECT_EQ(got, (Strings{"HTTP 429", "", "two"}));
    http_.respond(1, 200, R"([[["one"]]])");
    loop_.runUntilIdle();
    EXPECT_EQ(got, (Strings{"HTTP 429", "one", "two"}));
}

TEST_F(TranslationServiceTest, CancellingOneOfSeveralLeavesTheOthers) {
    auto a = translate("a");
    std::optional<TranslationResult<std::string>> second;
    auto b = service_->translate("b", "auto", "en", [&second](auto r) { second.emplace(std::move(r)); });
    a.cancel();
    http_.respond(1, 200, R"([[["B"]]])");
    loop_.runUntilIdle();
    EXPECT_EQ(callbacks_, 0);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->value(), "B");
}

TEST_F(TranslationServiceTest, TheCallbackMayDropItsOwnHandleAndStartAnother) {
    TranslationRequest request;
    TranslationRequest next;
    std::string got;
    request = service_->translate("a", "auto", "en", [&](auto r) {
        got = r.value();
        request = TranslationRequest();
        next = service_->translate("b", "auto", "en", [&](auto r2) { got += r2.value(); });
    });
    http_.respond(0, 200, R"([[["A"]]])");
    loop_.runUntilIdle();
    http_.respond(1, 200, R"([[["B"]]])");
    loop_.runUntilIdle();
    EXPECT_EQ(got, "AB");
}

TEST_F(TranslationServiceTest, ARequestOutlivingTheServiceNeverCallsBack) {
    auto request = translate("привет");
    service_.reset();
    http_.respond(0, 200, R"([[["hello"]]])");
    loop_.runFor(10s);
    EXPECT_EQ(callbacks_, 0);
}

}  // namespace
}  // namespace orvantis
