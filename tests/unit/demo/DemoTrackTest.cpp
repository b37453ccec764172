#include "demo/DemoTrack.h"
#include "demo/ExpectedResponse.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace halvo::demo {
namespace {

/// The first factory preset: the strongest treatment that the track gets.
constexpr std::array<float, 10> kFirstPreset{5.24F, 13.84F, 11.3F, 2.66F, -4.38F,
                                             -3.0F, 4.64F,  5.3F,  6.0F,  7.5F};

float peakThrough(const ExpectedResponse& response, const StereoSound& sound) {
    float largest = 0;
    for (std::size_t channel = 0; channel < 2; ++channel) {
        std::array<std::array<double, 2>, 10> state{};
        for (std::size_t frame = 0; frame < sound.frameCount(); ++frame) {
            auto sample = static_cast<double>(sound.at(frame, channel));
            for (std::size_t band = 0; band < state.size(); ++band) {
                const PeakingFilter& filter = response.filters()[band];
                const double output = filter.b0 * sample + state[band][0];
                state[band][0] = filter.b1 * sample - filter.a1 * output + state[band][1];
                state[band][1] = filter.b2 * sample - filter.a2 * output;
                sample = output;
            }
            largest = std::max(largest, static_cast<float>(std::abs(sample)));
        }
    }
    return largest;
}

double rms(const StereoSound& sound, std::size_t first, std::size_t length) {
    double sum = 0;
    for (std::size_t index = 2 * first; index < 2 * (first + length); ++index)
        sum +=
            static_cast<double>(sound.samples[index]) * static_cast<double>(sound.samples[index]);
    return std::sqrt(sum / (2.0 * static_cast<double>(length)));
}

TEST(DemoTrackTest, IsTheSameEachTime) {
    EXPECT_EQ(DemoTrack().sound().samples, DemoTrack().sound().samples);
}

TEST(DemoTrackTest, HasItsPartsAndLeavesRoomForTwelveDecibels) {
    const DemoTrack track;
    EXPECT_NEAR(track.sound().seconds(), 11.1, 0.2);
    EXPECT_LE(track.sound().peak(), 0.2001F);
    EXPECT_GT(track.music().peak(), 0.15F);
    EXPECT_NEAR(track.sweep().peak(), DemoTrack::kSweepPeak, 0.001);
    EXPECT_EQ(track.sound().stretch(10 * 48000 + 9600, 43200).peak(), 0.0F) << "ends in silence";
    for (std::size_t second = 0; second < 5; ++second)
        EXPECT_GT(rms(track.music(), second * 48000, 48000), 0.01) << "second " << second;
}

TEST(DemoTrackTest, NeverReachesTheClipperWithTheFirstPreset) {
    const DemoTrack track;
    const ExpectedResponse response(kFirstPreset, kSampleRate);
    const float loudest = peakThrough(response, track.sound());
    EXPECT_LT(loudest, 0.95F);
    EXPECT_GT(loudest, 0.4F);
}

TEST(DemoTrackTest, SweepReachesEveryBand) {
    // A logarithmic sweep spends the same time in each octave: 4 s / log2(1000) = 0.4 s.
    const StereoSound sweep = DemoTrack().sweep();
    std::size_t crossings = 0;
    std::size_t lastHalf = 0;
    for (std::size_t frame = 1; frame < 4 * 48000; ++frame)
        if ((sweep.left(frame - 1) < 0) != (sweep.left(frame) < 0)) {
            ++crossings;
            if (frame >= 2 * 48000) ++lastHalf;
        }
    // Turns of the phase: f0 (e^(rt) - 1) / r with r = ln(1000) / 4 s; two crossings per turn.
    EXPECT_NEAR(static_cast<double>(crossings), 2 * 20 * 999 / 1.7269, 10);
    EXPECT_NEAR(static_cast<double>(lastHalf), 2 * 20 * (1000 - 31.6228) / 1.7269, 10);
}

} // namespace
} // namespace halvo::demo
