#pragma once

#include "platform/ScreenRect.h"
#include "platform/StatusPicture.h"

#include <functional>
#include <optional>

namespace halvo {

/// The program's item in the menu bar or tray. Main thread only.
class StatusItem {
  public:
    /// Answers the picture for an item of that size.
    using Draw = std::function<StatusPicture(ScreenSize size)>;

    virtual ~StatusItem() = default;

    /// Shows the item, `length` points wide. `draw` is asked when somebody can see the item and it
    /// needs display; `action` runs when it is clicked, and once by itself on a desktop that has no
    /// place for items.
    virtual void show(double length, Draw draw, std::function<void()> action) = 0;
    /// Takes the item away; neither function is called any more.
    virtual void hide() = 0;
    /// Where the item is, as far as the desktop tells; nothing where there is no item.
    virtual std::optional<ScreenRect> frame() const = 0;
    /// Asks for the picture to be drawn again, in a later turn of the main loop.
    virtual void setNeedsDisplay() = 0;
};

} // namespace halvo
