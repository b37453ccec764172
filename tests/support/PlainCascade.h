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
    struct Memory {
        float z1 = 0;
        float z2 = 0;
    };
    std::array<std::array<Memory, kBandCount>, 2> memory_{};
};

} // namespace halvo
