#pragma once

#include "base/EQPreset.h"

#include <vector>

namespace halvo {

/// Halvo's 23 factory presets in their order, with new ids on each call.
std::vector<EQPreset> defaultPresets();

} // namespace halvo
