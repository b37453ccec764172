#include "audio/TenBandEQ.h"

#include "base/CheckedArithmetic.h"

#include <algorithm>
#include <cmath>

namespace halvo {

void TenBandEQ::setBands(std::span<const float> gains) {
    if (gains.empty()) return;
    const std::size_t count = std::min(gains.size(), kBandCount);
    for (std::size_t band = 0; band < count; ++band) {
        coefficients_[band] =
            BiquadCoefficients::peaking(gains[band], kBandFrequencies[band], sampleRate_);
    }
    published_.write(coefficients_);
}

void TenBandEQ::process(float* frames, std::int64_t frameCount) noexcept HALVO_REALTIME {
    const Coefficients coefficients = published_.read();
    const auto samples = checkedMultiply<std::int64_t>(checkedCount(frameCount), 2);
    for (std::int64_t i = 0; i < samples; i += 2) {
        frames[i] = filter(frames[i], coefficients, stateL_);
        frames[i + 1] = filter(frames[i + 1], coefficients, stateR_);
    }
    healMemory(stateL_);
    healMemory(stateR_);
}

void TenBandEQ::resetState() {
    stateL_ = {};
    stateR_ = {};
}

float TenBandEQ::filter(float x, const Coefficients& coefficients,
                        Memory& memory) noexcept HALVO_REALTIME {
    for (std::size_t band = 0; band < kBandCount; ++band) {
        const auto& c = coefficients[band];
        auto& [z1, z2] = memory[band];
        const float y = c.b0 * x + z1;
        z1 = c.b1 * x - c.a1 * y + z2;
        z2 = c.b2 * x - c.a2 * y;
        x = y;
    }
    return x;
}

/// A sample that is not finite would stay in the feedback for ever.
void TenBandEQ::healMemory(Memory& memory) noexcept HALVO_REALTIME {
    for (auto& [z1, z2] : memory) {
        if (!std::isfinite(z1)) z1 = 0;
        if (!std::isfinite(z2)) z2 = 0;
    }
}

} // namespace halvo
