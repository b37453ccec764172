#pragma once

#include "base/Realtime.h"
#include "loudness/OutputGate.h"

#include <cstdint>

namespace halvo {

/// The last step of a render cycle on any sound server: replaces samples that are not finite by 0
/// and applies the gate.
class GatedOutput {
  public:
    /// The gate must outlive this.
    explicit GatedOutput(const OutputGate& gate) : gate_(gate) {}

    /// Begins with the gate as it is now, without a fade; `sampleRate` in Hz. Call while no cycle
    /// runs.
    void prepare(double sampleRate);

    /// `frames` interleaved frames of `channels` samples, in place. Render thread.
    void process(float* samples, std::uint32_t frames,
                 std::uint32_t channels) noexcept HALVO_REALTIME;

  private:
    void fade(float* samples, std::uint32_t frames, std::uint32_t channels) noexcept HALVO_REALTIME;

    const OutputGate& gate_;
    // Set by `prepare`.
    float stepUp_ = 0;
    float stepDown_ = 0;
    // Render thread.
    float gain_ = 0;
};

} // namespace halvo
