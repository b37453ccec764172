#pragma once

#include "base/UUID.h"

#include <string>
#include <vector>

namespace halvo {

/// A named curve.
struct EQPreset {
    UUID id = UUID::random();
    std::string name;
    float preamp = 0;         ///< dB, ahead of the bands
    std::vector<float> bands; ///< dB, lowest band first
    bool isFactory = false;

    bool operator==(const EQPreset&) const = default;
};

} // namespace halvo
