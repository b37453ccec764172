#include "audio/EqualizerStage.h"

#include "audio/SampleMath.h"

#include <cmath>

namespace halvo {

void EqualizerStage::setPreamp(float decibels) {
    preampGain_.store(std::pow(10.0F, decibels / 20.0F), std::memory_order_relaxed);
}

void EqualizerStage::process(const SampleBlock& block) noexcept HALVO_REALTIME {
    if (!isEnabled()) return;
    shape(block);
    softClip(block.samples());
}

void EqualizerStage::shape(const SampleBlock& block) noexcept HALVO_REALTIME {
    const float gain = preampGain_.load(std::memory_order_relaxed);
    if (gain != 1.0F) scaleSamples(block.samples(), gain);
    if (block.channelCount() == 2) bands_.process(block); // a stereo design
}

} // namespace halvo
