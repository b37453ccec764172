#pragma once

namespace halvo {

/// A second-order section, normalised so that a0 is 1; the feedback terms are subtracted.
struct BiquadCoefficients {
    float b0 = 1;
    float b1 = 0;
    float b2 = 0;
    float a1 = 0;
    float a2 = 0;

    bool operator==(const BiquadCoefficients&) const = default;

    /// A peaking filter of Q 1.414 with `gain` dB at `frequency` Hz; within 0.01 dB of flat the
    /// identity, as is a gain too large for single precision. Audio EQ Cookbook, peaking EQ, in
    /// single precision. Any thread.
    static BiquadCoefficients peaking(float gain, float frequency, float sampleRate);
};

} // namespace halvo
