#include "render/OfflineEqualizer.h"

#include "audio/BandFrequencies.h"
#include "audio/BiquadCoefficients.h"
#include "audio/SampleMath.h"
#include "render/SampleCoding.h"

#include <algorithm>

namespace halvo::render {

std::expected<void, std::string> OfflineEqualizer::check(const EQPreset& preset, int sampleRate) {
    const auto rate = static_cast<float>(sampleRate);
    if (sampleRate > kHighestRate) {
        return std::unexpected("the equalizer works up to 192000 frames per second, this has " +
                               std::to_string(sampleRate) + "; resample it first");
    }
    const std::size_t count = std::min(preset.bands.size(), kBandCount);
    for (std::size_t band = 0; band < count; ++band) {
        const bool isFlat = BiquadCoefficients::peaking(preset.bands[band], kBandFrequencies[band],
                                                        48000) == BiquadCoefficients{};
        if (isFlat || 2 * kBandFrequencies[band] <= rate) continue;
        const auto hertz = std::to_string(static_cast<int>(kBandFrequencies[band]));
        return std::unexpected("the band at " + hertz + " Hz needs twice as many frames per " +
                               "second, this has " + std::to_string(sampleRate) +
                               "; resample it first, or set this band and those above it to 0");
    }
    return {};
}

OfflineEqualizer::OfflineEqualizer(const EQPreset& preset, int sampleRate, bool bypass) {
    stage_.setEnabled(!bypass);
    stage_.setPreamp(preset.preamp);
    stage_.bands().setSampleRate(static_cast<float>(sampleRate));
    stage_.bands().setBands(preset.bands);
}

void OfflineEqualizer::process(float* frames, std::int64_t frameCount) {
    if (!stage_.isEnabled()) return;
    const std::int64_t count = 2 * frameCount;
    stage_.shape(frames, frameCount, 2);
    const float peak = maximumMagnitude(frames, count);
    if (peak > 1) clippedSamples_ += countBeyondFullScale(frames, count);
    peak_ = std::max(peak_, peak);
    softClip(frames, count);
}

} // namespace halvo::render
