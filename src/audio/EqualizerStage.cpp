#include "audio/EqualizerStage.h"

#include "audio/SampleMath.h"
#include "base/CheckedArithmetic.h"

#include <cmath>

namespace halvo {

void EqualizerStage::setPreamp(float decibels) {
    preampGain_.store(std::pow(10.0F, decibels / 20.0F), std::memory_order_relaxed);
}

void EqualizerStage::process(float* samples, std::int64_t frameCount,
                             std::int64_t channelCount) noexcept HALVO_REALTIME {
    if (!isEnabled()) return;
    shape(samples, frameCount, channelCount);
    softClip(samples, frameCount * channelCount);
}

void EqualizerStage::shape(float* samples, std::int64_t frameCount,
                           std::int64_t channelCount) noexcept HALVO_REALTIME {
    const std::int64_t count =
        checkedMultiply(checkedCount(frameCount), checkedCount(channelCount));
    const float gain = preampGain_.load(std::memory_order_relaxed);
    if (gain != 1.0F) scaleSamples(samples, count, gain);
    if (channelCount == 2) bands_.process(samples, frameCount); // a stereo design
}

} // namespace halvo
