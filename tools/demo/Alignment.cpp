#include "Alignment.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace halvo::demo {
namespace {

constexpr float kSilence = 1e-6F;
constexpr std::ptrdiff_t kSearchFrames = 2048;
constexpr std::size_t kWindowFrames = 4096;
constexpr double kLeastSimilarity = 0.2;
constexpr std::size_t kGapFrames = 32;

bool sounds(const StereoSound& sound, std::size_t frame) {
    return std::abs(sound.left(frame)) > kSilence || std::abs(sound.right(frame)) > kSilence;
}

std::vector<double> mono(const StereoSound& sound) {
    std::vector<double> result(sound.frameCount());
    for (std::size_t frame = 0; frame < result.size(); ++frame)
        result[frame] =
            static_cast<double>(sound.left(frame)) + static_cast<double>(sound.right(frame));
    return result;
}

/// The normalised correlation of `window` with the frames from `recorded` on.
double correlation(const std::vector<double>& window, double windowEnergy, const double* recorded) {
    double product = 0;
    double recordedEnergy = 0;
    for (std::size_t index = 0; index < window.size(); ++index) {
        product += window[index] * recorded[index];
        recordedEnergy += recorded[index] * recorded[index];
    }
    const double scale = std::sqrt(windowEnergy * recordedEnergy);
    return scale > 0 ? product / scale : 0;
}

} // namespace

std::optional<std::size_t> firstSoundingFrame(const StereoSound& sound, std::size_t from) {
    for (std::size_t frame = from; frame < sound.frameCount(); ++frame)
        if (sounds(sound, frame)) return frame;
    return std::nullopt;
}

std::optional<Alignment> Alignment::find(const StereoSound& played, const StereoSound& recorded) {
    const auto playedStart = firstSoundingFrame(played);
    const auto recordedStart = firstSoundingFrame(recorded);
    if (!playedStart || !recordedStart) return std::nullopt;

    // From the middle: at the low end, where a sweep begins, a filter's phase looks like a delay.
    const std::size_t available = played.frameCount() - *playedStart;
    const std::size_t length = std::min(kWindowFrames, available);
    const auto intoSound = static_cast<std::ptrdiff_t>((available - length) / 2);
    const std::ptrdiff_t first = static_cast<std::ptrdiff_t>(*playedStart) + intoSound;
    const std::vector<double> window = mono(played.stretch(first, length));
    const std::ptrdiff_t searchStart =
        static_cast<std::ptrdiff_t>(*recordedStart) + intoSound - kSearchFrames;
    const std::vector<double> searched =
        mono(recorded.stretch(searchStart, length + 2 * static_cast<std::size_t>(kSearchFrames)));

    const double windowEnergy =
        std::inner_product(window.begin(), window.end(), window.begin(), 0.0);
    Alignment best{.offset = 0, .similarity = 0};
    for (std::ptrdiff_t lag = 0; lag <= 2 * kSearchFrames; ++lag) {
        const double similarity = correlation(window, windowEnergy, searched.data() + lag);
        if (similarity > best.similarity)
            best = {.offset = searchStart + lag - first, .similarity = similarity};
    }
    if (best.similarity < kLeastSimilarity) return std::nullopt;
    return best;
}

std::size_t countGaps(const StereoSound& played, const StereoSound& alignedRecording) {
    const std::size_t count = std::min(played.frameCount(), alignedRecording.frameCount());
    std::size_t gaps = 0;
    std::size_t silent = 0;
    for (std::size_t frame = 0; frame < count; ++frame) {
        silent = sounds(played, frame) && !sounds(alignedRecording, frame) ? silent + 1 : 0;
        if (silent == kGapFrames) ++gaps;
    }
    return gaps;
}

} // namespace halvo::demo
