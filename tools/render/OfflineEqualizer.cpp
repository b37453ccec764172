#include "render/OfflineEqualizer.h"

#include "audio/BandFrequencies.h"
#include "audio/BiquadCoefficients.h"
#include "audio/SampleMath.h"
#include "render/SampleCoding.h"

#include <algorithm>
#include <cmath>

namespace halvo::render {

namespace {

/// Whether the band can be set in single precision without growing by itself: it lies below half
/// the rate, and both poles, of the coefficients as they are rounded, lie within the unit circle.
bool isUsable(float gain, float frequency, float rate) {
    const auto filter = BiquadCoefficients::peaking(gain, frequency, rate);
    if (filter == BiquadCoefficients{}) return true;
    const double a1 = filter.a1;
    const double a2 = filter.a2;
    return 2 * frequency < rate && std::fabs(a2) < 1 && std::fabs(a1) < 1 + a2;
}

} // namespace

std::expected<void, std::string> OfflineEqualizer::check(const EQPreset& preset, int sampleRate) {
    const auto rate = static_cast<float>(sampleRate);
    if (sampleRate > kHighestRate) {
        return std::unexpected("the equalizer works up to 192000 frames per second, this has " +
                               std::to_string(sampleRate) + "; resample it first");
    }
    const std::size_t count = std::min(preset.bands.size(), kBandCount);
    for (std::size_t band = 0; band < count; ++band) {
        if (isUsable(preset.bands[band], kBandFrequencies[band], rate)) continue;
        const auto hertz = std::to_string(static_cast<int>(kBandFrequencies[band]));
        return std::unexpected(
            "the band at " + hertz + " Hz needs more than twice as many " +
            "frames per second, this has " + std::to_string(sampleRate) +
            "; resample it first, or set this band and those above it to 0 with --gains");
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
    const SampleBlock block(frames, frameCount, 2);
    const std::int64_t count = 2 * frameCount;
    stage_.shape(block);
    const float peak = maximumMagnitude(block.samples());
    if (peak > 1) clippedSamples_ += countBeyondFullScale(frames, count);
    peak_ = std::max(peak_, peak);
    softClip(block.samples());
    notFinite_ += silenceNotFinite(frames, count); // as the output does
}

} // namespace halvo::render
