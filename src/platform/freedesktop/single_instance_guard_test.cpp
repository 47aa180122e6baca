#include "platform/freedesktop/single_instance_guard.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "testing/test_support.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

using orvantis::testing::ScopedEnv;

class SingleInstanceLockFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("orvantis-instance-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
        options_.useSessionBus = false;
        options_.lockFile = dir_ / "orvantis.lock";
    }
    void TearDown() override {
        std::filesystem::permissions(dir_, std::filesystem::perms::owner_all);
        std::filesystem::remove_all(dir_);
    }

    std::filesystem::path dir_;
    SingleInstanceOptions options_;
};

TEST_F(SingleInstanceLockFileTest, FirstInstanceHoldsTheLock) {
    auto guard = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(guard, nullptr);
    EXPECT_EQ(guard->mechanism(), SingleInstanceGuard::Mechanism::LockFile);
    EXPECT_EQ(guard->busDescriptor(), -1);
    EXPECT_FALSE(guard->processBus());
}

TEST_F(SingleInstanceLockFileTest, SecondInstanceIsRefusedWhileTheFirstRuns) {
    auto first = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(SingleInstanceGuard::acquire(options_), nullptr);
}

TEST_F(SingleInstanceLockFileTest, LockIsFreeAgainAfterTheFirstEnds) {
    auto first = SingleInstanceGuard::acquire(options_);
    first.reset();
    auto second = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->mechanism(), SingleInstanceGuard::Mechanism::LockFile);
}

TEST_F(SingleInstanceLockFileTest, LockFileNamesTheHolder) {
    auto guard = SingleInstanceGuard::acquire(options_);
    std::ifstream file(*options_.lockFile);
    std::string pid;
    file >> pid;
    EXPECT_EQ(pid, std::to_string(::getpid()));
}

TEST_F(SingleInstanceLockFileTest, UnusableLockFileStillLetsTheProgramRun) {
    options_.lockFile = dir_ / "missing-folder" / "orvantis.lock";
    auto guard = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(guard, nullptr);
    EXPECT_EQ(guard->mechanism(), SingleInstanceGuard::Mechanism::None);
}

TEST_F(SingleInstanceLockFileTest, SymlinkedLockFileIsNotFollowed) {
    const auto target = dir_ / "elsewhere";
    std::ofstream(target) << "keep me\n";
    std::filesystem::create_symlink(target, *options_.lockFile);
    auto guard = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(guard, nullptr);
    EXPECT_EQ(guard->mechanism(), SingleInstanceGuard::Mechanism::None);
    std::ifstream file(target);
    std::string content;
    std::getline(file, content);
    EXPECT_EQ(content, "keep me");
}

TEST_F(SingleInstanceLockFileTest, NoSessionBusFallsBackToTheLockFile) {
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus");
    options_.useSessionBus = true;
    auto guard = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(guard, nullptr);
    EXPECT_EQ(guard->mechanism(), SingleInstanceGuard::Mechanism::LockFile);
}

TEST(SingleInstanceGuardTest, DefaultLockFileIsInTheRuntimeDirectory) {
    ScopedEnv runtime("XDG_RUNTIME_DIR", "/run/user/4242");
    EXPECT_EQ(SingleInstanceGuard::defaultLockFile(), "/run/user/4242/orvantis.lock");
}

TEST(SingleInstanceGuardTest, DefaultLockFileWithoutRuntimeDirectoryIsPerUserInTmp) {
    ScopedEnv runtime("XDG_RUNTIME_DIR", nullptr);
    EXPECT_EQ(SingleInstanceGuard::defaultLockFile(),
              std::filesystem::path("/tmp/orvantis-" + std::to_string(::getuid()) + ".lock"));
}

// Needs a session bus; the end-to-end suite runs these inside its virtual desktop.
class SingleInstanceBusTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        if (address == nullptr || *address == '\0') GTEST_SKIP() << "no session bus";
        options_.busName = "org.orvantis.OrvantisTest" + std::to_string(::getpid());
        options_.lockFile = std::filesystem::temp_directory_path() /
                            ("orvantis-instance-bus-" + std::to_string(::getpid()) + ".lock");
    }
    void TearDown() override {
        if (options_.lockFile) std::filesystem::remove(*options_.lockFile);
    }

    SingleInstanceOptions options_;
};

TEST_F(SingleInstanceBusTest, OwnsTheNameAndRefusesASecondOwner) {
    auto first = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(first, nullptr);
    if (first->mechanism() != SingleInstanceGuard::Mechanism::SessionBus) GTEST_SKIP() << "session bus unusable";
    EXPECT_GE(first->busDescriptor(), 0);
    EXPECT_TRUE(first->processBus());
    EXPECT_EQ(SingleInstanceGuard::acquire(options_), nullptr);
    first.reset();
    auto second = SingleInstanceGuard::acquire(options_);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->mechanism(), SingleInstanceGuard::Mechanism::SessionBus);
}

}  // namespace
}  // namespace orvantis::freedesktop
