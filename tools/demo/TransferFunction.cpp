#include "TransferFunction.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace halvo::demo {
namespace {

/// One term of the discrete Fourier transform: the sum of x(n) e^(-jωn).
std::complex<double> fourierSum(const StereoSound& sound, double frequencyHz, std::size_t channel) {
    const std::complex<double> step =
        std::polar(1.0, -2 * std::numbers::pi * frequencyHz / kSampleRate);
    std::complex<double> sum = 0;
    std::complex<double> phase = 1;
    for (std::size_t frame = 0; frame < sound.frameCount(); ++frame) {
        sum += static_cast<double>(sound.at(frame, channel)) * phase;
        phase *= step;
    }
    return sum;
}

} // namespace

double TransferFunction::decibelsAt(double frequencyHz, std::size_t channel) const {
    const double played = std::abs(fourierSum(played_, frequencyHz, channel));
    const double recorded = std::abs(fourierSum(recorded_, frequencyHz, channel));
    if (!(recorded > played * 1e-10)) return kNothingArrived;
    return 20 * std::log10(recorded / played);
}

} // namespace halvo::demo
