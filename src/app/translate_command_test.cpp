#include "app/translate_command.h"

#include <gtest/gtest.h>

#include "app/command_line.h"
#include "testing/local_http_server.h"
#include "testing/test_support.h"

namespace orvantis::app {
namespace {

using namespace std::chrono_literals;
using orvantis::testing::LocalHttpServer;
using orvantis::testing::readFile;
using orvantis::testing::ScopedEnv;
using orvantis::testing::TemporaryDirectory;
using Reply = LocalHttpServer::Reply;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

class TranslateCommandTest : public ::testing::Test {
protected:
    Outcome run(std::vector<std::string> args) {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int status = runCommandLine(args);
        std::string out = ::testing::internal::GetCapturedStdout();
        std::string err = ::testing::internal::GetCapturedStderr();
        return {status, out, err};
    }
    /// Points the stored endpoint at `origin`.
    void useEndpoint(const std::string& origin) {
        ASSERT_EQ(run({"settings", "set", "translationEndpoint", "\"" + origin + "\""}).status, 0);
    }
    std::string logs() const {
        std::string all;
        for (const auto& entry : std::filesystem::directory_iterator(dir_.path() / "state" / "orvantis" / "logs"))
            all += readFile(entry.path());
        return all;
    }

    TemporaryDirectory dir_;
    ScopedEnv config_{"XDG_CONFIG_HOME", (dir_.path() / "config").c_str()};
    ScopedEnv state_{"XDG_STATE_HOME", (dir_.path() / "state").c_str()};
};

TEST_F(TranslateCommandTest, TheEndpointDefaultsToThePublicHostAndCanBeSet) {
    EXPECT_EQ(run({"settings", "get", "translationEndpoint"}).out, "\"https://translate.googleapis.com\"\n");
    useEndpoint("http://127.0.0.1:1");
    EXPECT_EQ(run({"settings", "get", "translationEndpoint"}).out, "\"http://127.0.0.1:1\"\n");
    EXPECT_EQ(run({"settings", "reset", "translationEndpoint"}).status, 0);
    EXPECT_EQ(run({"settings", "get", "translationEndpoint"}).out, "\"https://translate.googleapis.com\"\n");
}

TEST_F(TranslateCommandTest, PrintsTheTranslationFromAutoToEnglishByDefault) {
    LocalHttpServer server(Reply{200, R"([[["Hello, ","Привет, "],["world","мир"]],null,"ru"])"});
    useEndpoint(server.origin());
    const auto r = run({"translate", "Привет, мир"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "Hello, world\n");
    EXPECT_EQ(r.err, "");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].target,
              "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=%D0%9F%D1%80%D0%B8%D0%B2%D0%B5%D1%82,%20%D0%BC%D0%B8%D1%80");
}

TEST_F(TranslateCommandTest, FromAndToChooseTheLanguages) {
    LocalHttpServer server(Reply{200, R"([[["Hallo"]]])"});
    useEndpoint(server.origin() + "/");
    EXPECT_EQ(run({"translate", "--from", "ru", "--to", "de", "привет"}).out, "Hallo\n");
    EXPECT_EQ(run({"translate", "--to=uk", "--from=en", "--", "--hello"}).out, "Hallo\n");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].target, "/translate_a/single?client=gtx&sl=ru&tl=de&dt=t&q=%D0%BF%D1%80%D0%B8%D0%B2%D0%B5%D1%82");
    EXPECT_EQ(requests[1].target, "/translate_a/single?client=gtx&sl=en&tl=uk&dt=t&q=--hello");
}

TEST_F(TranslateCommandTest, AlternatesPrintOneResultALine) {
    LocalHttpServer server(Reply{200, R"([[["Home","дом",null,null]],[["noun",["house","home","Home "]]],"ru"])"});
    useEndpoint(server.origin());
    const auto r = run({"translate", "--alternates", "--from", "ru", "дом"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "Home\nhouse\n");
    EXPECT_EQ(server.requests().at(0).target,
              "/translate_a/single?client=gtx&sl=ru&tl=en&dt=t&dt=at&dt=bd&q=%D0%B4%D0%BE%D0%BC");
}

TEST_F(TranslateCommandTest, AnHttpErrorExitsOneWithItsWordsAndALogLine) {
    LocalHttpServer server(Reply{429, "Too many requests"});
    useEndpoint(server.origin());
    const auto r = run({"translate", "secret text"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "orvantis: translate: HTTP 429\n");
    const std::string log = logs();
    EXPECT_NE(log.find("[ERROR] Translate: translate(auto→en): HTTP 429\n"), std::string::npos) << log;
    EXPECT_EQ(log.find("secret"), std::string::npos);
}

TEST_F(TranslateCommandTest, AReplyThatIsNotJsonExitsOne) {
    LocalHttpServer server(Reply{200, "<html>maintenance</html>"});
    useEndpoint(server.origin());
    const auto r = run({"translate", "x"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find("orvantis: translate: "), std::string::npos);
}

TEST_F(TranslateCommandTest, AnEmptyReplyExitsOne) {
    LocalHttpServer server(Reply{200, "[[]]"});
    useEndpoint(server.origin());
    const auto r = run({"translate", "--alternates", "x"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "orvantis: translate: the reply held no translation\n");
}

TEST_F(TranslateCommandTest, NoServerIsANetworkErrorInTheTransportsWords) {
    int port = 0;
    {
        LocalHttpServer gone(Reply{});
        port = gone.port();
    }
    useEndpoint("http://127.0.0.1:" + std::to_string(port));
    const auto r = run({"translate", "x"});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.starts_with("orvantis: translate: network error — ")) << r.err;
    EXPECT_NE(logs().find("[ERROR] Translate: translate(auto→en): network error — "), std::string::npos);
}

TEST_F(TranslateCommandTest, AnEndpointThatIsNoSchemeAndHostExitsOne) {
    useEndpoint("ftp://files.example");
    const auto r = run({"translate", "привет"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "orvantis: translate: the request could not be made or its reply could not be read\n");
    EXPECT_NE(logs().find("[ERROR] Translate: translate(auto→en): URL build failed for input length 6\n"),
              std::string::npos);
}

TEST_F(TranslateCommandTest, BadArgumentsAreUsageErrors) {
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"translate"}, {"translate", "a", "b"}, {"translate", "--from"},
          {"translate", "--to", "en"}, {"translate", "--from=", "x"}, {"translate", "--quick", "x"},
          {"translate", "\xFF\xFE"}}) {
        const auto r = run(args);
        EXPECT_EQ(r.status, 2) << args.back();
        EXPECT_TRUE(r.out.empty()) << args.back();
        EXPECT_NE(r.err.find("orvantis: "), std::string::npos) << args.back();
    }
}

TEST_F(TranslateCommandTest, HelpNamesTheCommand) {
    EXPECT_NE(run({"--help"}).out.find("orvantis translate [--from CODE] [--to CODE] [--alternates] TEXT"),
              std::string::npos);
}

}  // namespace
}  // namespace orvantis::app
