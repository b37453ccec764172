#pragma once

#include "base/EQPreset.h"

#include <vector>

namespace halvo {

/// The 23 curves that Halvo comes with, in their order, each time with new ids.
std::vector<EQPreset> defaultPresets();

} // namespace halvo
