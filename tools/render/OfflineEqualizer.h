#pragma once

#include "audio/EqualizerStage.h"
#include "base/EQPreset.h"

#include <cstdint>
#include <expected>
#include <string>

namespace halvo::render {

/// The live engine's own stage over one file, with a count of what it clips.
class OfflineEqualizer {
  public:
    /// Frames per second beyond which single-precision filters leave the lowest bands' curves.
    static constexpr int kHighestRate = 192000;

    /// Whether the preset can be applied at this rate: a band from half the rate on is no stable
    /// filter, unless its gain is 0. The error is a sentence that says what to do.
    static std::expected<void, std::string> check(const EQPreset& preset, int sampleRate);

    /// Applies `preset`, or nothing when `bypass` is set.
    OfflineEqualizer(const EQPreset& preset, int sampleRate, bool bypass);

    /// Filters interleaved stereo frames in place.
    void process(float* frames, std::int64_t frameCount);

    /// Samples that the soft clip has changed.
    std::int64_t clippedSamples() const { return clippedSamples_; }
    /// The largest magnitude ahead of the clip; 1 is full scale. 0 when bypassed.
    float peak() const { return peak_; }
    /// Results beyond what a float can hold, of absurdly loud input; they become silence.
    std::int64_t notFiniteSamples() const { return notFinite_; }

  private:
    EqualizerStage stage_;
    std::int64_t clippedSamples_ = 0;
    std::int64_t notFinite_ = 0;
    float peak_ = 0;
};

} // namespace halvo::render
