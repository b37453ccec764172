#include "audio/RealFFT.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace halvo {

namespace {

constexpr std::size_t kDigits = 5; // 1024 = 4^5

std::uint16_t reversedDigits(std::size_t index) {
    std::size_t result = 0;
    for (std::size_t digit = 0; digit < kDigits; ++digit) {
        result = result * 4 + index % 4;
        index /= 4;
    }
    return static_cast<std::uint16_t>(result);
}

} // namespace

RealFFT::RealFFT() {
    for (std::size_t k = 0; k < kHalf; ++k) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(k) / kHalf;
        cosines_[k] = static_cast<float>(std::cos(angle));
        sines_[k] = static_cast<float>(-std::sin(angle));
        halfCosines_[k] = static_cast<float>(std::cos(angle / 2));
        halfSines_[k] = static_cast<float>(-std::sin(angle / 2));
        order_[k] = reversedDigits(k);
    }
}

void RealFFT::transform(Part& real, Part& imaginary) const noexcept HALVO_REALTIME {
    transformComplex(real, imaginary);
    reorder(real, imaginary);
    separate(halfCosines_, halfSines_, real, imaginary);
}

/// Radix 4, decimation in frequency: each stage splits every block into four interleaved ones.
void RealFFT::transformComplex(Part& real, Part& imaginary) const noexcept HALVO_REALTIME {
    float* const re = real.data();
    float* const im = imaginary.data();
    for (std::size_t quarter = kHalf / 4, step = 1; quarter >= 1; quarter /= 4, step *= 4) {
        for (std::size_t block = 0; block < kHalf; block += quarter * 4) {
            for (std::size_t k = 0; k < quarter; ++k) {
                const std::size_t a = block + k;
                const std::size_t b = a + quarter;
                const std::size_t c = b + quarter;
                const std::size_t d = c + quarter;
                const float sumRe = re[a] + re[c];
                const float sumIm = im[a] + im[c];
                const float differenceRe = re[a] - re[c];
                const float differenceIm = im[a] - im[c];
                const float oddSumRe = re[b] + re[d];
                const float oddSumIm = im[b] + im[d];
                const float oddDifferenceRe = re[b] - re[d];
                const float oddDifferenceIm = im[b] - im[d];
                const auto rotate = [&](std::size_t target, std::size_t turns, float x, float y) {
                    const float cosine = cosines_[turns * k * step];
                    const float sine = sines_[turns * k * step];
                    re[target] = x * cosine - y * sine;
                    im[target] = x * sine + y * cosine;
                };
                re[a] = sumRe + oddSumRe;
                im[a] = sumIm + oddSumIm;
                rotate(b, 1, differenceRe + oddDifferenceIm, differenceIm - oddDifferenceRe);
                rotate(c, 2, sumRe - oddSumRe, sumIm - oddSumIm);
                rotate(d, 3, differenceRe - oddDifferenceIm, differenceIm + oddDifferenceRe);
            }
        }
    }
}

void RealFFT::reorder(Part& real, Part& imaginary) const noexcept HALVO_REALTIME {
    for (std::size_t k = 0; k < kHalf; ++k) {
        const std::size_t other = order_[k];
        if (k >= other) continue;
        std::swap(real[k], real[other]);
        std::swap(imaginary[k], imaginary[other]);
    }
}

/// From the transform of even + i·odd samples to that of the samples themselves, doubled:
/// 2X(k) = Z(k) + Z*(N/2 − k) − i·W(k)·(Z(k) − Z*(N/2 − k)).
void RealFFT::separate(const Part& cosines, const Part& sines, Part& real,
                       Part& imaginary) noexcept HALVO_REALTIME {
    const float first = real[0];
    real[0] = 2 * (first + imaginary[0]);
    imaginary[0] = 2 * (first - imaginary[0]);
    for (std::size_t k = 1; k <= kHalf / 2; ++k) {
        const std::size_t mirror = kHalf - k;
        const float evenRe = real[k] + real[mirror];
        const float evenIm = imaginary[k] - imaginary[mirror];
        const float oddRe = imaginary[k] + imaginary[mirror];
        const float oddIm = real[mirror] - real[k];
        const float turnedRe = oddRe * cosines[k] - oddIm * sines[k];
        const float turnedIm = oddRe * sines[k] + oddIm * cosines[k];
        real[k] = evenRe + turnedRe;
        imaginary[k] = evenIm + turnedIm;
        real[mirror] = evenRe - turnedRe;
        imaginary[mirror] = turnedIm - evenIm;
    }
}

} // namespace halvo
