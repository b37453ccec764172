#pragma once

#include "ClockedSound.h"
#include "Stage.h"

#include <expected>
#include <string>

namespace halvo::demo {

/// One piece played by an ordinary client and what the speakers made of it.
struct Take {
    /// What was heard, in step with what was played and as long; frames that got lost are silence.
    StereoSound heard;
    /// The same with some silence on both sides, for a Fourier sum over all of it.
    StereoSound heardWithMargins;
    /// Interruptions of the sound.
    std::size_t gaps = 0;
    /// How many frames later the speakers had it than the virtual output; only when asked for.
    std::int64_t delayFrames = 0;

    enum class Delay { ignored, measured };

    /// Plays `sound`, which lies in the file `path`, and records; else a sentence.
    static std::expected<Take, std::string> record(Stage& stage, const std::string& path,
                                                   const StereoSound& sound,
                                                   Delay delay = Delay::ignored);
};

} // namespace halvo::demo
