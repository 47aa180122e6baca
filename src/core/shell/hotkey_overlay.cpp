#include "core/shell/hotkey_overlay.h"

#include <utility>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "core/settings/hotkey_names.h"
#include "core/strings/settings_strings.h"

namespace orvantis {

namespace HotkeyOverlayEntries {

std::vector<Section> gather(const AppSettings& s, SettingsLanguage language) {
    const SettingsStrings t = SettingsStrings::make(language);
    const auto entry = [](const char* icon, std::string_view name, const HotkeyDescriptor& hotkey, bool enabled) {
        return Entry{icon, std::string(name), linuxHotkeyName(hotkey), enabled};
    };
    Section main{std::nullopt,
                 {
                     entry("input-keyboard", t.layoutSwitcher, s.hotkey(), s.layoutSwitchEnabled()),
                     entry("preferences-desktop-locale", t.overlayTranslatorVariants, s.translationHotkey(),
                           s.translationEnabled()),
                     entry("preferences-desktop-locale", t.overlayTranslatorDirect, s.directTranslationHotkey(),
                           s.translationEnabled()),
                     entry("edit-paste", t.clipboardHistory, s.clipboardHistoryHotkey(), s.clipboardHistoryEnabled()),
                     entry("alarm-symbolic", t.pomodoroTimer, s.pomodoroHotkey(), s.pomodoroEnabled()),
                     entry("dialog-password", t.passwordSection, s.passwordHotkey(), s.passwordEnabled()),
                     entry("insert-text", t.snippetsSection, s.snippetExpanderHotkey(), s.snippetExpanderEnabled()),
                     entry("tools-check-spelling", t.textTransformerSection, s.textTransformerHotkey(),
                           s.textTransformerEnabled()),
                     entry("help-about", t.hintsSection, s.hotkeyOverlayHotkey(), true),
                 }};
    Section bonus{std::string(t.bonusSection),
                  {
                      entry("system-lock-screen", t.keyboardLockSection, s.keyboardLockHotkey(),
                            s.keyboardLockEnabled()),
                      entry("view-hidden", t.menuBarHiderCardTitle, s.menuBarHiderHotkey(), s.menuBarHiderEnabled()),
                      entry("weather-clear-night", t.caffeineCardTitle, s.caffeineHotkey(), s.caffeineEnabled()),
                  }};
    return {std::move(main), std::move(bonus)};
}

}  // namespace HotkeyOverlayEntries

HotkeyOverlayCoordinator::HotkeyOverlayCoordinator(GlobalEventMonitorProtocol* monitor, const AppSettings& settings,
                                                   platform::MainLoop& loop,
                                                   std::function<std::unique_ptr<HotkeyOverlayView>()> makeView)
    : settings_(settings), loop_(loop), makeView_(std::move(makeView)) {
    if (monitor != nullptr) {
        pressed_ = monitor->onHotkeyOverlayPressed([this] { pressed(); });
        released_ = monitor->onHotkeyOverlayReleased([this] { released(); });
    }
}

void HotkeyOverlayCoordinator::pressed() {
    if (visible_) return;
    if (!view_ && makeView_) view_ = makeView_();
    if (!view_) return;
    // The language and the rows are read now, so the panel is never out of date.
    const SettingsLanguage language = settings_.settingsLanguage();
    view_->show(std::string(SettingsStrings::make(language).hotkeyOverlayTitle),
                HotkeyOverlayEntries::gather(settings_, language));
    visible_ = true;
}

void HotkeyOverlayCoordinator::released() {
    commandTimer_.cancel();
    if (!visible_) return;
    if (view_) view_->hide();
    visible_ = false;
}

void HotkeyOverlayCoordinator::showForCommand() {
    pressed();
    commandTimer_ = loop_.postAfter(kCommandDisplayTime, [this] { released(); });
}

}  // namespace orvantis
