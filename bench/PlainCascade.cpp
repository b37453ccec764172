#include "bench/PlainCascade.h"

#include <cmath>

namespace halvo {

void PlainCascade::process(float* frames, std::int64_t frameCount,
                           const BiquadCascade::Coefficients& coefficients) {
    for (std::int64_t frame = 0; frame < frameCount; ++frame) {
        for (std::size_t channel = 0; channel < 2; ++channel) {
            float x = frames[2 * frame + static_cast<std::int64_t>(channel)];
            for (std::size_t section = 0; section < kBandCount; ++section) {
                const auto& c = coefficients[section];
                float& z1 = memory_[section].z1[channel];
                float& z2 = memory_[section].z2[channel];
                const float y = c.b0 * x + z1;
                z1 = c.b1 * x - c.a1 * y + z2;
                z2 = c.b2 * x - c.a2 * y;
                x = y;
            }
            frames[2 * frame + static_cast<std::int64_t>(channel)] = x;
        }
    }
    for (auto& [z1, z2] : memory_) {
        for (auto* memory : {&z1, &z2}) {
            for (float& value : *memory)
                value = std::isfinite(value) ? value : 0.0F;
        }
    }
}

} // namespace halvo
