#pragma once

#include <nlohmann/json.hpp>

namespace halvo::bench {

/// Measures the render path against its limit and against the plain loop, in some seconds on the
/// calling thread. All that is compared runs in turn, many rounds; every figure is a median, every
/// ratio the median of the rounds' own ratios.
///
/// {"cascade": {"form", "nsPerFrame", "plainNsPerFrame", "limitNsPerFrame", "ratioToLimit",
///              "instructionsPerFrame",
///              "forms": {name: {"nsPerFrame", "ratioToLimit", "ratioToPlain",
///                               "instructionsPerFrame", "byBlockSize": {size: ns}}}},
///  "stages": {name: ns per frame},
///  "processBuffer": {size: {"nsPerFrame", "plainNsPerFrame", "ratioToLimit"}},
///  "fft": {"microseconds"},
///  "silenceAfterSound": {"silenceNsPerFrame", "ratio"}}
/// In blocks of 512 frames where no size is named. A form that this processor cannot run is left
/// out; instructions are null without valgrind. The silence is its most expensive part.
nlohmann::json measureRenderPath();

} // namespace halvo::bench
