#pragma once

#include "audio/BiquadCascade.h"

#include <array>
#include <cstdint>

namespace halvo {

/// The plain loop that the cascade must equal: frame by frame, section by section.
class PlainCascade {
  public:
    void process(float* frames, std::int64_t frameCount,
                 const BiquadCascade::Coefficients& coefficients);

  private:
    /// The memory of one section, left and right.
    struct Memory {
        std::array<float, 2> z1{};
        std::array<float, 2> z2{};
    };
    std::array<Memory, kBandCount> memory_{};
};

} // namespace halvo
