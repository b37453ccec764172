#include "audio/SampleMath.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace halvo {

namespace {

using Vector = float __attribute__((vector_size(16)));
using Bits = std::int32_t __attribute__((vector_size(16)));

/// Independent sums or maxima, kept side by side in vectors: one alone would wait for itself.
constexpr std::int64_t kLanes = 16;
constexpr std::int64_t kVectors = 4;

Vector vectorAt(const float* samples) noexcept HALVO_REALTIME {
    Vector result;
    std::memcpy(&result, samples, sizeof result);
    return result;
}

/// The sum of what `term` makes of each value; it takes single values and vectors of them.
template <typename Term>
float sumOf(const float* values, std::int64_t count, Term term) noexcept HALVO_REALTIME {
    Vector sums[kVectors]{};
    std::int64_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        for (std::int64_t v = 0; v < kVectors; ++v)
            sums[v] += term(vectorAt(values + i + 4 * v));
    }
    float result = 0;
    for (; i < count; ++i)
        result += term(values[i]);
    for (const auto& vector : sums) {
        for (int lane = 0; lane < 4; ++lane)
            result += vector[lane];
    }
    return result;
}

} // namespace

void scaleSamples(float* samples, std::int64_t count, float gain) noexcept HALVO_REALTIME {
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] *= gain;
}

void softClip(float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    // To look is cheaper than to divide, and most blocks stay within bounds.
    if (maximumMagnitude(samples, count) <= 1.0F) return;
    for (std::int64_t i = 0; i < count; ++i) {
        const float x = samples[i];
        const float magnitude = std::fabs(x);
        const float bent = 1.0F - 1.0F / (magnitude + 1.0F);
        samples[i] = magnitude > 1.0F ? std::copysign(bent, x) : x;
    }
}

float maximumMagnitude(const float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    Vector largest[kVectors]{};
    std::int64_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        for (std::int64_t v = 0; v < kVectors; ++v) {
            const auto withoutSign =
                reinterpret_cast<Bits>(vectorAt(samples + i + 4 * v)) & INT32_MAX;
            const auto magnitude = reinterpret_cast<Vector>(withoutSign);
            largest[v] = magnitude > largest[v] ? magnitude : largest[v];
        }
    }
    float result = 0;
    for (; i < count; ++i)
        result = std::max(result, std::fabs(samples[i]));
    for (const auto& vector : largest) {
        for (int lane = 0; lane < 4; ++lane)
            result = std::max(result, vector[lane]);
    }
    return result;
}

float sum(const float* values, std::int64_t count) noexcept HALVO_REALTIME {
    return sumOf(values, count, [](auto x) { return x; });
}

float rootMeanSquare(const float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    if (count <= 0) return 0;
    const float squares = sumOf(samples, count, [](auto x) { return x * x; });
    return std::sqrt(squares / static_cast<float>(count));
}

} // namespace halvo
