#pragma once

#include "audio/BandFrequencies.h"
#include "audio/BiquadCoefficients.h"
#include "base/Realtime.h"

#include <array>
#include <cstdint>

namespace halvo {

/// Ten second-order sections in series for each of two interleaved channels, with the channels'
/// memory. Transposed direct form II; every section's operations keep the order of
/// y = b0·x + z1, z1 = b1·x − a1·y + z2, z2 = b2·x − a2·y, so that the result is the same to the
/// last bit however the work is laid out. Render thread.
class BiquadCascade {
  public:
    using Coefficients = std::array<BiquadCoefficients, kBandCount>;

    /// Filters `frameCount` frames in place.
    void process(float* frames, std::int64_t frameCount,
                 const Coefficients& coefficients) noexcept HALVO_REALTIME;

    /// Empties the memory. Not while another thread processes.
    void reset() { memory_ = {}; }

  private:
    /// The memory of one section, left and right.
    struct Memory {
        std::array<float, 2> z1{};
        std::array<float, 2> z2{};
    };

    /// Sends the frame at `frame` through the sections from `first` up to, not including, `last`.
    void passThrough(float* frame, std::size_t first, std::size_t last,
                     const Coefficients& coefficients) noexcept HALVO_REALTIME;
    void processWavefront(float* frames, std::int64_t frameCount,
                          const Coefficients& coefficients) noexcept HALVO_REALTIME;
    void heal() noexcept HALVO_REALTIME;

    std::array<Memory, kBandCount> memory_{};
};

} // namespace halvo
