#pragma once

#include "StereoSound.h"

namespace halvo::demo {

/// What the demo plays: some bars of music, a logarithmic sweep from 20 Hz to 20 kHz and a second
/// of silence. Made from nothing, always the same samples.
class DemoTrack {
  public:
    DemoTrack();

    /// Everything.
    const StereoSound& sound() const { return sound_; }
    /// The first frame of the sweep.
    std::size_t sweepBegin() const { return sweepBegin_; }
    /// The sweep alone with silence behind it in which an equalizer's ringing dies away.
    StereoSound sweep() const;
    /// The music alone.
    StereoSound music() const { return sound_.stretch(0, sweepBegin_); }

    /// The sweep's amplitude: leaves room for the strongest factory preset below full scale.
    static constexpr double kSweepPeak = 0.1;

  private:
    StereoSound sound_;
    std::size_t sweepBegin_;
};

} // namespace halvo::demo
