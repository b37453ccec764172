#include "audio/AudioEngine.h"
#include "fake/FakePlatform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>

using namespace halvo;
using namespace std::chrono_literals;

namespace {

class Engine : public testing::Test {
  protected:
    FakePlatform fake;
    AudioEngine engine{
        fake.sharedMemory, fake.outputUnits, fake.mainQueue, fake.standardOutput,
        [this](const std::string& uid) { return fake.audioHardware.deviceForUID(uid); }};

    void start(std::uint32_t channels = 2, std::uint32_t rate = 48000) {
        fake.audioHardware.add("acc.a", "Speakers");
        fake.sharedMemory.createRing(rate, channels, 8192);
        engine.start("acc.a");
    }
    std::vector<float> play(std::vector<float> frames) {
        fake.sharedMemory.write(frames);
        const auto channels = fake.outputUnits.current->format.channels;
        return fake.outputUnits.current->render(static_cast<std::uint32_t>(frames.size()) /
                                                channels);
    }
    static EQPreset presetWithPreamp(float preamp) {
        return {UUID::random(), "Test", preamp, std::vector<float>(10, 0.0F), false};
    }
};

} // namespace

TEST_F(Engine, StartsOnlyWithARing) {
    engine.start("acc.a");
    EXPECT_FALSE(engine.isRunning());
    EXPECT_EQ(fake.outputUnits.made, 0);
    EXPECT_EQ(fake.standardOutput.lines,
              std::vector<std::string>{"Halvo: Could not connect to driver shared memory"});
    start(2, 44100);
    EXPECT_TRUE(engine.isRunning());
    EXPECT_EQ(fake.outputUnits.current->format, (StreamFormat{44100, 2}));
    EXPECT_EQ(engine.eq().sampleRate(), 44100);
    engine.start("acc.a");
    EXPECT_EQ(fake.outputUnits.made, 1) << "a second start does nothing";
}

TEST_F(Engine, RunsWithoutAUnitAndPlaysToTheDefaultWithoutADevice) {
    fake.outputUnits.hasNone = true;
    start();
    EXPECT_TRUE(engine.isRunning());
    EXPECT_FALSE(engine.hasOutputUnit());
    fake.outputUnits.hasNone = false;
    engine.setupOutputUnit("no such device");
    ASSERT_TRUE(engine.hasOutputUnit());
    EXPECT_FALSE(fake.outputUnits.current->device);
    EXPECT_TRUE(fake.outputUnits.current->isStarted);
}

TEST_F(Engine, StopsTheUnitBeforeItLetsGoOfTheRing) {
    start();
    fake.log.clear();
    engine.stop();
    EXPECT_EQ(fake.log.calls(), (std::vector<std::string>{"unit stop", "unit dispose"}));
    EXPECT_EQ(fake.sharedMemory.mapped, 0);
    EXPECT_FALSE(engine.isRunning());
    engine.start("acc.a");
    EXPECT_TRUE(engine.isRunning());
}

TEST_F(Engine, EveryStartBeginsWithEmptyFilters) {
    start();
    engine.eq().setBands(std::vector<float>(10, 12.0F));
    (void)play(std::vector<float>(64, 0.1F));
    engine.stop();
    engine.start("acc.a");
    EXPECT_EQ(std::ranges::count(play(std::vector<float>(64, 0.0F)), 0.0F), 64);
}

TEST_F(Engine, FillsUpWithSilenceNotWithStaleSound) {
    start();
    fake.sharedMemory.write(std::vector<float>(200, 0.25F));
    const auto out = fake.outputUnits.current->render(512);
    EXPECT_EQ(std::ranges::count(out, 0.25F), 200);
    EXPECT_EQ(std::ranges::count(out, 0.0F), 1024 - 200);
    EXPECT_EQ(out[199], 0.25F);
    EXPECT_EQ(out[200], 0.0F);
}

TEST_F(Engine, SoftClipKeepsItsJump) {
    start();
    const auto out = play({1.0F, 1.0001F, 3.0F, -3.0F, -1.0F, -1.0001F});
    const std::vector<float> expected{1.0F, 0.500025F, 0.75F, -0.75F, -1.0F, -0.500025F};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(out[i], expected[i], 1e-6) << i;
    EXPECT_EQ(out[0], 1.0F);
    EXPECT_EQ(out[2], 0.75F);
}

TEST_F(Engine, TheOffSwitchSkipsEverythingButTheVolume) {
    start();
    engine.setCurrentPreset(presetWithPreamp(6));
    engine.eq().setBands(std::vector<float>(10, 9.0F));
    engine.setEQEnabled(false);
    EXPECT_EQ(play({3.0F, -2.0F}), (std::vector<float>{3.0F, -2.0F}));
    engine.setOutputVolume(0.5F);
    EXPECT_EQ(play({3.0F, -2.0F}), (std::vector<float>{1.5F, -1.0F}));
}

TEST_F(Engine, VolumeIsSkippedFromJustBelowUnity) {
    start();
    struct Row {
        float volume;
        float expected;
    };
    for (const auto& [volume, expected] :
         {Row{1.0F, 0.3F}, Row{0.999F, 0.3F}, Row{0.998F, 0.3F * 0.998F}, Row{0.0F, 0.0F}}) {
        engine.setOutputVolume(volume);
        EXPECT_EQ(play({0.3F, 0.3F})[0], expected) << volume;
    }
}

TEST_F(Engine, PreampScalesAndAnAbsentPresetDoesNot) {
    start();
    engine.setCurrentPreset(presetWithPreamp(-6));
    EXPECT_NEAR(play({0.5F, 0.5F})[0], 0.5 * std::pow(10, -0.3), 1e-7);
    engine.setCurrentPreset(presetWithPreamp(0));
    EXPECT_EQ(play({0.3F, 0.3F})[0], 0.3F);
    engine.setCurrentPreset(std::nullopt);
    EXPECT_EQ(play({0.3F, 0.3F})[0], 0.3F);
}

TEST_F(Engine, OtherThanStereoHasPreampAndClipButNoBands) {
    engine.setCurrentPreset(presetWithPreamp(20));
    engine.eq().setBands(std::vector<float>(10, 9.0F));
    for (const std::uint32_t channels : {1U, 3U, 4U, 6U}) {
        start(channels);
        const std::size_t frames = 8;
        std::vector<float> samples(frames * channels, 0.01F);
        samples[1] = 0.3F;
        const auto out = play(samples);
        for (std::size_t i = 0; i < out.size(); ++i)
            EXPECT_NEAR(out[i], i == 1 ? 0.75F : 0.1F, 1e-6) << i << " of " << channels;
        engine.stop();
    }
}

TEST_F(Engine, MeterAndSpectrumHearTheSoundAheadOfTheVolume) {
    start();
    engine.setCurrentPreset(presetWithPreamp(-6));
    SpectrumAnalyzer::BandLevels levels{};
    engine.spectrum().onSpectrumUpdate = [&](const auto& now) { levels = now; };
    std::vector<float> tone(2048 * 2);
    for (std::size_t n = 0; n < tone.size(); ++n)
        tone[n] = 0.01F * std::sin(static_cast<float>(n / 2) * 0.1309F); // 1000 Hz
    for (const float volume : {1.0F, 0.25F, 0.0F}) {
        engine.setOutputVolume(volume);
        for (int block = 0; block < 60; ++block)
            (void)play(tone);
        fake.mainQueue.advance(100ms);
        EXPECT_NEAR(engine.meter().currentLevel(), 0.01 * std::pow(10, -0.3), 1e-4) << volume;
        EXPECT_NEAR(engine.meter().history().back(), 0.00707 * std::pow(10, -0.3), 1e-4) << volume;
        EXPECT_NEAR(levels[5], 0.652 - 6.0 / 60, 0.001) << volume;
    }
}

TEST_F(Engine, TheMeterTakesEverySampleOfEveryChannel) {
    start();
    (void)play({0.1F, 0.2F, 0.3F, -0.9F});
    EXPECT_EQ(engine.meter().rawPeak.value(), 0.9F);
    engine.meter().tick();
    EXPECT_FLOAT_EQ(engine.meter().history().back(), std::sqrt(0.95F / 4));
}

TEST_F(Engine, TheSpectrumGoesByTheRingsRate) {
    start(2, 96000);
    SpectrumAnalyzer::BandLevels levels{};
    engine.spectrum().onSpectrumUpdate = [&](const auto& now) { levels = now; };
    std::vector<float> tone(2048 * 2);
    for (std::size_t n = 0; n < tone.size(); ++n)
        tone[n] = 0.01F * std::sin(static_cast<float>(n / 2) * 0.06545F); // 1000 Hz
    for (int block = 0; block < 60; ++block)
        (void)play(tone);
    engine.spectrum().deliver();
    EXPECT_EQ(std::ranges::max_element(levels) - levels.begin(), 5);
}

TEST_F(Engine, ANewDeviceKeepsRingFiltersAndRunning) {
    start();
    engine.eq().setBands(std::vector<float>(10, 12.0F));
    (void)play(std::vector<float>(64, 0.1F));
    engine.disposeOutputUnit();
    EXPECT_TRUE(engine.isRunning());
    fake.audioHardware.add("acc.b", "Headphones");
    engine.setupOutputUnit("acc.b");
    EXPECT_EQ(fake.sharedMemory.mapped, 1);
    EXPECT_NE(play(std::vector<float>(2, 0.0F))[0], 0.0F) << "the filters still ring";
}

TEST_F(Engine, ABrokenHeaderIsSilenceWithAMessage) {
    fake.audioHardware.add("acc.a", "Speakers");
    for (const auto [rate, channels, capacity] : {std::array{0U, 2U, 64U},
                                                  {1'000'001U, 2U, 64U},
                                                  {48000U, 0U, 64U},
                                                  {48000U, 0x80000000U, 64U},
                                                  {48000U, 2U, 0U},
                                                  {48000U, 2U, 0xFFFFFFFFU}}) {
        fake.sharedMemory.createRing(48000, 2, 64);
        auto& header = fake.sharedMemory.header();
        header.sampleRate = rate;
        header.channelCount = channels;
        header.capacity = capacity;
        header.writeIndex = 40;
        fake.standardOutput.lines.clear();
        engine.start("acc.a");
        header.writeIndex = 80;
        EXPECT_EQ(fake.outputUnits.current->format, (StreamFormat{48000, 2}));
        EXPECT_EQ(fake.standardOutput.lines.size(), 1U);
        if (rate == 48000) {
            EXPECT_EQ(std::ranges::count(fake.outputUnits.current->render(64), 0.0F), 128);
        }
        engine.stop();
    }
}

TEST_F(Engine, AHeaderThatGrowsWhileRunningIsSilence) {
    start();
    fake.sharedMemory.header().channelCount = 8;
    fake.sharedMemory.header().writeIndex = 400;
    EXPECT_EQ(std::ranges::count(fake.outputUnits.current->render(256), 0.0F), 512);
    EXPECT_TRUE(engine.isRingCurrent()) << "a header that does not fit may yet be mended";
    fake.sharedMemory.header().capacity = 64;
    EXPECT_FALSE(engine.isRingCurrent()) << "another format needs another start";
}

TEST_F(Engine, CallbackWithoutABufferWritesNothing) {
    start();
    EXPECT_EQ(renderCallback(&engine, nullptr, nullptr, 0, 64, nullptr), kNoErr);
    RenderBufferList empty;
    EXPECT_EQ(renderCallback(&engine, nullptr, nullptr, 0, 64, &empty), kNoErr);
    RenderBuffer buffer{2, 0, nullptr};
    RenderBufferList list{1, &buffer};
    EXPECT_EQ(renderCallback(&engine, nullptr, nullptr, 0, 64, &list), kNoErr);
}

TEST_F(Engine, NegativeAndOverflowingCountsEndTheProcess) {
    float sample = 0;
    EXPECT_DEATH(engine.processBuffer(&sample, -1, 2), "");
    EXPECT_DEATH(engine.processBuffer(&sample, std::int64_t{1} << 62, 4), "");
}
