#include "demo/Alignment.h"
#include "demo/ExpectedResponse.h"
#include "demo/TransferFunction.h"
#include "unit/demo/Filtered.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <string>
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
    StereoSound result(sound.frameCount() + delay + 1);
    for (std::size_t frame = 0; frame < sound.frameCount(); ++frame)
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const float sample = sound.at(frame, channel);
            result.samples[(frame + delay) * 2 + channel] += 0.5F * sample;
            result.samples[(frame + delay + 1) * 2 + channel] += 0.25F * sample;
        }
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

TEST(TransferFunctionTest, FindsTheFormulaOfTheCascade) {
    // A filter that rings, measured over a sweep, answers to the formula of its response.
    const std::vector<float> gains{12, 0, 0, 12, 0, -12, 0, 0, 6, -6};
    const ExpectedResponse response(gains, kSampleRate);
    const StereoSound played = testSweep().stretch(0, 60000);
    const TransferFunction transfer(played, filtered(response, played));
    for (double frequency : kBandFrequencies)
        EXPECT_NEAR(transfer.decibelsAt(frequency, 1), response.decibelsAt(frequency), 0.002)
            << frequency;
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

TEST(AlignmentTest, FindsThePlaceOfARecording) {
    const StereoSound played = testSweep();
    struct Case {
        std::string name;
        std::ptrdiff_t begin; ///< where the recording starts within what was played
        std::size_t length;
        std::ptrdiff_t offset;
    };
    const std::vector<Case> cases{
        {"later than played", -30000, 90000, 30000},
        {"at once", 0, 48000, 0},
        {"the recording began late, within the silence", 1500, 46500, -1500},
    };
    for (const Case& item : cases) {
        const auto found = Alignment::find(played, played.stretch(item.begin, item.length));
        ASSERT_TRUE(found) << item.name;
        EXPECT_EQ(found->offset, item.offset) << item.name;
        EXPECT_NEAR(found->similarity, 1.0, 1e-6) << item.name;
    }
}

TEST(AlignmentTest, SurvivesALeadingCrackleAndALevel) {
    const StereoSound played = testSweep();
    StereoSound recorded = played.stretch(-5000, 60000);
    for (float& sample : recorded.samples)
        sample *= 0.3F;
    recorded.samples[2 * (5000 + 2000 - 900)] = 0.01F;
    const auto found = Alignment::find(played, recorded);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->offset, 5000);
}

TEST(AlignmentTest, IsNotMisledByAFiltersPhase) {
    std::vector<float> gains(10, 0.0F);
    gains[0] = 12;
    const StereoSound played = testSweep();
    const StereoSound recorded = filtered(ExpectedResponse(gains, kSampleRate), played);
    const auto found = Alignment::find(played, recorded);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->offset, 0);
    EXPECT_EQ(countGaps(played, recorded), 0U);
}

TEST(AlignmentTest, RefusesSilence) {
    EXPECT_FALSE(Alignment::find(testSweep(), StereoSound(48000)));
    EXPECT_FALSE(Alignment::find(StereoSound(48000), testSweep()));
}

TEST(AlignmentTest, RefusesAnotherSound) {
    StereoSound whistle(48000);
    for (std::size_t index = 0; index < whistle.samples.size(); ++index)
        whistle.samples[index] = static_cast<float>(std::sin(0.7 * static_cast<double>(index / 2)));
    EXPECT_FALSE(Alignment::find(testSweep(), whistle));
}

TEST(AlignmentTest, CountsGapsWhereSomethingWasPlayed) {
    const StereoSound played = testSweep();
    EXPECT_EQ(countGaps(played, played), 0U);
    const auto withHole = [&](std::size_t first, std::size_t length) {
        StereoSound sound = played;
        for (std::size_t index = 2 * first; index < 2 * (first + length); ++index)
            sound.samples[index] = 0;
        return sound;
    };
    EXPECT_EQ(countGaps(played, withHole(20000, 1024)), 1U);
    EXPECT_EQ(countGaps(played, withHole(20000, 3)), 0U) << "a zero crossing is no gap";
    EXPECT_EQ(countGaps(played, withHole(500, 1024)), 0U) << "nothing was played there";
}

} // namespace
} // namespace halvo::demo
