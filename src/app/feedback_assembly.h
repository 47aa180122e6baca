#pragma once

#include <functional>
#include <memory>

#include "app/app_services.h"

namespace orvantis {
class FeedbackComposer;
}
namespace orvantis::ui {
class FeedbackWindowController;
}

namespace orvantis::app {

/// The feedback window and the composer behind it: the window is made at openFeedback(), one at
/// a time, and handed over to Qt to be deleted when it closes; the composer lives as long as this, so an attachment is
/// still removed after its window has gone. Without a mail composer on this desktop every send
/// fails and the window says so. Main thread only.
class FeedbackAssembly {
public:
    explicit FeedbackAssembly(AppServices& services);
    ~FeedbackAssembly();
    FeedbackAssembly(const FeedbackAssembly&) = delete;
    FeedbackAssembly& operator=(const FeedbackAssembly&) = delete;

    /// Shows the window in the interface language of the moment, or raises the one open.
    void openFeedback();
    /// Tells the diagnostics whether the synced folder is there (the sync feature gives it).
    void setSyncFolderAvailability(std::function<bool()> available) { syncFolderAvailable_ = std::move(available); }

    ui::FeedbackWindowController* window() const { return window_.get(); }

private:
    AppServices services_;
    std::function<bool()> syncFolderAvailable_;
    std::unique_ptr<FeedbackComposer> composer_;
    std::unique_ptr<ui::FeedbackWindowController> window_;
};

}  // namespace orvantis::app
