#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "core/settings/app_settings.h"
#include "platform/applications.h"
#include "platform/key_output.h"
#include "platform/main_loop.h"
#include "platform/pasteboard.h"

namespace orvantis {

class LogCategory;

/// Gives a file manager that lacks one a cut for files: Ctrl+X there becomes a copy that is
/// remembered, and the next Ctrl+V becomes the move shortcut (Ctrl+Alt+V), but only while the
/// clipboard still holds what that copy put there. While a file name is being edited the keys
/// pass, so text cutting keeps working. It acts only for the applications it is given: the
/// file managers of this desktop cut and move files natively, so on Linux the list is empty.
///
/// Called synchronously from the event monitor for each Ctrl key press; its answer decides
/// whether the press is swallowed. Borrows its collaborators; main thread only.
class FinderCutCoordinator {
public:
    enum class Decision { pass, swallow };
    static constexpr std::uint16_t kKeyX = 7, kKeyC = 8, kKeyV = 9;
    static constexpr std::chrono::milliseconds kCopyLandingDelay{150};

    /// `fileManagers`: the application ids it acts for. `isEditingText` answers whether the
    /// focused element is a text field or text area.
    FinderCutCoordinator(const AppSettings& settings, const platform::Applications& applications,
                         const platform::Pasteboard& pasteboard, platform::KeyOutput& keys, platform::MainLoop& loop,
                         const LogCategory& log, std::set<std::string> fileManagers,
                         std::function<bool()> isEditingText);

    Decision handleKeyDown(std::uint16_t keyCode, std::uint64_t flags);

    bool cutPending() const { return cutPending_; }
    std::int64_t preCutChangeCount() const { return preCutChangeCount_; }
    std::int64_t cutChangeCount() const { return cutChangeCount_; }

private:
    void beginCut();
    void performMove();
    bool cutIsFresh() const;
    void resetCutState();
    bool pasteboardHasFileURLs() const;

    const AppSettings& settings_;
    const platform::Applications& applications_;
    const platform::Pasteboard& pasteboard_;
    platform::KeyOutput& keys_;
    platform::MainLoop& loop_;
    const LogCategory& log_;
    std::set<std::string> fileManagers_;
    std::function<bool()> isEditingText_;

    bool cutPending_ = false;
    std::int64_t preCutChangeCount_ = -1;
    std::int64_t cutChangeCount_ = -1;
    platform::TimerHandle landing_;
};

}  // namespace orvantis
