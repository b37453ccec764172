#include "driver/macos/VolumeScale.h"

#include <algorithm>
#include <cmath>

namespace halvo::driver {

float VolumeScale::clampedScalar(float scalar) {
    return scalar > 0.0F ? std::min(scalar, 1.0F) : 0.0F;
}

float VolumeScale::decibels(float scalar) {
    const float position = clampedScalar(scalar);
    return position > 0.0F ? std::max(20.0F * std::log10(position), kLowest) : kLowest;
}

float VolumeScale::scalar(float decibels) {
    // By design the lowest is silence, not its own small amplitude.
    if (!(decibels > kLowest)) return 0.0F;
    return std::pow(10.0F, std::min(decibels, kHighest) / 20.0F);
}

} // namespace halvo::driver
