#include "audio/TenBandEQ.h"

#include <algorithm>

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
    process(SampleBlock(frames, frameCount, 2));
}

void TenBandEQ::process(const SampleBlock& stereo) noexcept HALVO_REALTIME {
    cascade_.process(stereo, published_.read());
}

} // namespace halvo
