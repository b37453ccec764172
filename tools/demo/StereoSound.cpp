#include "StereoSound.h"

#include <algorithm>
#include <cmath>

namespace halvo::demo {

float StereoSound::peak() const {
    float largest = 0;
    for (float sample : samples)
        largest = std::max(largest, std::abs(sample));
    return largest;
}

StereoSound StereoSound::stretch(std::ptrdiff_t first, std::size_t length) const {
    StereoSound result(length);
    const auto available = static_cast<std::ptrdiff_t>(frameCount());
    const std::ptrdiff_t from = std::clamp<std::ptrdiff_t>(first, 0, available);
    const std::ptrdiff_t to =
        std::clamp<std::ptrdiff_t>(first + static_cast<std::ptrdiff_t>(length), from, available);
    std::copy(samples.begin() + from * 2, samples.begin() + to * 2,
              result.samples.begin() + (from == to ? 0 : (from - first) * 2));
    return result;
}

} // namespace halvo::demo
