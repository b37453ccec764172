#include "demo/DemoTrack.h"
#include "demo/ExpectedResponse.h"
#include "unit/demo/Filtered.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace halvo::demo {
namespace {

/// The first factory preset: the strongest treatment that the track gets.
constexpr std::array<float, 10> kFirstPreset{5.24F, 13.84F, 11.3F, 2.66F, -4.38F,
                                             -3.0F, 4.64F,  5.3F,  6.0F,  7.5F};

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
    EXPECT_NEAR(track.sound().seconds(), 10.6, 0.2);
    EXPECT_LE(track.sound().peak(), 0.2001F);
    EXPECT_GT(track.music().peak(), 0.15F);
    EXPECT_NEAR(track.sweep().peak(), DemoTrack::kSweepPeak, 0.001);
    EXPECT_EQ(track.sound().stretch(9 * 48000 + 33600, 43200).peak(), 0.0F) << "ends in silence";
    for (std::size_t second = 0; second < 5; ++second)
        EXPECT_GT(rms(track.music(), second * 48000, 48000), 0.01) << "second " << second;
}

TEST(DemoTrackTest, NeverReachesTheClipperWithTheFirstPreset) {
    const DemoTrack track;
    const ExpectedResponse response(kFirstPreset, kSampleRate);
    const float loudest = filtered(response, track.sound()).peak();
    EXPECT_LT(loudest, 0.95F);
    EXPECT_GT(loudest, 0.4F);
}

TEST(DemoTrackTest, SweepReachesEveryBand) {
    const StereoSound sweep = DemoTrack().sweep();
    std::size_t crossings = 0;
    std::size_t lastHalf = 0;
    for (std::size_t frame = 1; frame < 168000; ++frame)
        if ((sweep.left(frame - 1) < 0) != (sweep.left(frame) < 0)) {
            ++crossings;
            if (frame >= 84000) ++lastHalf;
        }
    // Turns of the phase after t seconds: f0 (e^(rt) - 1) / r with r = ln(1000) / 3.5 s; in the
    // middle e^(rt) is the root of 1000. Two crossings per turn.
    const double rate = std::log(1000) / 3.5;
    EXPECT_NEAR(static_cast<double>(crossings), 2 * 20 * 999 / rate, 10);
    EXPECT_NEAR(static_cast<double>(lastHalf), 2 * 20 * (1000 - std::sqrt(1000)) / rate, 10);
}

} // namespace
} // namespace halvo::demo
