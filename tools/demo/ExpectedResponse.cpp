#include "ExpectedResponse.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace halvo::demo {

PeakingFilter PeakingFilter::design(double frequencyHz, double gainDb, double sampleRate) {
    const double amplitude = std::pow(10.0, gainDb / 40);
    const double angle = 2 * std::numbers::pi * frequencyHz / sampleRate;
    const double alpha = std::sin(angle) / (2 * 1.414);
    const double a0 = 1 + alpha / amplitude;
    return {.b0 = (1 + alpha * amplitude) / a0,
            .b1 = -2 * std::cos(angle) / a0,
            .b2 = (1 - alpha * amplitude) / a0,
            .a1 = -2 * std::cos(angle) / a0,
            .a2 = (1 - alpha / amplitude) / a0};
}

ExpectedResponse::ExpectedResponse(std::span<const float> gainsDb, double sampleRate)
    : sampleRate_(sampleRate) {
    const std::size_t count = std::min(gainsDb.size(), filters_.size());
    for (std::size_t band = 0; band < count; ++band)
        filters_[band] = PeakingFilter::design(kBandFrequencies[band],
                                               static_cast<double>(gainsDb[band]), sampleRate);
}

double ExpectedResponse::decibelsAt(double frequencyHz) const {
    const std::complex<double> delay =
        std::polar(1.0, -2 * std::numbers::pi * frequencyHz / sampleRate_);
    double magnitude = 1;
    for (const PeakingFilter& filter : filters_)
        magnitude *= std::abs((filter.b0 + delay * (filter.b1 + delay * filter.b2)) /
                              (1.0 + delay * (filter.a1 + delay * filter.a2)));
    return 20 * std::log10(magnitude);
}

} // namespace halvo::demo
