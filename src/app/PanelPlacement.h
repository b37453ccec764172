#pragma once

#include "platform/ScreenRect.h"

namespace halvo {

/// Where a panel of `size` hangs: centred 4 points below the item, above an item in the lower half
/// of the screen, and inside the work area.
ScreenRect hangingPanel(const ScreenRect& item, ScreenSize size, const ScreenArea& screen);

/// The panel with a new size: the edge at its item stays, which is the top one but for an item in
/// the lower half of the screen.
ScreenRect resizedPanel(const ScreenRect& panel, ScreenSize size, const ScreenRect& item,
                        const ScreenArea& screen);

} // namespace halvo
