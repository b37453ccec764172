#pragma once

#include "StereoSound.h"

#include <cstddef>
#include <optional>

namespace halvo::demo {

/// Where a recording holds what was played.
struct Alignment {
    std::ptrdiff_t offset; ///< recorded frame (offset + n) is played frame n
    double similarity;     ///< normalised correlation there: 1 = the same up to a factor

    /// Looks where both begin to sound, then takes the best correlation of a stretch in the middle
    /// within some thousand frames around. Nothing when either is silent or nothing correlates.
    static std::optional<Alignment> find(const StereoSound& played, const StereoSound& recorded);
};

/// The first frame in which either channel is louder than silence, from `from` on.
std::optional<std::size_t> firstSoundingFrame(const StereoSound& sound, std::size_t from = 0);

/// How many times the recording, aligned to what was played, fell silent for 32 frames or longer
/// where something was played.
std::size_t countGaps(const StereoSound& played, const StereoSound& alignedRecording);

} // namespace halvo::demo
