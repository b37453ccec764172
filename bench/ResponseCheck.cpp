#include "ResponseCheck.h"

#include "BenchSound.h"
#include "demo/ExpectedResponse.h"
#include "demo/TransferFunction.h"

#include <cmath>
#include <vector>

namespace halvo::bench {

using demo::kBandFrequencies;
using demo::kSampleRate;
using demo::StereoSound;

namespace {

std::vector<double> frequencies() {
    std::vector<double> result{20, 20000};
    for (std::size_t band = 0; band < kBandFrequencies.size(); ++band) {
        result.push_back(kBandFrequencies[band]);
        if (band > 0) result.push_back(std::sqrt(kBandFrequencies[band - 1] * result.back()));
    }
    return result;
}

} // namespace

StereoSound click() {
    constexpr float kHeight = 0.1F; // loud bands and all, it stays below full scale
    StereoSound sound(kSampleRate);
    constexpr std::size_t kFrame = kSampleRate / 4;
    sound.samples[kFrame * 2] = kHeight;
    sound.samples[kFrame * 2 + 1] = kHeight;
    return sound;
}

Deviation deviation(const StereoSound& played, const StereoSound& filtered) {
    const demo::TransferFunction transfer(played, filtered);
    const demo::ExpectedResponse expected(presetGains(), kSampleRate);
    Deviation worst;
    for (const double frequency : frequencies()) {
        for (const std::size_t channel : {0U, 1U}) {
            const double off =
                std::abs(transfer.decibelsAt(frequency, channel) - expected.decibelsAt(frequency));
            if (off > worst.decibels) worst = {off, frequency};
        }
    }
    return worst;
}

} // namespace halvo::bench
