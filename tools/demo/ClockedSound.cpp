#include "ClockedSound.h"

namespace halvo::demo {

ClockedSound ClockedSound::from(const session::Recording& recording) {
    // A larger step is another clock, not a loss.
    constexpr std::int64_t kMostLostFrames = 2 * kSampleRate;
    ClockedSound result;
    if (recording.blocks.empty()) return result;
    result.begin = static_cast<std::int64_t>(recording.blocks.front().position);
    std::vector<float>& samples = result.sound.samples;
    for (const session::Recording::Block& block : recording.blocks) {
        const auto expected = result.begin + static_cast<std::int64_t>(samples.size() / 2);
        const std::int64_t lost = static_cast<std::int64_t>(block.position) - expected;
        if (lost > 0 && lost <= kMostLostFrames)
            samples.resize(samples.size() + 2 * static_cast<std::size_t>(lost));
        const auto first =
            recording.samples.begin() + static_cast<std::ptrdiff_t>(2 * block.firstFrame);
        samples.insert(samples.end(), first, first + static_cast<std::ptrdiff_t>(2 * block.frames));
    }
    return result;
}

} // namespace halvo::demo
