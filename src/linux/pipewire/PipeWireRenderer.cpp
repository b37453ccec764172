#include "linux/pipewire/PipeWireRenderer.h"

#include <algorithm>
#include <cstddef>

namespace halvo {

void PipeWireRenderer::prepare(const StreamFormat& format, RenderCallback callback, void* refCon) {
    callback_ = callback;
    refCon_ = refCon;
    channels_ = format.channels;
    output_.prepare(format.sampleRate);
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
    output_.process(samples, frames, channels_);
    framesPlayed_.fetch_add(frames, std::memory_order_relaxed);
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
