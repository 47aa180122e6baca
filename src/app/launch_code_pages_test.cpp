#include "app/launch_code_pages.h"

#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <unistd.h>

namespace orvantis::app {
namespace {

/// Kilobytes of this test program's own code and read-only data that are mapped in its memory
/// (the Rss of its read-only mappings in /proc/self/smaps), and of its writable data.
struct OwnResident {
    long readOnly = 0;
    long writable = 0;
};
OwnResident ownResidentKb() {
    OwnResident resident;
    char self[4096];
    const ssize_t size = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (size <= 0) return resident;
    const std::string exe(self, static_cast<std::size_t>(size));
    std::ifstream smaps("/proc/self/smaps");
    std::string line;
    long* counted = nullptr;
    while (std::getline(smaps, line)) {
        std::istringstream fields(line);
        std::string range, perms, offset, device, inode, path;
        if (line.find('-') != std::string::npos && line.find(':') != std::string::npos &&
            (fields >> range >> perms >> offset >> device >> inode) && range.find('-') != std::string::npos &&
            perms.size() == 4) {
            fields >> path;
            counted = path != exe ? nullptr : perms[1] == 'w' ? &resident.writable : &resident.readOnly;
            continue;
        }
        if (counted != nullptr && line.rfind("Rss:", 0) == 0) *counted += std::stol(line.substr(4));
    }
    return resident;
}

int counter = 0;

// What ran once is no longer held: after the release the program's own code and constants are
// mapped again only where they are used, and its writable data keeps its values.
TEST(LaunchCodePagesTest, TheOwnCodeMappedAtLaunchIsGivenBackAndTheDataStays) {
    counter = 41;
    const OwnResident before = ownResidentKb();
    ASSERT_GT(before.readOnly, 256) << "the test program's code should be mostly mapped by now";
    const std::size_t released = releaseOwnCodePages();
    const OwnResident after = ownResidentKb();
    EXPECT_GT(released, 0u);
    EXPECT_LT(after.readOnly, before.readOnly / 2)
        << "before " << before.readOnly << " KiB, after " << after.readOnly << " KiB";
    EXPECT_EQ(after.writable, before.writable);
    EXPECT_EQ(++counter, 42);
}

}  // namespace
}  // namespace orvantis::app
