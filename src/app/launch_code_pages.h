#pragma once

#include <chrono>
#include <cstddef>

namespace orvantis::app {

/// How long after launch the launch's code pages and freed heap go back: by then the tray has
/// docked and drawn.
inline constexpr std::chrono::seconds kLaunchCodeRelease{2};

/// Gives back the pages of the program's own code and read-only data (constants, symbols,
/// unwinding tables) that are mapped in its memory. Launch runs a good part of the program once,
/// and the kernel maps file pages in runs of up to 64 KiB around every page touched
/// (fault-around), so after launch most of the program's code stays in its resident memory
/// although an idle program runs little of it. The mappings are dropped (MADV_DONTNEED on the
/// executable's read-only segments, whose pages are never written): the pages stay in the page
/// cache, and what runs later maps its pages again on first use, a minor fault each. Writable
/// data is never touched. Skipped while a debugger is attached, as its breakpoints live in
/// private copies of code pages, and for an executable with text relocations. Answers the bytes
/// covered, 0 when skipped or on failure. Any thread.
std::size_t releaseOwnCodePages();

/// Gives the free pages inside the main heap back to the system (malloc_trim): launch frees
/// much of what it allocated, and the allocator keeps freed pages in the middle of the heap
/// mapped until asked. Answers whether any memory went back. Any thread.
bool trimHeap();

}  // namespace orvantis::app
