#include "render/SampleCoding.h"

#include <bit>
#include <cmath>

// Plain loops without branches, which the compiler vectorizes.

namespace halvo::render {

namespace {

constexpr float kScale16 = 32768.0F;
constexpr float kScale32 = 2147483648.0F;

/// A sample scaled by `scale` and rounded; the largest is the last float below `scale` that is a
/// whole number.
inline std::int32_t rounded(float sample, float scale, float largest) {
    const float scaled = sample * scale;
    const float held = scaled > largest ? largest : (scaled < -scale ? -scale : scaled);
    return static_cast<std::int32_t>(held + std::copysign(0.5F, held));
}

template <int bits>
void encodeShifted(const float* samples, std::int32_t* integers, std::int64_t count) {
    constexpr float kScale = static_cast<float>(std::int64_t{1} << (bits - 1));
    // A float has 24 bits.
    constexpr float kLargest = bits > 24 ? kScale - 128.0F : kScale - 1.0F;
    for (std::int64_t i = 0; i < count; ++i)
        integers[i] = rounded(samples[i], kScale, kLargest) * (1 << (32 - bits));
}

} // namespace

void decode(const std::int16_t* integers, float* samples, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] = static_cast<float>(integers[i]) * (1.0F / kScale16);
}

void decode(const std::int32_t* integers, float* samples, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] = static_cast<float>(integers[i]) * (1.0F / kScale32);
}

void encode(const float* samples, std::int16_t* integers, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int32_t value = rounded(samples[i], kScale16, kScale16 - 1.0F);
        integers[i] = static_cast<std::int16_t>(value);
    }
}

void encode(const float* samples, std::int32_t* integers, std::int64_t count, int bits) {
    switch (bits) {
    case 8:
        encodeShifted<8>(samples, integers, count);
        break;
    case 24:
        encodeShifted<24>(samples, integers, count);
        break;
    default:
        encodeShifted<32>(samples, integers, count);
        break;
    }
}

std::int64_t silenceNotFinite(float* samples, std::int64_t count) {
    constexpr std::uint32_t kExponent = 0x7F800000U;
    std::int64_t found = 0;
    for (std::int64_t i = 0; i < count;) {
        // The inner count in 32 bits, as wide as a sample.
        const std::int64_t end = count - i > (1 << 20) ? i + (1 << 20) : count;
        std::int32_t part = 0;
        for (; i < end; ++i) {
            const auto word = std::bit_cast<std::uint32_t>(samples[i]);
            const bool isFinite = (word & kExponent) != kExponent;
            samples[i] = isFinite ? samples[i] : 0.0F;
            part += isFinite ? 0 : 1;
        }
        found += part;
    }
    return found;
}

std::int64_t countBeyondFullScale(const float* samples, std::int64_t count) {
    std::int64_t found = 0;
    for (std::int64_t i = 0; i < count; ++i)
        found += std::fabs(samples[i]) > 1.0F ? 1 : 0;
    return found;
}

} // namespace halvo::render
