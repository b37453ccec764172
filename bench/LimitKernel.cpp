#include "LimitKernel.h"

namespace halvo::bench {

float runRecurrence(float z1, std::int64_t frameCount) {
    // Any numbers that stay finite and away from the smallest; volatile, so that they are not
    // folded.
    volatile float source[] = {0.3F, 0.2F, 0.5F, 0.1F};
    const float x0 = source[0]; // b0·x
    const float x1 = source[1]; // b1·x
    const float a1 = source[2];
    const float z2 = source[3];
    for (std::int64_t frame = 0; frame < frameCount; ++frame) {
        const float y = x0 + z1;
        z1 = (x1 - a1 * y) + z2;
    }
    return z1;
}

} // namespace halvo::bench
