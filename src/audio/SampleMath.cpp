#include "audio/SampleMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace halvo {

namespace {

/// Independent sums or maxima, so that the compiler may keep them side by side in vectors.
constexpr std::int64_t kLanes = 16;

} // namespace

void scaleSamples(float* samples, std::int64_t count, float gain) noexcept HALVO_REALTIME {
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] *= gain;
}

void softClip(float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    for (std::int64_t i = 0; i < count; ++i) {
        const float x = samples[i];
        const float above = 1.0F - 1.0F / (x + 1.0F);
        const float below = 1.0F / (1.0F - x) - 1.0F;
        samples[i] = x > 1.0F ? above : (x < -1.0F ? below : x);
    }
}

float maximumMagnitude(const float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    std::array<float, kLanes> largest{};
    std::int64_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        for (std::int64_t lane = 0; lane < kLanes; ++lane) {
            auto& lead = largest[static_cast<std::size_t>(lane)];
            const float magnitude = std::fabs(samples[i + lane]);
            lead = magnitude > lead ? magnitude : lead;
        }
    }
    float result = 0;
    for (; i < count; ++i)
        result = std::max(result, std::fabs(samples[i]));
    for (const float lead : largest)
        result = std::max(result, lead);
    return result;
}

float rootMeanSquare(const float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    if (count <= 0) return 0;
    std::array<float, kLanes> sums{};
    std::int64_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        for (std::int64_t lane = 0; lane < kLanes; ++lane) {
            sums[static_cast<std::size_t>(lane)] += samples[i + lane] * samples[i + lane];
        }
    }
    float sum = 0;
    for (; i < count; ++i)
        sum += samples[i] * samples[i];
    for (const float part : sums)
        sum += part;
    return std::sqrt(sum / static_cast<float>(count));
}

} // namespace halvo
