#include "StereoSound.h"

#include <algorithm>
#include <cmath>

namespace halvo::demo {
namespace {

/// From the first to the last frame that is not silent.
StereoSound withoutSilenceAround(const StereoSound& sound) {
    const auto sounds = [](float sample) { return sample != 0; };
    const auto& samples = sound.samples;
    const auto first = std::ranges::find_if(samples, sounds) - samples.begin();
    const auto last = samples.rend() - std::find_if(samples.rbegin(), samples.rend(), sounds);
    return sound.stretch(first / 2,
                         static_cast<std::size_t>(std::max((last + 1) / 2 - first / 2, 0L)));
}

} // namespace

float StereoSound::peak() const {
    float largest = 0;
    for (float sample : samples)
        largest = std::max(largest, std::abs(sample));
    return largest;
}

StereoSound StereoSound::stretch(std::ptrdiff_t first, std::size_t length) const {
    StereoSound result(length);
    const auto available = static_cast<std::ptrdiff_t>(frameCount());
    const std::ptrdiff_t from = std::clamp<std::ptrdiff_t>(first, 0, available);
    const std::ptrdiff_t to =
        std::clamp<std::ptrdiff_t>(first + static_cast<std::ptrdiff_t>(length), from, available);
    std::copy(samples.begin() + from * 2, samples.begin() + to * 2,
              result.samples.begin() + (from == to ? 0 : (from - first) * 2));
    return result;
}

std::size_t countInterruptions(const StereoSound& played, const StereoSound& heard) {
    constexpr std::size_t kShortest = 32; // a zero crossing is none
    const StereoSound sound = withoutSilenceAround(heard);
    std::size_t count = sound.frameCount() < withoutSilenceAround(played).frameCount() ? 1 : 0;
    std::size_t silent = 0;
    for (std::size_t frame = 0; frame < sound.frameCount(); ++frame) {
        silent = sound.left(frame) == 0 && sound.right(frame) == 0 ? silent + 1 : 0;
        if (silent == kShortest) ++count;
    }
    return count;
}

} // namespace halvo::demo
