#include "app/PanelPlacement.h"

#include <algorithm>

namespace halvo {

namespace {

constexpr double kGap = 4;

bool hangsAbove(const ScreenRect& item, const ScreenArea& screen) {
    return item.middleY() > screen.whole.middleY();
}

/// What does not fit begins at the start of the range.
double clamped(double start, double length, double from, double to) {
    return std::max(std::min(start, to - length), from);
}

ScreenRect insideOf(const ScreenRect& work, const ScreenRect& panel) {
    return {clamped(panel.x, panel.width, work.x, work.right()),
            clamped(panel.y, panel.height, work.y, work.bottom()), panel.width, panel.height};
}

} // namespace

ScreenRect hangingPanel(const ScreenRect& item, ScreenSize size, const ScreenArea& screen) {
    const double x = item.middleX() - size.width * 0.5;
    const double y = hangsAbove(item, screen) ? item.y - kGap - size.height : item.bottom() + kGap;
    return insideOf(screen.work, {x, y, size.width, size.height});
}

ScreenRect resizedPanel(const ScreenRect& panel, ScreenSize size, const ScreenRect& item,
                        const ScreenArea& screen) {
    const double y = hangsAbove(item, screen) ? panel.bottom() - size.height : panel.y;
    return insideOf(screen.work, {panel.x, y, size.width, size.height});
}

} // namespace halvo
