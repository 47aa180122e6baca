#include "app/feedback_assembly.h"

#include <filesystem>
#include <system_error>


#include "build_info.h"
#include "core/log/app_logger.h"
#include "core/outreach/feedback_composer.h"
#include "core/settings/app_settings.h"
#include "core/strings/settings_strings.h"
#include "platform/permissions.h"
#include "ui/feedback_window_controller.h"

namespace orvantis::app {

FeedbackAssembly::FeedbackAssembly(AppServices& services) : services_(services) {
    if (services_.desktop.mailComposer == nullptr) return;
    std::error_code error;
    std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
    if (error) temporary = "/tmp";
    FeedbackEnvironment environment;
    environment.appVersion = build::kVersion;
    environment.appBuild = build::kBuild;
    environment.systemVersion = services_.desktop.systemVersion;
    environment.accessibilityGranted = [permissions = services_.desktop.permissions] {
        return permissions != nullptr && permissions->hasAccessibility();
    };
    environment.syncFolderAvailable = [this] { return syncFolderAvailable_ && syncFolderAvailable_(); };
    environment.interfaceLanguage = [&settings = services_.settings] {
        return std::string(settings.settingsLanguage() == SettingsLanguage::ru ? "ru" : "en");
    };
    environment.recentLogs = [&logger = services_.logger](int days) { return logger.recentLogs(days); };
    environment.logsDirectory = services_.logger.logsDirectory();
    environment.temporaryDirectory = temporary;
    composer_ = std::make_unique<FeedbackComposer>(*services_.desktop.mailComposer, services_.loop,
                                                   services_.clock, std::move(environment),
                                                   services_.logger.log().app);
}

FeedbackAssembly::~FeedbackAssembly() = default;

void FeedbackAssembly::openFeedback() {
    if (!window_) {
        auto send = [this](std::string subject, std::string body, bool attachLogs, std::function<void(bool)> done) {
            if (!composer_) {
                services_.logger.log().app.warning("feedback: this desktop has no mail composer");
                done(false);
                return;
            }
            composer_->send(std::move(subject), std::move(body), attachLogs,
                            [done = std::move(done)](FeedbackComposer::SendResult result) {
                                done(result == FeedbackComposer::SendResult::success);
                            });
        };
        window_ = std::make_unique<ui::FeedbackWindowController>(
            SettingsStrings::make(services_.settings.settingsLanguage()), std::move(send), [this] {
                // The window is still inside its own close event: it goes once that is over, by
                // itself, so that neither a window opened meanwhile nor the end of this object
                // is in its way.
                window_.release()->deleteLater();
            });
        services_.logger.log().app.info("feedback: window opened");
    }
    window_->showAndActivate();
}

}  // namespace orvantis::app
