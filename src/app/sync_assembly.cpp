#include "app/sync_assembly.h"

#include <QGuiApplication>
#include <QObject>

#include "app/app_services.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/log/app_logger.h"
#include "core/sync/sync_manager.h"

namespace orvantis::app {

SyncAssembly::SyncAssembly(AppServices& services, ClipboardMonitor* clipboard, const std::filesystem::path& home)
    : manager_(std::make_unique<SyncManager>(services.settings, clipboard ? &clipboard->history() : nullptr, files_,
                                             services.loop, services.clock, services.logger.log().icloud,
                                             home)),
      activation_(std::make_unique<QObject>()) {
    if (clipboard) historyChanges_ = clipboard->onHistoryChanged([this] { manager_->clipboardDidChange(); });
    // The program is active when one of its windows (settings, popups, onboarding) has the focus.
    if (auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        QObject::connect(app, &QGuiApplication::applicationStateChanged, activation_.get(),
                         [this](Qt::ApplicationState state) {
                             if (state == Qt::ApplicationActive) manager_->appBecameActive();
                         });
    }
}

SyncAssembly::~SyncAssembly() = default;

void SyncAssembly::start() { manager_->start(); }

}  // namespace orvantis::app
