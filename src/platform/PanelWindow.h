#pragma once

#include "platform/StatusItem.h"

#include "base/Subscription.h"

#include <functional>

namespace halvo {

enum class PanelMove { immediate, animated };

/// The window that hangs from the status item. Main thread only.
class PanelWindow {
  public:
    virtual ~PanelWindow() = default;

    virtual bool isVisible() const = 0;
    /// Brings the window to the front and gives it the keyboard.
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    virtual ScreenRect frame() const = 0;
    virtual void setFrame(const ScreenRect& frame, PanelMove move) = 0;
    /// Calls `pressed` with the place of every mouse press outside the window.
    virtual Subscription monitorOutsidePresses(std::function<void(double x, double y)> pressed) = 0;
};

} // namespace halvo
