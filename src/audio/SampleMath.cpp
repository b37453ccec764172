#include "audio/SampleMath.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

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
float sumOf(std::span<const float> span, Term term) noexcept HALVO_REALTIME {
    const float* const values = span.data();
    const auto count = static_cast<std::int64_t>(span.size());
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

void scaleSamples(std::span<float> samples, float gain) noexcept HALVO_REALTIME {
    for (float& sample : samples)
        sample *= gain;
}

void softClip(std::span<float> samples) noexcept HALVO_REALTIME {
    // To look is cheaper than to divide, and most blocks stay within bounds.
    if (maximumMagnitude(samples) <= 1.0F) return;
    for (float& sample : samples) {
        const float x = sample;
        const float magnitude = std::fabs(x);
        const float bent = 1.0F - 1.0F / (magnitude + 1.0F);
        sample = magnitude > 1.0F ? std::copysign(bent, x) : x;
    }
}

float maximumMagnitude(std::span<const float> span) noexcept HALVO_REALTIME {
    const float* const samples = span.data();
    const auto count = static_cast<std::int64_t>(span.size());
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

float sum(std::span<const float> values) noexcept HALVO_REALTIME {
    return sumOf(values, [](auto x) { return x; });
}

float rootMeanSquare(std::span<const float> samples) noexcept HALVO_REALTIME {
    if (samples.empty()) return 0;
    const float squares = sumOf(samples, [](auto x) { return x * x; });
    return std::sqrt(squares / static_cast<float>(std::ssize(samples)));
}

} // namespace halvo
