#pragma once

#include "audio/AudioEngine.h"
#include "audio/BiquadCascade.h"
#include "audio/RealFFT.h"
#include "bench/PlainCascade.h"
#include "fake/FakePlatform.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace halvo::bench {

/// The render path and its parts, each on its own, on blocks of stereo frames in place. Every stage
/// has work to do: no flat band, a preamp, a volume below unity.
class RenderPieces {
  public:
    struct Piece {
        const char* name;
        void (*run)(RenderPieces& pieces, float* samples, std::int64_t frameCount);
        bool (*canRun)() = [] { return true; };
    };
    /// The cascade alone, beside its limit and the plain loop.
    static std::span<const Piece> cascades();
    /// What `processBuffer` does, in its order.
    static std::span<const Piece> stages();
    /// All of `processBuffer`, and the same with the plain loop for the cascade.
    static std::span<const Piece> wholes();

    /// One transform for every 2048 frames, whose samples stay as they are.
    static const Piece& transform();

    RenderPieces();

    /// Noise of a tenth of full scale; always the same.
    static std::vector<float> noise(std::int64_t frameCount);
    static const char* nameOf(BiquadCascade::Form form);

  private:
    float limit_ = 0; ///< the limit's own memory
    FakePlatform platform_;
    AudioEngine engine_;
    AudioMeter meter_{platform_.mainQueue};
    SpectrumAnalyzer spectrum_;
    BiquadCascade::Coefficients coefficients_;
    PlainCascade plain_;
    BiquadCascade fourLanes_{BiquadCascade::Form::FourLanes};
    BiquadCascade eightLanes_{BiquadCascade::Form::EightLanes};
    TenBandEQ equalizer_;
    RealFFT fft_;
    RealFFT::Part real_{};
    RealFFT::Part imaginary_{};
};

} // namespace halvo::bench
