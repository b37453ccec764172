#pragma once

#include "audio/BiquadCascade.h"
#include "audio/TripleBuffer.h"
#include "base/Realtime.h"

#include <cstdint>
#include <span>

namespace halvo {

/// Ten peaking filters in series for each of two channels. Coefficients come from the main thread
/// and reach the render thread as a whole set.
class TenBandEQ {
  public:
    using Coefficients = BiquadCascade::Coefficients;

    /// Sets the gains in dB, lowest band first. A shorter list leaves the other bands as they are;
    /// what follows the tenth is ignored. The filters' memory is kept. Main thread.
    void setBands(std::span<const float> gains);

    /// Filters `frameCount` interleaved stereo frames in place. A negative or
    /// overflowing count ends the process. Render thread.
    void process(float* frames, std::int64_t frameCount) noexcept HALVO_REALTIME;
    void process(const SampleBlock& stereo) noexcept HALVO_REALTIME;

    /// Empties the filters' memory. Main thread, while nothing is rendered.
    void resetState() { cascade_.reset(); }

    /// Frames per second. By design a new rate does not touch the coefficients: they follow at the
    /// next `setBands`. Main thread.
    float sampleRate() const { return sampleRate_; }
    void setSampleRate(float rate) { sampleRate_ = rate; }

    /// The set that was computed last. Main thread.
    const Coefficients& coefficients() const { return coefficients_; }

  private:
    // Main thread.
    Coefficients coefficients_{};
    float sampleRate_ = 48000;
    // Render thread.
    BiquadCascade cascade_;
    // Shared.
    TripleBuffer<Coefficients> published_{Coefficients{}};
};

} // namespace halvo
