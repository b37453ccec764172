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

    /// Plays `sound`, which lies in the file `path`, into the output `into` and records it there
    /// and at the speakers. What does not even reach that output whole, or is missed by a recorder,
    /// says something about the machine and nothing about Halvo: it is tried again a few times.
    static std::expected<Take, std::string> record(Stage& stage, const std::string& path,
                                                   const StereoSound& sound, const char* into);
};

} // namespace halvo::demo
