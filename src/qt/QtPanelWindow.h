#pragma once

#include "platform/PanelWindow.h"
#include "ui/PanelContent.h"
#include "ui/SettingsWindow.h"

#include <QElapsedTimer>
#include <QObject>
#include <QQuickWindow>
#include <QVariantAnimation>

#include <functional>
#include <memory>
#include <optional>

namespace halvo {

/// The panel: a frameless Qt window that holds the popover. The views are created shortly after the
/// start, or when the panel is first needed. Main thread only.
class QtPanelWindow : public QObject, public PanelWindow {
    Q_OBJECT

  public:
    struct Desktop {
        MainQueue& mainQueue;
        VolumeTaper volumeTaper;
        std::function<void()> quit;
        /// Reports presses and releases anywhere on the desktop until the result is destroyed;
        /// returns null where the desktop does not report them.
        std::function<std::shared_ptr<void>(std::function<void()> pressed,
                                            std::function<void()> released)>
            watchPresses;
        /// Whether corners can be transparent.
        std::function<bool()> hasCompositor;
    };

    explicit QtPanelWindow(Desktop desktop);
    ~QtPanelWindow() override;

    void setContent(const PopoverServices& services, PanelEvents events) override;
    void removeContent() override;
    ScreenSize fittingSize() override;
    ScreenArea screenAt(ScreenPoint place) const override;
    bool isVisible() const override { return window_ && window_->isVisible(); }
    void orderFront(PanelStyle style) override;
    void orderOut() override;
    ScreenRect frame() const override;
    void setFrame(const ScreenRect& frame, PanelMove move) override;
    Subscription
    monitorOutsidePresses(std::function<void(std::optional<ScreenPoint>)> pressed) override;
    bool isPressUnderWay() const override;

    /// Called each time the panel comes to the front.
    std::function<void()> onShown;
    void setSystemAppearance(const SystemAppearance& appearance);
    /// Opens the window with the four tabs.
    void showSettingsWindow();
    /// The windows, for pictures and tests; null before they are first needed.
    QQuickWindow* window() const { return window_.get(); }
    QQuickWindow* settingsWindow() const;

  protected:
    /// Creates the views and their window, if there are services and it is not done yet.
    void prepare();
    /// Whether a move is to go in steps: not while the content moves by itself, with which the
    /// window keeps up.
    bool isAnimated(PanelMove move) const;
    /// Tells the views whether anybody can see them.
    void setShown(bool shown);

  private:
    void takePress();
    void takeRelease();
    void takeFocusLoss();
    bool isMoving() const { return move_.state() == QVariantAnimation::Running; }
    void place(const QRect& frame);
    void roundCorners();

    Desktop desktop_;
    std::optional<PopoverServices> services_;
    PanelEvents events_;
    SystemAppearance appearance_;
    std::function<void(std::optional<ScreenPoint>)> pressed_;
    std::shared_ptr<void> presses_;
    bool isPressed_ = false;
    QElapsedTimer sinceRelease_;
    PanelStyle style_ = PanelStyle::hanging;
    bool isMasked_ = false;  ///< cut to round corners, which cannot be transparent
    QVariantAnimation move_; ///< from one frame to another
    std::unique_ptr<QQuickWindow> window_;
    std::unique_ptr<PanelContent> content_;
    std::unique_ptr<SettingsWindow> settingsWindow_;
};

} // namespace halvo
