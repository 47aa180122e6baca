#include "app/launch_code_pages.h"

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace orvantis::app {
namespace {

/// The executable's read-only segments (code, constants, symbols, unwinding tables), whole
/// pages only, so that nothing of a neighbouring writable segment is ever touched.
struct ReadOnlyRanges {
    struct Range {
        std::uintptr_t start = 0;
        std::uintptr_t end = 0;
    };
    std::vector<Range> ranges;
    /// Code patched at load time (text relocations) lives in private copies of its pages,
    /// which must stay; a position-independent executable has none.
    bool textRelocations = false;
};

int findReadOnlySegments(dl_phdr_info* info, std::size_t, void* data) {
    // The first object reported is the executable itself.
    auto* found = static_cast<ReadOnlyRanges*>(data);
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type == PT_DYNAMIC) {
            const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(info->dlpi_addr + header.p_vaddr);
            for (; entry->d_tag != DT_NULL; ++entry) {
                if (entry->d_tag == DT_TEXTREL || (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL)))
                    found->textRelocations = true;
            }
        }
        if (header.p_type != PT_LOAD || (header.p_flags & PF_W) != 0) continue;
        const std::uintptr_t begin = info->dlpi_addr + header.p_vaddr;
        const std::uintptr_t end = begin + header.p_memsz;
        const std::uintptr_t first = (begin + page - 1) / page * page;
        const std::uintptr_t last = end / page * page;
        if (last > first) found->ranges.push_back({first, last});
    }
    return 1;
}

bool debuggerAttached() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("TracerPid:", 0) == 0) return std::stol(line.substr(10)) != 0;
    }
    return false;
}

}  // namespace

std::size_t releaseOwnCodePages() {
    if (debuggerAttached()) return 0;
    ReadOnlyRanges found;
    ::dl_iterate_phdr(findReadOnlySegments, &found);
    if (found.textRelocations) return 0;
    std::size_t released = 0;
    for (const auto& range : found.ranges) {
        const std::size_t length = range.end - range.start;
        if (::madvise(reinterpret_cast<void*>(range.start), length, MADV_DONTNEED) == 0) released += length;
    }
    return released;
}

bool trimHeap() { return ::malloc_trim(0) == 1; }

}  // namespace orvantis::app
