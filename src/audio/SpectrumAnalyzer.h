#pragma once

#include "audio/BandFrequencies.h"
#include "audio/RealFFT.h"
#include "audio/SampleBlock.h"
#include "audio/TripleBuffer.h"
#include "base/Realtime.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace halvo {

/// How much energy the processed sound has around each of the equalizer's bands: an FFT of every
/// 2048 frames, reduced to ten smoothed levels from 0 to 1.
class SpectrumAnalyzer {
  public:
    static constexpr std::size_t kFFTSize = RealFFT::kSize;
    /// Below this rate, in Hz, the highest band has no bin: `feed` must not be given such sound.
    static constexpr float kMinimumSampleRate = 22414;

    using BandLevels = std::array<float, kBandCount>;

    SpectrumAnalyzer();

    /// Takes in a block, the mean of the first two channels; runs the FFT whenever 2048
    /// frames are together. Render thread.
    void feed(const SampleBlock& block, float sampleRate) noexcept HALVO_REALTIME;

    /// Receives the levels on the main thread.
    std::function<void(const BandLevels&)> onSpectrumUpdate;
    /// Hands on the newest levels if there are any since the last call. Main thread.
    void deliver();

    /// The bins that a band averages, both included. A band without bins ends the process.
    struct BinRange {
        std::size_t lowest;
        std::size_t highest;
        bool operator==(const BinRange&) const = default;
    };
    static BinRange binsOfBand(std::size_t band, float sampleRate) noexcept HALVO_REALTIME;

  private:
    using Samples = std::array<float, kFFTSize>;

    void runFFT(float sampleRate) noexcept HALVO_REALTIME;
    float bandLevel(std::size_t band, float sampleRate) const noexcept HALVO_REALTIME;

    // Render thread.
    RealFFT fft_;
    Samples window_;
    Samples monoBuffer_{};
    std::size_t accumulatedCount_ = 0;
    RealFFT::Part real_{};
    RealFFT::Part imaginary_{};
    RealFFT::Part magnitudes_{}; ///< squared
    BandLevels bandLevels_{};
    // Shared.
    TripleBuffer<BandLevels> published_{BandLevels{}};
    std::atomic<bool> isFresh_{false};
};

} // namespace halvo
