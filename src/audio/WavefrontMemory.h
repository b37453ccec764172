#pragma once

#include "audio/BiquadCoefficients.h"
#include "base/Realtime.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace halvo {

/// What a cascade's sections remember of the frames before, left and right, in the order of one
/// form's lanes: no other form can read it.
struct WavefrontMemory {
    static constexpr std::size_t kLanes = 24; ///< ten sections, filled up to whole vectors
    std::array<float, kLanes> z1{};
    std::array<float, kLanes> z2{};
};

/// The cascade of ten sections, at `coefficients`, on four or eight lanes. Filters `frameCount`
/// frames in place. Render thread.
void wavefrontOfFourLanes(float* frames, std::int64_t frameCount,
                          const BiquadCoefficients* coefficients,
                          WavefrontMemory& memory) noexcept HALVO_REALTIME;
void wavefrontOfEightLanes(float* frames, std::int64_t frameCount,
                           const BiquadCoefficients* coefficients,
                           WavefrontMemory& memory) noexcept HALVO_REALTIME;

} // namespace halvo
