#include "ui/VolumeTaper.h"

#include <algorithm>
#include <cmath>

namespace halvo {

namespace {

float clamped(float value) {
    return std::isnan(value) ? 0.0F : std::clamp(value, 0.0F, 1.0F);
}

/// Rounded to four decimals, and up where the truncated percentage would otherwise be one lower
/// than the one that was set.
float cubeRootPosition(float volume) {
    const float steps = std::round(std::cbrt(clamped(volume)) * 10000.0F);
    const float position = steps / 10000.0F;
    return position * 100.0F < steps / 100.0F ? std::nextafter(position, 1.0F) : position;
}

float cubedVolume(float position) {
    const float way = clamped(position);
    return way * way * way;
}

} // namespace

const VolumeTaper VolumeTaper::identity = {clamped, clamped};
const VolumeTaper VolumeTaper::cubeRoot = {cubeRootPosition, cubedVolume};

} // namespace halvo
