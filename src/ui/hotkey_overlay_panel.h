#pragma once

#include <QWidget>

#include "core/shell/hotkey_overlay.h"

class QVBoxLayout;

namespace orvantis::ui {

/// The hotkey overlay's panel: a rounded, translucent box centred on the screen that never takes
/// the focus, with the title, then each section (its title in upper case) and a row per feature:
/// icon, name, and the hotkey in a badge. Features that are off are dimmed. At least 420 wide.
/// Made once and kept; only its content is rebuilt at each display. Main thread only.
class HotkeyOverlayPanel final : public QWidget, public HotkeyOverlayView {
    Q_OBJECT

public:
    static constexpr int kMinimumWidth = 420;

    HotkeyOverlayPanel();

    void show(const std::string& title, const std::vector<HotkeyOverlayEntries::Section>& sections) override;
    void hide() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void rebuildContents(const std::string& title, const std::vector<HotkeyOverlayEntries::Section>& sections);

    QVBoxLayout* contentStack_ = nullptr;
};

}  // namespace orvantis::ui
