#pragma once

#include "platform/ScreenRect.h"
#include "platform/StatusPicture.h"

#include <functional>
#include <optional>

namespace halvo {

/// The program's item in the menu bar or tray. Main thread only.
class StatusItem {
  public:
    /// Returns the picture for an item of that size.
    using Draw = std::function<StatusPicture(ScreenSize size)>;

    virtual ~StatusItem() = default;

    /// Shows the item, `length` points wide. `draw` is called when the item is visible and needs
    /// display; `action` runs when it is clicked, and once without a click on a desktop that has no
    /// tray.
    virtual void show(double length, Draw draw, std::function<void()> action) = 0;
    /// Removes the item; neither function is called any more.
    virtual void hide() = 0;
    /// Where the item is, as far as the desktop reports it; nothing without an item.
    virtual std::optional<ScreenRect> frame() const = 0;
    /// Requests a redraw in a later iteration of the main loop.
    virtual void setNeedsDisplay() = 0;
};

} // namespace halvo
