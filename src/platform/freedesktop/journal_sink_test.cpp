#include "platform/freedesktop/journal_sink.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

namespace fs = std::filesystem;

class JournalSinkTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::path(::testing::TempDir()) / "orvantis-journal-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
    }
    void TearDown() override {
        if (socket_ >= 0) close(socket_);
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

    /// A datagram socket listening at `path`, as journald's is.
    void listenAt(const fs::path& path) {
        socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ASSERT_GE(socket_, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        ASSERT_LT(path.string().size(), sizeof address.sun_path);
        std::strcpy(address.sun_path, path.c_str());
        ASSERT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    fs::path root_;
    int socket_ = -1;
};

TEST_F(JournalSinkTest, NoSocketMeansNoSink) {
    EXPECT_EQ(makeJournalSinkIfAvailable(root_ / "absent" / "socket"), nullptr);
}

TEST_F(JournalSinkTest, AFileThatIsNotASocketMeansNoSink) {
    std::ofstream(root_ / "socket") << "not a socket";
    EXPECT_EQ(makeJournalSinkIfAvailable(root_ / "socket"), nullptr);
}

TEST_F(JournalSinkTest, AListeningSocketGivesASink) {
    listenAt(root_ / "socket");
    EXPECT_NE(makeJournalSinkIfAvailable(root_ / "socket"), nullptr);
}

TEST_F(JournalSinkTest, EntriesCarryPriorityCategoryAndIdentifier) {
    using Type = SystemLogSink::Type;
    EXPECT_EQ(JournalSink::fields(Type::Debug, "App", "tap created"),
              (std::vector<std::string>{"MESSAGE=tap created", "PRIORITY=7", "ORVANTIS_CATEGORY=App",
                                        "SYSLOG_IDENTIFIER=orvantis"}));
    EXPECT_EQ(JournalSink::fields(Type::Info, "iCloud", "pushed")[1], "PRIORITY=6");
    EXPECT_EQ(JournalSink::fields(Type::Error, "Clipboard", "lost")[1], "PRIORITY=3");
    EXPECT_EQ(JournalSink::fields(Type::Error, "App", "two\nlines %s")[0], "MESSAGE=two\nlines %s");
}

TEST_F(JournalSinkTest, LoggingWithoutAJournalDoesNotFail) {
    JournalSink sink;
    sink.log(SystemLogSink::Type::Info, "App", "nobody may be listening");
}

}  // namespace
}  // namespace orvantis::freedesktop
