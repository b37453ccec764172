#pragma once

#include <functional>

namespace halvo {

/// A rectangle on the screen in points, y growing upwards.
struct ScreenRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const ScreenRect&) const = default;
};

/// The program's item in the menu bar or tray. Main thread only.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    /// Shows the item, `length` points wide; `action` runs when it is clicked.
    virtual void show(double length, std::function<void()> action) = 0;
    /// Where the item is on the screen.
    virtual ScreenRect frame() const = 0;
    /// Asks for the item's picture to be drawn again.
    virtual void setNeedsDisplay() = 0;
};

} // namespace halvo
