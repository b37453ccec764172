#pragma once

#include <cstdint>
#include <vector>

namespace halvo::demo {

/// The demo's small orchestra. Each function gives one note, mono at 48000 frames per second, with
/// a peak around 1; the same arguments always give the same samples.
using Note = std::vector<float>;

/// A plucked string: a burst of noise that circulates in a delay line (Karplus and Strong).
Note pluckedString(double frequencyHz, double seconds, std::uint32_t seed);

/// A bowed string: a few harmonics with a slow attack and vibrato; the last 0.3 s are the release.
Note bowedString(double frequencyHz, double seconds);

/// A bass guitar's note: harmonics that fade the faster the higher they are.
Note bassNote(double frequencyHz, double seconds);

Note kickDrum();
Note brushedSnare(std::uint32_t seed);
Note closedHat(std::uint32_t seed);

} // namespace halvo::demo
