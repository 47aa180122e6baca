#include "core/utilities/finder_cut_coordinator.h"

#include <algorithm>
#include <utility>

#include "core/log/app_logger.h"

namespace orvantis {
namespace {

namespace key_flags = platform::key_flags;
constexpr std::uint64_t kCommandOption = key_flags::kCommand | key_flags::kOption;

}  // namespace

FinderCutCoordinator::FinderCutCoordinator(const AppSettings& settings, const platform::Applications& applications,
                                           const platform::Pasteboard& pasteboard, platform::KeyOutput& keys,
                                           platform::MainLoop& loop, const LogCategory& log,
                                           std::set<std::string> fileManagers, std::function<bool()> isEditingText)
    : settings_(settings), applications_(applications), pasteboard_(pasteboard), keys_(keys), loop_(loop), log_(log),
      fileManagers_(std::move(fileManagers)), isEditingText_(std::move(isEditingText)) {}

FinderCutCoordinator::Decision FinderCutCoordinator::handleKeyDown(std::uint16_t keyCode, std::uint64_t flags) {
    if (!settings_.finderCutEnabled()) return Decision::pass;
    const auto front = applications_.frontmostApplication();
    if (!front || front->bundleID.empty() || !fileManagers_.contains(front->bundleID)) return Decision::pass;
    if ((flags & key_flags::kModifierMask) != key_flags::kCommand) return Decision::pass;
    if (keyCode == kKeyV) {
        if (cutPending_ && pasteboardHasFileURLs() && cutIsFresh()) {
            performMove();
            return Decision::swallow;
        }
        // A plain paste; an old cut is forgotten.
        resetCutState();
        return Decision::pass;
    }
    if (keyCode == kKeyX) {
        if (isEditingText_ && isEditingText_()) return Decision::pass;
        beginCut();
        return Decision::swallow;
    }
    return Decision::pass;
}

void FinderCutCoordinator::beginCut() {
    const std::int64_t count = pasteboard_.changeCount();
    cutPending_ = true;
    preCutChangeCount_ = count;
    cutChangeCount_ = -1;
    keys_.postKey(kKeyC, key_flags::kCommand);
    landing_ = loop_.postAfter(kCopyLandingDelay, [this] {
        if (!cutPending_) return;
        const std::int64_t now = pasteboard_.changeCount();
        if (now > preCutChangeCount_) cutChangeCount_ = now;
    });
    log_.info("finderCut: cut armed (Ctrl+X → Ctrl+C)");
}

bool FinderCutCoordinator::cutIsFresh() const {
    // The file manager's copy raises the count by exactly one.
    const std::int64_t expected = cutChangeCount_ != -1 ? cutChangeCount_ : preCutChangeCount_ + 1;
    return pasteboard_.changeCount() == expected;
}

void FinderCutCoordinator::performMove() {
    resetCutState();
    keys_.postKey(kKeyV, kCommandOption);
    log_.info("finderCut: move (Ctrl+V → Ctrl+Alt+V)");
}

void FinderCutCoordinator::resetCutState() {
    cutPending_ = false;
    preCutChangeCount_ = -1;
    cutChangeCount_ = -1;
}

bool FinderCutCoordinator::pasteboardHasFileURLs() const {
    const auto types = pasteboard_.types();
    return std::find(types.begin(), types.end(), platform::pasteboard_type::kFileURL) != types.end();
}

}  // namespace orvantis
