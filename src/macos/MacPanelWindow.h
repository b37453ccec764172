#pragma once

#include "qt/QtPanelWindow.h"

#include <memory>

namespace halvo {

/// The popover in a panel of the system's: above all else and on every space, without making
/// another program the one in front, on the material of popovers. Main thread only.
class MacPanelWindow final : public QtPanelWindow {
  public:
    MacPanelWindow(MainQueue& queue, std::function<void()> quit);
    ~MacPanelWindow() override;

    void removeContent() override;
    bool isVisible() const override;
    void orderFront(PanelStyle style) override;
    void orderOut() override;
    ScreenRect frame() const override;
    void setFrame(const ScreenRect& frame, PanelMove move) override;

  private:
    struct Parts;

    /// Makes the panel around the views once there are any; whether there is one.
    bool makePanel();

    std::unique_ptr<Parts> parts_;
};

} // namespace halvo
