#pragma once

#include <cstdint>

namespace halvo::bench {

/// What no cascade can be faster than: of each frame only the four operations that wait for the
/// frame before, y = b0·x + z1 and z1 = (b1·x − a1·y) + z2, with all else ready in registers. The
/// sections' recurrences may run side by side, so one stands for all. Takes z1 and gives the next.
float runRecurrence(float z1, std::int64_t frameCount);

} // namespace halvo::bench
