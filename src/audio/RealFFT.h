#pragma once

#include "base/Realtime.h"

#include <array>
#include <cstddef>
#include <cstdint>

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
    void transform(Part& real, Part& imaginary) const noexcept HALVO_REALTIME;

  private:
    void transformComplex(Part& real, Part& imaginary) const noexcept HALVO_REALTIME;
    void reorder(Part& real, Part& imaginary) const noexcept HALVO_REALTIME;
    static void separate(const Part& cosines, const Part& sines, Part& real,
                         Part& imaginary) noexcept HALVO_REALTIME;

    Part cosines_;                           ///< cos(2πk/1024)
    Part sines_;                             ///< −sin(2πk/1024)
    Part halfCosines_;                       ///< cos(2πk/2048)
    Part halfSines_;                         ///< −sin(2πk/2048)
    std::array<std::uint16_t, kHalf> order_; ///< digits of the index in base 4, reversed
};

} // namespace halvo
