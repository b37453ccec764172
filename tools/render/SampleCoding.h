#pragma once

#include <cstdint>

namespace halvo::render {

// Between the integers of a file and samples from -1 to 1. Both ways go by the same power of two,
// so that a file which nothing changes comes out as it went in.

/// 16-bit integers to samples.
void decode(const std::int16_t* integers, float* samples, std::int64_t count);
/// Integers that are shifted up to 32 bits to samples.
void decode(const std::int32_t* integers, float* samples, std::int64_t count);

/// Samples to 16-bit integers: rounded, and held at the ends of the range.
void encode(const float* samples, std::int16_t* integers, std::int64_t count);
/// Samples to integers of 8, 24 or 32 bits, shifted up to 32: rounded, and held at the ends.
void encode(const float* samples, std::int32_t* integers, std::int64_t count, int bits);

/// Replaces what is not a number by silence, as the driver does; gives how many there were.
std::int64_t silenceNotFinite(float* samples, std::int64_t count);

/// How many samples the soft clip changes.
std::int64_t countBeyondFullScale(const float* samples, std::int64_t count);

} // namespace halvo::render
