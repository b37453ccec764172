#pragma once

#include "audio/EqualizerStage.h"
#include "presets/EQPreset.h"

#include <cstdint>
#include <expected>
#include <string>

namespace halvo::render {

/// The live engine's own stage over one file, with a count of what it clips.
class OfflineEqualizer {
  public:
    /// Frames per second beyond which single-precision filters leave the lowest bands' curves.
    static constexpr int kHighestRate = 192000;

    /// Applies `preset`, or nothing when `bypass` is set. The error, a sentence, says which rate
    /// the preset needs: a band beyond half the rate is no stable filter, unless its gain is 0.
    static std::expected<void, std::string> check(const EQPreset& preset, int sampleRate);

    OfflineEqualizer(const EQPreset& preset, int sampleRate, bool bypass);

    /// Filters interleaved stereo frames in place.
    void process(float* frames, std::int64_t frameCount);

    /// Samples that the soft clip has changed.
    std::int64_t clippedSamples() const { return clippedSamples_; }
    /// The largest magnitude ahead of the clip; 1 is full scale. 0 when bypassed.
    float peak() const { return peak_; }

  private:
    EqualizerStage stage_;
    std::int64_t clippedSamples_ = 0;
    float peak_ = 0;
};

} // namespace halvo::render
