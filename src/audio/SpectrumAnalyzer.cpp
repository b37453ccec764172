#include "audio/SpectrumAnalyzer.h"

#include "audio/SampleMath.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <span>

namespace halvo {

namespace {

constexpr float kBinsPerHertz = 0.00048828125F; // 1 / 2048
constexpr float kHalfBandwidth = 0.3F;          // of the centre frequency
constexpr float kQuietest = 1e-10F;
constexpr float kRangeDb = 60;
constexpr float kSmoothing = 0.3F;

} // namespace

SpectrumAnalyzer::SpectrumAnalyzer() {
    // Hann, periodic, normalised so that its mean square is 1.
    const double scale = std::sqrt(8.0 / 3.0) / 2;
    for (std::size_t n = 0; n < kFFTSize; ++n) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(n) / kFFTSize;
        window_[n] = static_cast<float>(scale * (1 - std::cos(angle)));
    }
}

void SpectrumAnalyzer::feed(const SampleBlock& block, float sampleRate) noexcept HALVO_REALTIME {
    const float* samples = block.samples().data();
    std::int64_t frameCount = block.frameCount();
    const std::int64_t channelCount = block.channelCount();
    while (frameCount > 0) {
        const auto room = static_cast<std::int64_t>(kFFTSize - accumulatedCount_);
        const std::int64_t count = std::min(frameCount, room);
        float* const mono = monoBuffer_.data() + accumulatedCount_;
        if (channelCount == 2) {
            for (std::int64_t i = 0; i < count; ++i)
                mono[i] = (samples[2 * i] + samples[2 * i + 1]) * 0.5F;
        } else {
            const bool isMono = channelCount < 2;
            for (std::int64_t i = 0; i < count; ++i) {
                const float* const first = samples + i * channelCount;
                mono[i] = isMono ? first[0] : (first[0] + first[1]) * 0.5F;
            }
        }
        samples += count * channelCount;
        frameCount -= count;
        accumulatedCount_ += static_cast<std::size_t>(count);
        if (accumulatedCount_ < kFFTSize) return;
        runFFT(sampleRate);
        accumulatedCount_ = 0;
    }
}

void SpectrumAnalyzer::deliver() {
    if (!isFresh_.exchange(false, std::memory_order_acquire)) return;
    if (onSpectrumUpdate) onSpectrumUpdate(published_.read());
}

SpectrumAnalyzer::BinRange SpectrumAnalyzer::binsOfBand(std::size_t band,
                                                        float sampleRate) noexcept HALVO_REALTIME {
    const float binWidth = sampleRate * kBinsPerHertz;
    const float frequency = kBandFrequencies[band];
    const auto centre = static_cast<std::int64_t>(frequency / binWidth);
    const auto halfWidth =
        std::max<std::int64_t>(static_cast<std::int64_t>(frequency * kHalfBandwidth / binWidth), 1);
    const auto lowest = std::max<std::int64_t>(centre - halfWidth, 1);
    const auto highest =
        std::min<std::int64_t>(centre + halfWidth, std::int64_t{RealFFT::kHalf} - 1);
    if (lowest > highest) __builtin_trap(); // by design not guarded
    return {static_cast<std::size_t>(lowest), static_cast<std::size_t>(highest)};
}

void SpectrumAnalyzer::runFFT(float sampleRate) noexcept HALVO_REALTIME {
    for (std::size_t k = 0; k < RealFFT::kHalf; ++k) {
        real_[k] = monoBuffer_[2 * k] * window_[2 * k];
        imaginary_[k] = monoBuffer_[2 * k + 1] * window_[2 * k + 1];
    }
    fft_.transform(real_, imaginary_);
    for (std::size_t k = 0; k < RealFFT::kHalf; ++k) {
        magnitudes_[k] = real_[k] * real_[k] + imaginary_[k] * imaginary_[k];
    }
    for (std::size_t band = 0; band < kBandCount; ++band) {
        bandLevels_[band] += (bandLevel(band, sampleRate) - bandLevels_[band]) * kSmoothing;
    }
    published_.write(bandLevels_);
    isFresh_.store(true, std::memory_order_release);
}

float SpectrumAnalyzer::bandLevel(std::size_t band,
                                  float sampleRate) const noexcept HALVO_REALTIME {
    const auto [lowest, highest] = binsOfBand(band, sampleRate);
    const std::span bins(&magnitudes_[lowest], highest - lowest + 1);
    const float mean = sum(bins) / static_cast<float>(std::ssize(bins));
    const float power = mean * kBinsPerHertz;
    // In this order a power that is no number counts as silence and does not stay in the smoothing.
    const float decibels = 10 * std::log10(std::max(kQuietest, power));
    return std::clamp((decibels + kRangeDb) / kRangeDb, 0.0F, 1.0F);
}

} // namespace halvo
