#include "core/text_tools/text_transformer_coordinator.h"

#include <utility>

namespace orvantis {

TextTransformerCoordinator::TextTransformerCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                                       platform::MainLoop& loop, WindowFactory makeWindow)
    : settings_(settings), loop_(loop), makeWindow_(std::move(makeWindow)),
      hotkey_(monitor.onTextTransformerHotkey([this] { handleHotkey(); })) {}

TextTransformerCoordinator::~TextTransformerCoordinator() = default;

void TextTransformerCoordinator::handleHotkey() {
    if (!settings_.textTransformerEnabled()) return;
    if (!window_) {
        std::weak_ptr<bool> alive = alive_;
        window_ = makeWindow_([this, alive] {
            // The window is closing from within its own event: it goes on the next turn.
            loop_.post([this, alive] {
                if (alive.lock()) window_.reset();
            });
        });
        if (!window_) return;
    }
    window_->show();
}

}  // namespace orvantis
