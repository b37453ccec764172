#include "demo/DemoTrack.h"
#include "demo/ExpectedResponse.h"
#include "demo/TransferFunction.h"
#include "presets/FactoryPresets.h"
#include "unit/demo/Filtered.h"

#include <gtest/gtest.h>

#include <cmath>

namespace halvo::demo {
namespace {

TEST(DemoTrackTest, HasItsPartsAlwaysTheSame) {
    const DemoTrack track;
    EXPECT_EQ(track.sound.samples, DemoTrack().sound.samples);
    EXPECT_EQ(track.sound.frameCount(), 504'000U);
    EXPECT_NEAR(track.sweep.peak(), DemoTrack::kSweepPeak, 0.001);
    for (std::ptrdiff_t second = 0; second < 6; ++second)
        EXPECT_GT(track.music.stretch(second * 48000, 48000).peak(), 0.1F) << "second " << second;
    EXPECT_EQ(track.sound.stretch(9 * 48000 + 24001, 43200).peak(), 0.0F) << "ends in silence";
    EXPECT_EQ(countInterruptions(track.sound, track.sound), 0U);
}

TEST(DemoTrackTest, NeverReachesTheClipperWithTheFirstPreset) {
    const ExpectedResponse response(defaultPresets().front().bands, kSampleRate);
    const float loudest = filtered(response, DemoTrack().sound).peak();
    EXPECT_LT(loudest, 0.95F);
    EXPECT_GT(loudest, 0.4F);
}

TEST(DemoTrackTest, SweepIsAsLoudInEveryBand) {
    // The spectrum of a logarithmic sweep falls by 3 dB an octave.
    const DemoTrack track;
    StereoSound impulse;
    impulse.samples = {1, 1};
    const TransferFunction spectrum(impulse, track.sweep);
    const double level = spectrum.decibelsAt(1000, 0);
    for (const double frequency : kBandFrequencies)
        EXPECT_NEAR(spectrum.decibelsAt(frequency, 0), level - 10 * std::log10(frequency / 1000),
                    1.0)
            << frequency;
}

} // namespace
} // namespace halvo::demo
