#pragma once

#include "base/Realtime.h"

#include <array>
#include <cstddef>

namespace halvo {

/// The forward Fourier transform of 2048 real samples. The plan is made once; transforming
/// allocates nothing. The result is twice the mathematical transform, as the levels were defined.
class RealFFT {
  public:
    static constexpr std::size_t kSize = 2048;
    static constexpr std::size_t kHalf = kSize / 2;

    /// One half of a split-complex buffer.
    using Part = std::array<float, kHalf>;

    RealFFT();

    /// Transforms in place. In: even samples in `real`, odd ones in `imaginary`. Out: bin k of
    /// 0 … 1023; bin 0 holds the constant part (real) and the Nyquist frequency (imaginary).
    /// Render thread.
    void transform(Part& real, Part& imaginary) noexcept HALVO_REALTIME;

  private:
    struct Split {
        Part real;
        Part imaginary;
    };
    /// Two parts, to be read from or written to.
    struct Source {
        const float* real;
        const float* imaginary;
    };
    struct Target {
        float* real;
        float* imaginary;
    };
    /// The factors exp(−2πi·turns·p/1024).
    struct Factors {
        std::array<float, kHalf / 4> cosine;
        std::array<float, kHalf / 4> sine;
    };

    void firstStage(Source source, Target target) const noexcept HALVO_REALTIME;
    void laterStage(std::size_t stride, Source source, Target target) const noexcept HALVO_REALTIME;
    void separate(Source source, Target target) const noexcept HALVO_REALTIME;

    std::array<Factors, 3> factors_;       ///< of one, two and three turns
    std::array<float, kHalf> halfCosines_; ///< cos(2πk/2048)
    std::array<float, kHalf> halfSines_;   ///< −sin(2πk/2048)
    Split scratch_{};
};

} // namespace halvo
