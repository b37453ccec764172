#pragma once

namespace halvo {

struct ScreenPoint {
    double x = 0;
    double y = 0;
};

struct ScreenSize {
    double width = 0;
    double height = 0;
};

/// A rectangle on the screen in points, y growing downwards.
struct ScreenRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    double middleX() const { return x + width * 0.5; }
    double middleY() const { return y + height * 0.5; }
    bool contains(ScreenPoint point) const {
        return point.x >= x && point.x < right() && point.y >= y && point.y < bottom();
    }

    bool operator==(const ScreenRect&) const = default;
};

/// A screen, and the part of it outside docks and bars.
struct ScreenArea {
    ScreenRect whole;
    ScreenRect work;
};

} // namespace halvo
