#include "linux/pipewire/PipeWireRenderer.h"

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

void PipeWireRenderer::prepare(const StreamFormat& format, RenderCallback callback, void* refCon) {
    callback_ = callback;
    refCon_ = refCon;
    channels_ = format.channels;
    stepUp_ = static_cast<float>(1 / (kFadeInSeconds * format.sampleRate));
    stepDown_ = static_cast<float>(1 / (kFadeOutSeconds * format.sampleRate));
    gain_ = gate_.isOpen() ? 1.0F : 0.0F;
    sampleTime_ = 0;
    clockSeen_ = false;
}

void PipeWireRenderer::ask(float* samples, std::uint32_t frames) noexcept HALVO_REALTIME {
    const std::size_t count = std::size_t{frames} * channels_;
    std::fill_n(samples, count, 0.0F);
    RenderBuffer buffer{channels_, static_cast<std::uint32_t>(count * sizeof(float)), samples};
    RenderBufferList list{1, &buffer};
    const RenderTimestamp timestamp{sampleTime_};
    std::uint32_t flags = 0;
    // After a failure the buffer holds silence or valid sound; either may be played.
    (void)callback_(refCon_, &flags, &timestamp, 0, frames, &list);
    sampleTime_ += frames;
}

void PipeWireRenderer::renderToNowhere(float* samples,
                                       std::uint32_t frames) noexcept HALVO_REALTIME {
    ask(samples, frames);
}

void PipeWireRenderer::render(float* samples, std::uint32_t frames) noexcept HALVO_REALTIME {
    ask(samples, frames);
    removeNotFinite(samples, std::size_t{frames} * channels_);
    fade(samples, frames);
    framesPlayed_.fetch_add(frames, std::memory_order_relaxed);
}

void PipeWireRenderer::fade(float* samples, std::uint32_t frames) noexcept HALVO_REALTIME {
    const bool open = gate_.isOpen();
    if (open && gain_ >= 1) return;
    float gain = gain_;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        gain = open ? std::min(gain + stepUp_, 1.0F) : std::max(gain - stepDown_, 0.0F);
        for (std::uint32_t channel = 0; channel < channels_; ++channel)
            *samples++ *= gain;
    }
    gain_ = gain;
}

void PipeWireRenderer::clock(std::uint32_t clockID, std::uint64_t position,
                             std::uint64_t duration) noexcept HALVO_REALTIME {
    const bool follows = !clockSeen_ || clockID != clockID_ || position == nextPosition_ ||
                         position == position_; // called twice in one cycle
    if (!follows) underruns_.fetch_add(1, std::memory_order_relaxed);
    clockSeen_ = true;
    clockID_ = clockID;
    position_ = position;
    nextPosition_ = position + duration;
}

} // namespace halvo
