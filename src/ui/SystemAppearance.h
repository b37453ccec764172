#pragma once

#include "base/Color.h"

#include <optional>

namespace halvo {

/// The desktop's appearance settings.
struct SystemAppearance {
    bool dark = false;
    bool hasPanelMaterial = false; ///< the desktop draws the panel's background
    std::optional<Color> accent;   ///< nothing: no accent; Halvo uses its own blue
};

} // namespace halvo
