#pragma once

#include "settings/Color.h"

#include <optional>

namespace halvo {

/// What the desktop says about the look of programs.
struct SystemAppearance {
    bool dark = false;
    std::optional<Color> accent; ///< nothing: the desktop has none, Halvo's blue is used
};

} // namespace halvo
