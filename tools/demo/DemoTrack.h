#pragma once

#include "StereoSound.h"

namespace halvo::demo {

/// What the demo plays: a few chords, a logarithmic sweep from 20 Hz to 20 kHz and a second of
/// silence. Always the same samples.
struct DemoTrack {
    /// The sweep's amplitude: leaves room for the strongest factory preset below full scale.
    static constexpr double kSweepPeak = 0.1;

    DemoTrack();

    StereoSound music; ///< the chords alone
    StereoSound sweep; ///< the sweep alone, with silence in which an equalizer's ringing dies away
    StereoSound sound; ///< everything
};

} // namespace halvo::demo
