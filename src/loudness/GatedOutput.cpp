#include "loudness/GatedOutput.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace halvo {

namespace {

constexpr double kFadeInSeconds = 0.030;
constexpr double kFadeOutSeconds = 0.005;

void removeNotFinite(float* samples, std::size_t count) noexcept HALVO_REALTIME {
    constexpr float kLargest = std::numeric_limits<float>::max();
    for (std::size_t i = 0; i < count; ++i) {
        const float sample = samples[i];
        samples[i] = sample >= -kLargest && sample <= kLargest ? sample : 0.0F;
    }
}

} // namespace

void GatedOutput::prepare(double sampleRate) {
    stepUp_ = static_cast<float>(1 / (kFadeInSeconds * sampleRate));
    stepDown_ = static_cast<float>(1 / (kFadeOutSeconds * sampleRate));
    gain_ = gate_.isOpen() ? 1.0F : 0.0F;
}

void GatedOutput::process(float* samples, std::uint32_t frames,
                          std::uint32_t channels) noexcept HALVO_REALTIME {
    removeNotFinite(samples, std::size_t{frames} * channels);
    fade(samples, frames, channels);
}

void GatedOutput::fade(float* samples, std::uint32_t frames,
                       std::uint32_t channels) noexcept HALVO_REALTIME {
    const bool open = gate_.isOpen();
    if (open && gain_ >= 1) return;
    float gain = gain_;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        gain = open ? std::min(gain + stepUp_, 1.0F) : std::max(gain - stepDown_, 0.0F);
        for (std::uint32_t channel = 0; channel < channels; ++channel)
            *samples++ *= gain;
    }
    gain_ = gain;
}

} // namespace halvo
