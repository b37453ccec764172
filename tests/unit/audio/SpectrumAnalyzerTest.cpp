#include "audio/SpectrumAnalyzer.h"
#include "audio/RealFFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

using namespace halvo;

namespace {

using Range = SpectrumAnalyzer::BinRange;

class Spectrum : public testing::Test {
  protected:
    std::unique_ptr<SpectrumAnalyzer> analyzer = std::make_unique<SpectrumAnalyzer>();
    SpectrumAnalyzer::BandLevels levels{};
    int updates = 0;

    void SetUp() override {
        analyzer->onSpectrumUpdate = [this](const auto& now) {
            levels = now;
            ++updates;
        };
    }
    /// Feeds `blocks` × 2048 frames of a stereo sine, in uneven pieces.
    void feedSine(double frequency, double amplitude, int blocks, float rate = 48000) {
        std::vector<float> samples(static_cast<std::size_t>(blocks) * 2048 * 2);
        for (std::size_t n = 0; n < samples.size() / 2; ++n, ++time_) {
            const double phase =
                2 * std::numbers::pi * frequency * time_ / static_cast<double>(rate);
            samples[2 * n] = samples[2 * n + 1] = static_cast<float>(amplitude * std::sin(phase));
        }
        for (std::size_t at = 0, piece = 100; at < samples.size(); at += piece * 2) {
            const auto frames = std::min(piece, (samples.size() - at) / 2);
            analyzer->feed({samples.data() + at, static_cast<std::int64_t>(frames), 2}, rate);
        }
        analyzer->deliver();
    }

  private:
    double time_ = 0;
};

} // namespace

TEST(RealFFT, IsTwiceTheDiscreteTransform) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> sample(-1, 1);
    std::vector<double> time(RealFFT::kSize);
    const auto fft = std::make_unique<RealFFT>();
    RealFFT::Part real{};
    RealFFT::Part imaginary{};
    for (std::size_t n = 0; n < time.size(); ++n) {
        const float value = sample(random);
        time[n] = static_cast<double>(value);
        (n % 2 == 0 ? real : imaginary)[n / 2] = value;
    }
    fft->transform(real, imaginary);
    const auto bin = [&](std::size_t k) {
        std::complex<double> sum;
        for (std::size_t n = 0; n < time.size(); ++n) {
            sum += std::polar(time[n],
                              -2 * std::numbers::pi * static_cast<double>(n * k % 2048) / 2048);
        }
        return 2.0 * sum;
    };
    for (const std::size_t k : {1UL, 2UL, 3UL, 100UL, 511UL, 512UL, 513UL, 1000UL, 1023UL}) {
        EXPECT_NEAR(static_cast<double>(real[k]), bin(k).real(), 1e-3) << k;
        EXPECT_NEAR(static_cast<double>(imaginary[k]), bin(k).imag(), 1e-3) << k;
    }
    EXPECT_NEAR(static_cast<double>(real[0]), bin(0).real(), 1e-3);
    EXPECT_NEAR(static_cast<double>(imaginary[0]), bin(1024).real(), 1e-3);
}

TEST(SpectrumBins, WorkedRanges) {
    const Range at48000[] = {{1, 2}, {1, 3}, {4, 6}, {7, 13}, {15, 27}, {30, 54}};
    for (std::size_t band = 0; band < std::size(at48000); ++band) {
        EXPECT_EQ(SpectrumAnalyzer::binsOfBand(band, 48000), at48000[band]) << band;
    }
    EXPECT_EQ(SpectrumAnalyzer::binsOfBand(9, 48000), (Range{478, 886}));
    const Range at44100[] = {{1, 2},   {1, 3},    {4, 6},     {8, 14},    {17, 29},
                             {33, 59}, {65, 119}, {130, 240}, {260, 482}, {521, 965}};
    for (std::size_t band = 0; band < kBandCount; ++band) {
        EXPECT_EQ(SpectrumAnalyzer::binsOfBand(band, 44100), at44100[band]) << band;
    }
    EXPECT_EQ(SpectrumAnalyzer::binsOfBand(0, 96000), (Range{1, 1}));
    EXPECT_EQ(SpectrumAnalyzer::binsOfBand(9, 22414), (Range{1023, 1023}));
    EXPECT_DEATH((void)SpectrumAnalyzer::binsOfBand(9, 22413), "");
}

TEST_F(Spectrum, AQuietSineSettlesAtItsLevel) {
    feedSine(1000, 0.01, 60);
    EXPECT_NEAR(levels[5], 0.652, 0.001);
    EXPECT_LT(levels[0], 0.05);
    EXPECT_LT(levels[9], 0.05);
}

TEST_F(Spectrum, LevelsRiseAndFallByTheSmoothing) {
    feedSine(1000, 1.0, 1); // saturates: the target is 1
    EXPECT_NEAR(levels[5], 0.3, 1e-6);
    feedSine(1000, 1.0, 1);
    EXPECT_NEAR(levels[5], 0.51, 1e-6);
    feedSine(1000, 1.0, 1);
    EXPECT_NEAR(levels[5], 0.657, 1e-6);
    feedSine(1000, 0.0, 1);
    EXPECT_NEAR(levels[5], 0.657 * 0.7, 1e-6);
    EXPECT_EQ(updates, 4);
    analyzer->deliver();
    EXPECT_EQ(updates, 4) << "nothing new, nothing told";
}

TEST_F(Spectrum, ABrokenSampleLeavesTheLevelsInRangeAndDoesNotStay) {
    using Limits = std::numeric_limits<float>;
    for (const float broken : {Limits::quiet_NaN(), Limits::infinity(), Limits::max()}) {
        feedSine(1000, 0.01, 60);
        std::vector<float> samples(2048 * 2, 0.25F);
        samples[700] = broken;
        analyzer->feed({samples.data(), 2048, 2}, 48000);
        analyzer->deliver();
        for (const float level : levels)
            EXPECT_TRUE(level >= 0 && level <= 1) << level << " after " << broken;
        feedSine(1000, 0.01, 60);
        EXPECT_NEAR(levels[5], 0.652, 0.001) << "after " << broken;
    }
}

TEST_F(Spectrum, TheMeanOfTheFirstTwoChannelsIsHeard) {
    struct Row {
        const char* name;
        std::vector<float> gains; ///< of each channel
        double expected;          ///< of the band; half the amplitude is 6.02 of 60 dB less
    };
    const Row rows[] = {
        {"mono", {1}, 0.652},
        {"left", {1, 0}, 0.652 - 6.02 / 60},
        {"right", {0, 1}, 0.652 - 6.02 / 60},
        {"both", {1, 1}, 0.652},
        {"opposed", {1, -1}, 0},
        {"first two of four", {0, 2, 5, 5}, 0.652},
        {"others of four", {0, 0, 5, 5}, 0},
    };
    for (const auto& [name, gains, expected] : rows) {
        constexpr std::size_t kFrames = 60 * 2048;
        std::vector<float> samples;
        for (std::size_t n = 0; n < kFrames; ++n) {
            const double phase = 2 * std::numbers::pi * 1000 * static_cast<double>(n) / 48000;
            for (const float gain : gains)
                samples.push_back(gain * static_cast<float>(0.01 * std::sin(phase)));
        }
        analyzer->feed({samples.data(), kFrames, static_cast<std::int64_t>(gains.size())}, 48000);
        analyzer->deliver();
        EXPECT_NEAR(levels[5], expected, 0.001) << name;
    }
}

TEST_F(Spectrum, FramesCountAcrossCalls) {
    std::vector<float> silence(2047 * 2, 0.0F);
    analyzer->feed({silence.data(), 2047, 2}, 48000);
    analyzer->deliver();
    EXPECT_EQ(updates, 0);
    analyzer->feed({silence.data(), 1, 1}, 48000); // mono counts alike
    analyzer->deliver();
    EXPECT_EQ(updates, 1);
}
