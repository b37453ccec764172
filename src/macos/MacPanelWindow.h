#pragma once

#include "qt/QtPanelWindow.h"

#include <memory>

namespace halvo {

/// The popover in an NSPanel: above all windows and on every space, without activating Halvo, with
/// the popover material. Main thread only.
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

    /// Creates the panel around the views once they exist; true when there is one.
    bool makePanel();

    std::unique_ptr<Parts> parts_;
};

} // namespace halvo
