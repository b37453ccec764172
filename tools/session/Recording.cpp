#include "session/Recorder.h"

#include <algorithm>
#include <cmath>

namespace halvo::session {

std::uint64_t Recording::lostFrames() const {
    std::uint64_t lost = 0;
    for (std::size_t index = 1; index < blocks.size(); ++index) {
        const auto expected = blocks[index - 1].position + blocks[index - 1].frames;
        if (blocks[index].position > expected) lost += blocks[index].position - expected;
    }
    return lost;
}

float Recording::peak(std::size_t firstFrame) const {
    float peak = 0.0F;
    for (std::size_t index = firstFrame * 2; index < samples.size(); ++index) {
        peak = std::max(peak, std::fabs(samples[index]));
    }
    return peak;
}

} // namespace halvo::session
