// Linked into every test program: a test that leaves the process environment other than it
// found it fails, naming the variables it left changed. Tests set variables through ScopedEnv,
// which puts the previous value back; one that forgets would otherwise change what every later
// test of the same process sees.

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace orvantis::testing {
namespace {

/// Every NAME=VALUE of the environment, sorted.
std::vector<std::string> environmentNow() {
    std::vector<std::string> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) entries.emplace_back(*entry);
    std::sort(entries.begin(), entries.end());
    return entries;
}

class EnvironmentGuard final : public ::testing::EmptyTestEventListener {
public:
    void OnTestStart(const ::testing::TestInfo&) override { before_ = environmentNow(); }

    // Runs while the test is still the current one, so the failure is the test's own.
    void OnTestEnd(const ::testing::TestInfo&) override {
        const std::vector<std::string> after = environmentNow();
        if (after == before_) return;
        std::vector<std::string> gone, added;
        std::set_difference(before_.begin(), before_.end(), after.begin(), after.end(), std::back_inserter(gone));
        std::set_difference(after.begin(), after.end(), before_.begin(), before_.end(), std::back_inserter(added));
        std::string report;
        for (const std::string& entry : gone) report += "\n  before: " + entry;
        for (const std::string& entry : added) report += "\n  after:  " + entry;
        ADD_FAILURE() << "the test left the process environment changed (set variables through "
                         "orvantis::testing::ScopedEnv):"
                      << report;
    }

private:
    std::vector<std::string> before_;
};

[[maybe_unused]] const bool kInstalled = [] {
    ::testing::UnitTest::GetInstance()->listeners().Append(new EnvironmentGuard);
    return true;
}();

}  // namespace
}  // namespace orvantis::testing
