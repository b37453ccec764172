#pragma once

#include "StereoSound.h"

namespace halvo::demo {

/// What a path did to a sweep: the ratio of the Fourier sums of what came out and what went in.
/// Exact for a linear path that does not change with time, as long as the recording holds the
/// whole sweep with its decay and silence around it; a delay between the two does not matter.
class TransferFunction {
  public:
    static constexpr double kNothingArrived = -200;

    TransferFunction(StereoSound played, StereoSound recorded)
        : played_(std::move(played)), recorded_(std::move(recorded)) {}

    /// The path's gain in dB at `frequencyHz` in channel 0 or 1; `kNothingArrived` when nothing of
    /// that frequency was played or arrived.
    double decibelsAt(double frequencyHz, std::size_t channel) const;

  private:
    StereoSound played_;
    StereoSound recorded_;
};

} // namespace halvo::demo
