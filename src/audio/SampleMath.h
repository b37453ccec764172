#pragma once

#include "base/Realtime.h"

#include <cstdint>

namespace halvo {

/// Operations on `count` samples, in place where they change them. Render thread.

/// Multiplies every sample by `gain`.
void scaleSamples(float* samples, std::int64_t count, float gain) noexcept HALVO_REALTIME;

/// Bends samples beyond full scale back: x > 1 becomes 1 − 1/(x + 1), and mirrored below −1.
/// Samples within [−1, 1] stay. By design the curve jumps at the bounds: just above 1 gives just
/// above 0.5, and the result approaches 1 only as x grows.
void softClip(float* samples, std::int64_t count) noexcept HALVO_REALTIME;

/// The largest magnitude; 0 of nothing.
float maximumMagnitude(const float* samples, std::int64_t count) noexcept HALVO_REALTIME;

/// The sum, in no particular order; 0 of nothing.
float sum(const float* values, std::int64_t count) noexcept HALVO_REALTIME;

/// The root of the mean of the squares; 0 of nothing.
float rootMeanSquare(const float* samples, std::int64_t count) noexcept HALVO_REALTIME;

} // namespace halvo
