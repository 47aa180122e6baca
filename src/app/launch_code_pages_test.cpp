#include "app/launch_code_pages.h"

#include <cctype>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <unistd.h>

namespace orvantis::app {
namespace {

/// A line of /proc/self/smaps that starts a mapping ("start-end perms …").
bool isMappingLine(const std::string& line) {
    const std::size_t space = line.find(' ');
    if (space == std::string::npos || line.find('-') > space) return false;
    for (std::size_t i = 0; i < space; ++i)
        if (!std::isxdigit(static_cast<unsigned char>(line[i])) && line[i] != '-') return false;
    return true;
}

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
        if (isMappingLine(line)) {
            std::istringstream fields(line);
            std::string range, perms, offset, device, inode, path;
            fields >> range >> perms >> offset >> device >> inode >> path;
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

/// Kilobytes of the main heap that are resident.
long heapResidentKb() {
    std::ifstream smaps("/proc/self/smaps");
    std::string line;
    bool inHeap = false;
    long total = 0;
    while (std::getline(smaps, line)) {
        if (isMappingLine(line)) inHeap = line.size() >= 7 && line.compare(line.size() - 7, 7, " [heap]") == 0;
        else if (inHeap && line.rfind("Rss:", 0) == 0) total += std::stol(line.substr(4));
    }
    return total;
}

// Memory freed in the middle of the heap (here 4 MiB in blocks below the allocator's mmap
// threshold, with a block still held above them) stays resident until the heap is trimmed.
TEST(LaunchCodePagesTest, TrimmingTheHeapGivesBackWhatWasFreedInItsMiddle) {
    constexpr std::size_t kBlock = 64 * 1024;
    std::vector<std::unique_ptr<char[]>> blocks;
    for (int i = 0; i < 64; ++i) {
        blocks.push_back(std::make_unique<char[]>(kBlock));
        for (std::size_t at = 0; at < kBlock; at += 4096) blocks.back()[at] = 1;
    }
    auto above = std::make_unique<char[]>(kBlock);
    above[0] = 1;
    blocks.clear();
    const long before = heapResidentKb();
    EXPECT_TRUE(trimHeap());
    const long after = heapResidentKb();
    EXPECT_LT(after, before - 2048) << "before " << before << " KiB, after " << after << " KiB";
}

}  // namespace
}  // namespace orvantis::app
