#include "audio/SampleMath.h"

namespace halvo {

void scaleSamples(float* samples, std::int64_t count, float gain) noexcept HALVO_REALTIME {
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] *= gain;
}

void softClip(float* samples, std::int64_t count) noexcept HALVO_REALTIME {
    for (std::int64_t i = 0; i < count; ++i) {
        const float x = samples[i];
        const float above = 1.0F - 1.0F / (x + 1.0F);
        const float below = 1.0F / (1.0F - x) - 1.0F;
        samples[i] = x > 1.0F ? above : (x < -1.0F ? below : x);
    }
}

} // namespace halvo
