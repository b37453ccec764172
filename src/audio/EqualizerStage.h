#pragma once

#include "audio/SampleBlock.h"
#include "audio/TenBandEQ.h"
#include "base/Realtime.h"

#include <atomic>

namespace halvo {

/// What the equalizer does to a buffer, live and offline: preamp, ten bands and soft clip, in this
/// order, or nothing at all while it is off.
class EqualizerStage {
  public:
    /// The gain ahead of the bands in dB. Main thread.
    void setPreamp(float decibels);
    /// Main thread.
    void setEnabled(bool enabled) { enabled_.store(enabled, std::memory_order_relaxed); }
    bool isEnabled() const noexcept HALVO_REALTIME {
        return enabled_.load(std::memory_order_relaxed);
    }
    TenBandEQ& bands() { return bands_; }

    /// Render thread.
    void process(const SampleBlock& block) noexcept HALVO_REALTIME;

    /// The part of `process` ahead of the clip, whether it is on or off. Render thread.
    void shape(const SampleBlock& block) noexcept HALVO_REALTIME;

  private:
    std::atomic<float> preampGain_{1}; ///< linear; 1 = none
    std::atomic<bool> enabled_{true};
    TenBandEQ bands_;
};

} // namespace halvo
