#pragma once

#include "base/Color.h"

#include <optional>
#include <vector>

namespace halvo {

/// What the item in the menu bar or tray shows, in points from its top left corner.
struct StatusPicture {
    enum class Kind { nothing, idle, envelope };

    /// A vertical stroke with round ends.
    struct Bar {
        double x = 0;
        double top = 0;
        double bottom = 0;

        bool operator==(const Bar&) const = default;
    };

    Kind kind = Kind::nothing;
    // Of an envelope alone:
    std::vector<Bar> bars = {};
    double lineWidth = 0;
    /// A colour, or nothing inside for the system's accent; absent: the colour of labels.
    std::optional<std::optional<Color>> color = std::nullopt;

    bool operator==(const StatusPicture&) const = default;
};

} // namespace halvo
