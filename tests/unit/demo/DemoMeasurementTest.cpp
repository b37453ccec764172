#include "demo/ExpectedResponse.h"
#include "demo/TransferFunction.h"
#include "unit/demo/Filtered.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace halvo::demo {
namespace {

/// A short rising tone with silence before and after, different in the two channels.
StereoSound testSweep() {
    StereoSound sound(48000);
    double phase = 0;
    for (std::size_t frame = 2000; frame < 40000; ++frame) {
        const double time = static_cast<double>(frame - 2000) / 38000;
        phase += 2 * std::numbers::pi * 20 * std::pow(1000.0, time) / kSampleRate;
        sound.samples[frame * 2] = static_cast<float>(0.1 * std::sin(phase));
        sound.samples[frame * 2 + 1] = static_cast<float>(0.05 * std::cos(phase));
    }
    return sound;
}

/// y(n) = 0.5 x(n) + 0.25 x(n - 1), `delay` frames late: its gain is known in closed form.
StereoSound twoTapFilter(const StereoSound& sound, std::size_t delay) {
    const std::size_t length = sound.frameCount() + delay + 1;
    const auto shift = -static_cast<std::ptrdiff_t>(delay);
    StereoSound result = sound.stretch(shift, length);
    const StereoSound next = sound.stretch(shift - 1, length);
    for (std::size_t index = 0; index < result.samples.size(); ++index)
        result.samples[index] = 0.5F * result.samples[index] + 0.25F * next.samples[index];
    return result;
}

TEST(TransferFunctionTest, MeasuresAKnownFilterWhateverTheDelay) {
    const StereoSound played = testSweep();
    for (std::size_t delay : {std::size_t{0}, std::size_t{1}, std::size_t{1777}}) {
        const TransferFunction transfer(played, twoTapFilter(played, delay));
        for (double frequency : {32.0, 1000.0, 8000.0, 16000.0}) {
            const double angle = 2 * std::numbers::pi * frequency / kSampleRate;
            const double expected = 20 * std::log10(std::abs(0.5 + 0.25 * std::polar(1.0, -angle)));
            for (std::size_t channel : {std::size_t{0}, std::size_t{1}})
                EXPECT_NEAR(transfer.decibelsAt(frequency, channel), expected, 0.001)
                    << frequency << " Hz, channel " << channel << ", delay " << delay;
        }
    }
}

TEST(TransferFunctionTest, TellsTheChannelsApart) {
    const StereoSound played = testSweep();
    StereoSound recorded = played;
    for (std::size_t frame = 0; frame < recorded.frameCount(); ++frame)
        recorded.samples[frame * 2 + 1] *= 0.5F;
    const TransferFunction transfer(played, recorded);
    EXPECT_NEAR(transfer.decibelsAt(1000, 0), 0.0, 1e-9);
    EXPECT_NEAR(transfer.decibelsAt(1000, 1), -6.0206, 1e-3);
}

TEST(ExpectedResponseTest, FollowsTheWorkedNumbers) {
    std::vector<float> gains(10, 0.0F);
    gains[5] = 12;
    const ExpectedResponse response(gains, 48000);
    const PeakingFilter& filter = response.filters()[5];
    EXPECT_NEAR(filter.b0, 1.0674, 5e-5);
    EXPECT_NEAR(filter.a2, 0.9548, 5e-5);
    EXPECT_NEAR(response.decibelsAt(1000), 12.0, 0.01);
    EXPECT_NEAR(response.decibelsAt(20), 0.0, 0.01);
    EXPECT_NEAR(response.decibelsAt(23000), 0.0, 0.01);
}

TEST(ExpectedResponseTest, AddsUpNeighboursAndMirrorsTheSign) {
    const std::vector<float> up{0, 0, 0, 0, 6, 6};
    const std::vector<float> down{0, 0, 0, 0, -6, -6};
    const double sum = ExpectedResponse(up, 48000).decibelsAt(500);
    EXPECT_GT(sum, 6.5);
    EXPECT_LT(sum, 9.0);
    EXPECT_NEAR(ExpectedResponse(down, 48000).decibelsAt(500), -sum, 1e-9);
    EXPECT_EQ(ExpectedResponse({}, 48000).decibelsAt(1000), 0.0);
}

TEST(InterruptionsTest, AreSilenceWhereSomethingWasPlayed) {
    const StereoSound played = testSweep();
    const auto withHole = [](StereoSound sound, std::size_t first, std::size_t length) {
        for (std::size_t index = 2 * first; index < 2 * (first + length); ++index)
            sound.samples[index] = 0;
        return sound;
    };
    const StereoSound late = played.stretch(-1000, 60000);
    EXPECT_EQ(countInterruptions(played, late), 0U);
    EXPECT_EQ(countInterruptions(played, withHole(late, 20000, 1024)), 1U);
    EXPECT_EQ(countInterruptions(played, withHole(late, 20000, 3)), 0U) << "a zero crossing";
    EXPECT_EQ(countInterruptions(played, withHole(late, 500, 1024)), 0U) << "nothing was played";
    EXPECT_EQ(countInterruptions(played, withHole(late, 3000, 1024)), 1U) << "the beginning";
    EXPECT_EQ(countInterruptions(played, withHole(late, 40000, 1024)), 1U) << "the end";
    EXPECT_EQ(countInterruptions(played, StereoSound(48000)), 1U) << "all of it";
    std::vector<float> gains(10, 12.0F);
    EXPECT_EQ(countInterruptions(played, filtered(ExpectedResponse(gains, kSampleRate), played)),
              0U);
}

} // namespace
} // namespace halvo::demo
