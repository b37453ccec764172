#pragma once

#include "base/Realtime.h"
#include "loudness/GatedOutput.h"
#include "platform/OutputUnit.h"

#include <atomic>
#include <cstdint>

namespace halvo {

/// The render thread's work in a cycle, apart from the server's buffers: calls the callback,
/// has its output gated and counts.
class PipeWireRenderer {
  public:
    explicit PipeWireRenderer(const OutputGate& gate) : output_(gate) {}

    /// Call while no cycle runs.
    void prepare(const StreamFormat& format, RenderCallback callback, void* refCon);

    /// Fills `frames` interleaved frames. Render thread.
    void render(float* samples, std::uint32_t frames) noexcept HALVO_REALTIME;

    /// Calls the callback and discards its output; `samples` is the buffer. Render thread.
    void renderToNowhere(float* samples, std::uint32_t frames) noexcept HALVO_REALTIME;

    /// The server's clock at the start of a cycle, and the cycle's length, in frames. A gap to the
    /// previous cycle counts as an underrun, unless the clock has changed. Render thread.
    void clock(std::uint32_t clockID, std::uint64_t position,
               std::uint64_t duration) noexcept HALVO_REALTIME;

    std::uint64_t framesPlayed() const { return framesPlayed_.load(std::memory_order_relaxed); }
    std::uint64_t underruns() const { return underruns_.load(std::memory_order_relaxed); }

  private:
    void ask(float* samples, std::uint32_t frames) noexcept HALVO_REALTIME;

    GatedOutput output_;
    // Set by `prepare`.
    RenderCallback callback_ = nullptr;
    void* refCon_ = nullptr;
    std::uint32_t channels_ = 0;
    // Render thread.
    double sampleTime_ = 0;
    bool clockSeen_ = false;
    std::uint32_t clockID_ = 0;
    std::uint64_t position_ = 0;
    std::uint64_t nextPosition_ = 0;
    // Any thread.
    std::atomic<std::uint64_t> framesPlayed_{0};
    std::atomic<std::uint64_t> underruns_{0};
};

} // namespace halvo
