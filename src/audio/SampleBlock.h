#pragma once

#include "base/CheckedArithmetic.h"
#include "base/Realtime.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace halvo {

/// The samples in so many frames of so many channels. A negative count or a product that overflows
/// ends the process, in release builds too. Any thread, real-time safe.
constexpr std::size_t sampleCount(std::int64_t frameCount,
                                  std::int64_t channelCount) noexcept HALVO_REALTIME {
    return static_cast<std::size_t>(
        checkedMultiply(checkedCount(frameCount), checkedCount(channelCount)));
}

/// Interleaved samples that a stage processes in place; does not own them. The counts are checked
/// here, as by `sampleCount`, and nowhere behind it. Render thread.
class SampleBlock {
  public:
    constexpr SampleBlock(float* samples, std::int64_t frameCount,
                          std::int64_t channelCount) noexcept HALVO_REALTIME
        : samples_(samples, sampleCount(frameCount, channelCount)),
          frameCount_(frameCount),
          channelCount_(channelCount) {}

    constexpr std::span<float> samples() const noexcept HALVO_REALTIME { return samples_; }
    constexpr std::int64_t frameCount() const noexcept HALVO_REALTIME { return frameCount_; }
    constexpr std::int64_t channelCount() const noexcept HALVO_REALTIME { return channelCount_; }

  private:
    std::span<float> samples_;
    std::int64_t frameCount_;
    std::int64_t channelCount_;
};

} // namespace halvo
