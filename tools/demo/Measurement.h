#pragma once

#include "MeasurementSession.h"

#include <expected>
#include <functional>
#include <string>

namespace halvo::demo {

/// One sound played by an ordinary client, and what arrived at the speakers.
struct Measurement {
    /// What was heard since the first frame went into the output, with some tail.
    StereoSound heard;
    /// How often it had to be repeated.
    std::size_t repetitions = 0;

    /// Plays `sound` into the output `into`, which has to be the default, and records it there and
    /// at the speakers; meanwhile calls `whilePlaying` twenty times a second. On a busy machine the
    /// server misses a cycle and the sound does not even reach that output whole: then it is
    /// repeated, a few times.
    static std::expected<Measurement, std::string> make(
        MeasurementSession& session, const StereoSound& sound, const char* into,
        const std::function<void()>& whilePlaying = [] {});
};

} // namespace halvo::demo
