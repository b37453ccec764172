#pragma once

#include "StereoSound.h"

namespace halvo::demo {

/// A small, warm room: four delay lines that feed one another through a Hadamard matrix, each with
/// a gentle low-pass. Gives the room's sound alone, as long as the input; the same input gives the
/// same output.
StereoSound roomSound(const StereoSound& dry);

} // namespace halvo::demo
