#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QRect>

#include "core/shell/toast.h"
#include "platform/main_loop.h"

class QLabel;
class QWidget;

namespace orvantis::ui {

class ToastWindow;

/// The passing notice near the top of the screen: 320 wide, 44 high with a title only and 56
/// with a second line, centred, its top 24 below the top of the screen's available area. It
/// never takes the focus or the keyboard and lets clicks through. One panel serves every
/// notice: a new one replaces the one on screen, with its own full duration. Without a screen
/// it keeps its last frame and still shows. Made once by the composition root; timers come
/// from the main loop, which must outlive it. Main thread only.
class ToastPanel final : public Toast {
public:
    static constexpr int kWidth = 320;
    static constexpr int kHeight = 44;
    static constexpr int kHeightWithSubtitle = 56;
    static constexpr int kTopMargin = 24;

    /// The available area of the main screen, or nullopt when there is no screen.
    using ScreenArea = std::function<std::optional<QRect>()>;

    /// `screenArea` defaults to the primary screen's available geometry.
    explicit ToastPanel(platform::MainLoop& loop, ScreenArea screenArea = {});
    ~ToastPanel() override;
    ToastPanel(const ToastPanel&) = delete;
    ToastPanel& operator=(const ToastPanel&) = delete;

    void show(const ToastContent& content) override;

    bool isVisible() const;
    /// The panel window, for tests and screenshots.
    QWidget& window();
    QLabel& titleLabel();
    QLabel& subtitleLabel();

private:
    platform::MainLoop& loop_;
    ScreenArea screenArea_;
    std::unique_ptr<ToastWindow> window_;
    platform::TimerHandle dismiss_;
};

}  // namespace orvantis::ui
