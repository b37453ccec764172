#pragma once

#include "session/Recorder.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace halvo::test {

/// Stereo sine of `seconds` at `frequency` Hz.
std::vector<float> sine(double frequency, float amplitude, double seconds,
                        std::uint32_t rate = 48000);
/// The level of a stretch of the left channel in dB, relative to full scale; -200 for silence.
double levelDb(const std::vector<float>& interleaved, std::size_t firstFrame, std::size_t frames);
/// The loudest 10 ms of the left channel from `firstFrame` on, in dB.
double loudestDb(const std::vector<float>& interleaved, std::size_t firstFrame = 0,
                 std::uint32_t rate = 48000);
/// Whether the last 0.2 s of the left channel come to `level` dB, within 0.1 dB.
bool settlesAt(session::Recorder& recorder, double level);

} // namespace halvo::test
