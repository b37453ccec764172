#pragma once

#include "base/Color.h"

#include <optional>

namespace halvo {

/// What the desktop says about the look of programs.
struct SystemAppearance {
    bool dark = false;
    bool hasPanelMaterial = false; ///< the desktop fills the panel's window; Halvo leaves it clear
    std::optional<Color> accent;   ///< nothing: the desktop has none, Halvo's blue is used
};

} // namespace halvo
