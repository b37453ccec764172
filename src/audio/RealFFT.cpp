#include "audio/RealFFT.h"

#include <cmath>
#include <cstring>
#include <numbers>

// Radix 4 in five stages, each from one buffer into the other, so that the order is the natural one
// at the end without a step of its own. The numbers of four neighbours lie side by side in vectors.

namespace halvo {

namespace {

using Vector = float __attribute__((vector_size(16)));
constexpr std::size_t kLanes = 4;

/// Four complex numbers.
struct Quad {
    Vector re;
    Vector im;
};

Quad operator+(const Quad& a, const Quad& b) noexcept HALVO_REALTIME {
    return {a.re + b.re, a.im + b.im};
}

Quad operator-(const Quad& a, const Quad& b) noexcept HALVO_REALTIME {
    return {a.re - b.re, a.im - b.im};
}

Quad operator*(const Quad& a, const Quad& b) noexcept HALVO_REALTIME {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

Vector load(const float* from) noexcept HALVO_REALTIME {
    Vector result;
    std::memcpy(&result, from, sizeof result);
    return result;
}

void store(Vector value, float* to) noexcept HALVO_REALTIME {
    std::memcpy(to, &value, sizeof value);
}

Vector spread(float value) noexcept HALVO_REALTIME {
    return Vector{value, value, value, value};
}

Vector reversed(Vector v) noexcept HALVO_REALTIME {
    return __builtin_shufflevector(v, v, 3, 2, 1, 0);
}

/// The transform of four numbers, the last three turned by a factor each.
[[gnu::always_inline]] inline void butterfly(Quad (&x)[4],
                                             const Quad (&factors)[3]) noexcept HALVO_REALTIME {
    const Quad even = x[0] + x[2];
    const Quad evenDifference = x[0] - x[2];
    const Quad odd = x[1] + x[3];
    const Quad oddDifference = x[1] - x[3];
    const Quad quarterTurn{oddDifference.im, -oddDifference.re}; // times −i
    x[0] = even + odd;
    x[1] = (evenDifference + quarterTurn) * factors[0];
    x[2] = (even - odd) * factors[1];
    x[3] = (evenDifference - quarterTurn) * factors[2];
}

/// Writes four vectors as the columns of a square.
void storeTransposed(Vector a, Vector b, Vector c, Vector d, float* to) noexcept HALVO_REALTIME {
    const Vector lowAB = __builtin_shufflevector(a, b, 0, 4, 1, 5);
    const Vector lowCD = __builtin_shufflevector(c, d, 0, 4, 1, 5);
    const Vector highAB = __builtin_shufflevector(a, b, 2, 6, 3, 7);
    const Vector highCD = __builtin_shufflevector(c, d, 2, 6, 3, 7);
    store(__builtin_shufflevector(lowAB, lowCD, 0, 1, 4, 5), to);
    store(__builtin_shufflevector(lowAB, lowCD, 2, 3, 6, 7), to + kLanes);
    store(__builtin_shufflevector(highAB, highCD, 0, 1, 4, 5), to + 2 * kLanes);
    store(__builtin_shufflevector(highAB, highCD, 2, 3, 6, 7), to + 3 * kLanes);
}

} // namespace

RealFFT::RealFFT() {
    for (std::size_t turns = 1; turns <= factors_.size(); ++turns) {
        for (std::size_t p = 0; p < kHalf / 4; ++p) {
            const double angle = 2 * std::numbers::pi * static_cast<double>(turns * p) / kHalf;
            factors_[turns - 1].cosine[p] = static_cast<float>(std::cos(angle));
            factors_[turns - 1].sine[p] = static_cast<float>(-std::sin(angle));
        }
    }
    for (std::size_t k = 0; k < kHalf; ++k) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(k) / kSize;
        halfCosines_[k] = static_cast<float>(std::cos(angle));
        halfSines_[k] = static_cast<float>(-std::sin(angle));
    }
}

void RealFFT::transform(Part& real, Part& imaginary) noexcept HALVO_REALTIME {
    const Target given{real.data(), imaginary.data()};
    const Target scratch{scratch_.real.data(), scratch_.imaginary.data()};
    const auto reading = [](Target target) { return Source{target.real, target.imaginary}; };
    firstStage(reading(given), scratch);
    laterStage(4, reading(scratch), given);
    laterStage(16, reading(given), scratch);
    laterStage(64, reading(scratch), given);
    laterStage(256, reading(given), scratch);
    separate(reading(scratch), given);
}

void RealFFT::firstStage(Source source, Target target) const noexcept HALVO_REALTIME {
    constexpr std::size_t kQuarter = kHalf / 4;
    for (std::size_t p = 0; p < kQuarter; p += kLanes) {
        Quad x[4];
        for (std::size_t i = 0; i < 4; ++i)
            x[i] = {load(source.real + p + i * kQuarter),
                    load(source.imaginary + p + i * kQuarter)};
        Quad factors[3];
        for (std::size_t i = 0; i < 3; ++i)
            factors[i] = {load(&factors_[i].cosine[p]), load(&factors_[i].sine[p])};
        butterfly(x, factors);
        storeTransposed(x[0].re, x[1].re, x[2].re, x[3].re, target.real + 4 * p);
        storeTransposed(x[0].im, x[1].im, x[2].im, x[3].im, target.imaginary + 4 * p);
    }
}

void RealFFT::laterStage(std::size_t stride, Source source,
                         Target target) const noexcept HALVO_REALTIME {
    constexpr std::size_t kQuarter = kHalf / 4;
    for (std::size_t start = 0; start < kQuarter; start += stride) {
        Quad factors[3];
        for (std::size_t i = 0; i < 3; ++i)
            factors[i] = {spread(factors_[i].cosine[start]), spread(factors_[i].sine[start])};
        for (std::size_t at = start; at < start + stride; at += kLanes) {
            Quad x[4];
            for (std::size_t i = 0; i < 4; ++i) {
                const std::size_t from = at + i * kQuarter;
                x[i] = {load(source.real + from), load(source.imaginary + from)};
            }
            butterfly(x, factors);
            for (std::size_t i = 0; i < 4; ++i) {
                const std::size_t to = at + 3 * start + i * stride;
                store(x[i].re, target.real + to);
                store(x[i].im, target.imaginary + to);
            }
        }
    }
}

/// From the transform Z of even + i·odd samples to that of the samples themselves, doubled:
/// 2X(k) = Z(k) + Z*(N/2 − k) − i·W(k)·(Z(k) − Z*(N/2 − k)).
void RealFFT::separate(Source source, Target target) const noexcept HALVO_REALTIME {
    target.real[0] = 2 * (source.real[0] + source.imaginary[0]);
    target.imaginary[0] = 2 * (source.real[0] - source.imaginary[0]);
    for (std::size_t k = 1; k <= kHalf / 2; k += kLanes) {
        const std::size_t mirror = kHalf - k - (kLanes - 1);
        const Quad low{load(source.real + k), load(source.imaginary + k)};
        const Quad high{reversed(load(source.real + mirror)),
                        reversed(load(source.imaginary + mirror))};
        const Quad even{low.re + high.re, low.im - high.im};
        const Quad odd{low.im + high.im, high.re - low.re};
        const Quad turned = odd * Quad{load(&halfCosines_[k]), load(&halfSines_[k])};
        store(even.re + turned.re, target.real + k);
        store(even.im + turned.im, target.imaginary + k);
        store(reversed(even.re - turned.re), target.real + mirror);
        store(reversed(turned.im - even.im), target.imaginary + mirror);
    }
}

} // namespace halvo
