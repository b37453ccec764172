#pragma once

#include <array>
#include <span>

namespace halvo::demo {

/// Centre frequencies of the equalizer's bands in Hz, lowest first.
constexpr std::array<double, 10> kBandFrequencies{32,   64,   125,  250,  500,
                                                  1000, 2000, 4000, 8000, 16000};

/// One peaking filter in double precision, normalised so that a0 is 1.
struct PeakingFilter {
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;

    /// Audio EQ Cookbook, peaking EQ, with Q = 1.414.
    static PeakingFilter design(double frequencyHz, double gainDb, double sampleRate);
};

/// What the ten-band cascade should do, computed from the formula alone: shares no code with the
/// equalizer that it judges.
class ExpectedResponse {
  public:
    /// `gainsDb`: up to ten gains, lowest band first; missing ones are flat.
    ExpectedResponse(std::span<const float> gainsDb, double sampleRate);

    /// The cascade's gain in dB for a steady tone of `frequencyHz`.
    double decibelsAt(double frequencyHz) const;

    const std::array<PeakingFilter, 10>& filters() const { return filters_; }

  private:
    double sampleRate_;
    std::array<PeakingFilter, 10> filters_;
};

} // namespace halvo::demo
