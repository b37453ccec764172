#pragma once

#include "ClockedSound.h"
#include "Stage.h"

#include <expected>
#include <string>

namespace halvo::demo {

/// One piece played by an ordinary client and what the speakers made of it.
struct Take {
    /// What was heard, in step with what was played and as long.
    StereoSound heard;
    /// The same with some silence on both sides, for a Fourier sum over all of it.
    StereoSound heardWithMargins;
    /// Interruptions that the sound suffered on its way from the client's output to the speakers.
    std::size_t gaps = 0;
    /// How many frames later the speakers had it than the output that the client played into.
    std::int64_t delayFrames = 0;

    /// How often it had to be taken again.
    std::size_t repetitions = 0;

    /// Plays `sound`, which lies in the file `path`, into the output `into` and records it there
    /// and at the speakers. When the server missed a cycle, the sound did not even reach that
    /// output whole: a busy machine does that, a few times it is taken again.
    static std::expected<Take, std::string> record(Stage& stage, const std::string& path,
                                                   const StereoSound& sound, const char* into);
};

} // namespace halvo::demo
