#pragma once

#include "base/Realtime.h"

#include <span>

namespace halvo {

/// Operations on samples, in place where they change them. Render thread.

/// Multiplies every sample by `gain`.
void scaleSamples(std::span<float> samples, float gain) noexcept HALVO_REALTIME;

/// Bends samples beyond full scale back: x > 1 becomes 1 − 1/(x + 1), and mirrored below −1.
/// Samples within [−1, 1] stay. By design the curve jumps at the bounds: just above 1 gives just
/// above 0.5, and the result approaches 1 only as x grows.
void softClip(std::span<float> samples) noexcept HALVO_REALTIME;

/// The largest magnitude; 0 of nothing.
float maximumMagnitude(std::span<const float> samples) noexcept HALVO_REALTIME;

/// The sum, in no particular order; 0 of nothing.
float sum(std::span<const float> values) noexcept HALVO_REALTIME;

/// The root of the mean of the squares; 0 of nothing.
float rootMeanSquare(std::span<const float> samples) noexcept HALVO_REALTIME;

} // namespace halvo
