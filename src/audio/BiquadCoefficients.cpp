#include "audio/BiquadCoefficients.h"

#include <cmath>

namespace halvo {

namespace {

// As written, not refined: every installation has the same curves to the last bit.
constexpr float kTwoPi = 6.283185F;
constexpr float kTwoQ = 2.828F;
constexpr float kFlatLimit = 0.01F; // dB

} // namespace

BiquadCoefficients BiquadCoefficients::peaking(float gain, float frequency, float sampleRate) {
    if (std::fabs(gain) <= kFlatLimit) return {};
    const float amplitude = std::pow(10.0F, gain / 40.0F);
    const float w0 = kTwoPi * frequency / sampleRate;
    const float alpha = std::sin(w0) / kTwoQ;
    const float a0 = 1.0F + alpha / amplitude;
    const float middle = -2.0F * std::cos(w0) / a0;
    const BiquadCoefficients result{(1.0F + alpha * amplitude) / a0, middle,
                                    (1.0F - alpha * amplitude) / a0, middle,
                                    (1.0F - alpha / amplitude) / a0};
    const bool usable = std::isfinite(result.b0) && std::isfinite(result.b1) &&
                        std::isfinite(result.b2) && std::isfinite(result.a2);
    return usable ? result : BiquadCoefficients{};
}

} // namespace halvo
