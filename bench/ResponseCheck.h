#pragma once

#include "demo/StereoSound.h"

namespace halvo::bench {

/// How far a filter is from the preset's curve where it is furthest off.
struct Deviation {
    double decibels = 0;
    double frequencyHz = 0;
};

/// A filter is the same one as the preset when it is nowhere further off, in dB.
constexpr double kSameFilterDb = 0.2;

/// A click in both channels between silences long enough for every band to settle and die away.
demo::StereoSound click();

/// What a filter made of the click, against the formula of ten peaking filters: at their centres,
/// between them and at both ends of hearing, in both channels.
Deviation deviation(const demo::StereoSound& played, const demo::StereoSound& filtered);

} // namespace halvo::bench
