#include "platform/VirtualOutput.h"
#include "unit/app/AppDelegateFixture.h"

#include <cmath>

namespace halvo {

using StatusView = AppDelegateTest;
using Kind = StatusPicture::Kind;

TEST(StatusPictures, TheEnvelopeOfTwentySamplesInAnItemOf30By22) {
    struct Row {
        const char* name;
        float sample;
        double halfLength;
    };
    const Row rows[] = {{"silence is a dot, not a gap", 0.0F, 0.5},
                        {"a trace", 0.001F, 0.5},
                        {"half", 0.0625F, 4},
                        {"full", 0.125F, 8},
                        {"beyond full", 0.2F, 8},
                        {"no number", NAN, 0.5},
                        {"endless", INFINITY, 8}};
    StatusEQView view;
    view.isIORunning = true;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        view.waveformSamples.assign(20, row.sample);
        const auto picture = view.draw({30, 22});
        ASSERT_EQ(picture.bars.size(), 20U);
        EXPECT_EQ(picture.kind, Kind::envelope);
        EXPECT_EQ(picture.lineWidth, 1);
        EXPECT_NEAR(picture.bars.front().x, 2.65, 1e-12);
        EXPECT_NEAR(picture.bars.back().x, 27.35, 1e-12);
        EXPECT_EQ(picture.bars[7].top, 11 - row.halfLength);
        EXPECT_EQ(picture.bars[7].bottom, 11 + row.halfLength);
    }
    view.waveformSamples.assign(2, 0.125F);
    EXPECT_EQ(view.draw({30, 22}).lineWidth, 12) << "wide steps have wide bars";
}

TEST(StatusPictures, WhatIsDrawnWhen) {
    struct Row {
        const char* name;
        bool running;
        bool wanted;
        std::size_t samples;
        Kind kind;
    };
    const Row rows[] = {
        {"live", true, true, 20, Kind::envelope},
        {"two samples", true, true, 2, Kind::envelope},
        {"fewer draw nothing, not even the idle image", true, true, 1, Kind::nothing},
        {"none", true, true, 0, Kind::nothing},
        {"not wanted", true, false, 20, Kind::idle},
        {"at rest", false, true, 20, Kind::idle},
        {"at rest without samples", false, true, 0, Kind::idle}};
    for (const auto& row : rows) {
        StatusEQView view;
        view.isIORunning = row.running;
        view.showActiveWaveform = row.wanted;
        view.waveformSamples.resize(row.samples);
        EXPECT_EQ(view.draw({30, 22}).kind, row.kind) << row.name;
    }
}

TEST_F(StatusView, ALevelAloneAsksForNoRedraw) {
    launchWithDriver();
    fake.statusItem.redraws = 0;
    delegate->audioEngine().meter().onLevelUpdate(0.5F);
    EXPECT_EQ(delegate->statusView().level, 0.5F);
    EXPECT_EQ(fake.statusItem.redraws, 0);
    delegate->audioEngine().meter().onWaveformUpdate({0.125F});
    EXPECT_EQ(fake.statusItem.redraws, 1);
    EXPECT_EQ(fake.statusItem.draw({30, 22}).bars.front().top, 3);
}

TEST_F(StatusView, ShowsWhatThePlayedSoundIsLike) {
    launchWithDriver();
    auto& view = delegate->statusView();
    int redraws = 0;
    view.onNeedsDisplay = [&] { ++redraws; };
    delegate->presetManager().eqEnabled.set(false);
    (void)play(std::vector<float>(2048 * 2, 0.5F));
    fake.mainQueue.advance(34ms);
    EXPECT_EQ(view.level, 0.5F);
    EXPECT_EQ(view.waveformSamples.back(), 0.5F);
    EXPECT_TRUE(view.isIORunning);
    EXPECT_GE(redraws, 1);
    EXPECT_GT(delegate->spectrumData().bandLevels.get()[0], 0.0F);
    delegate->audioEngine().stop();
    EXPECT_EQ(view.level, 0.0F);
    EXPECT_EQ(view.waveformSamples.back(), 0.0F);
}

TEST_F(StatusView, FollowsTheSettingsWithTheColourThatIsStored) {
    launchWithDriver();
    auto& view = delegate->statusView();
    auto& settings = delegate->appSettings();
    EXPECT_FALSE(view.waveformColor);
    settings.setAccentColorHex("#AF52DE");
    fake.mainQueue.flush();
    EXPECT_EQ(view.waveformColor, Color::parse("AF52DE")) << "not one colour behind";
    settings.setAccentColorHex("no colour");
    fake.mainQueue.flush();
    ASSERT_TRUE(view.waveformColor);
    EXPECT_FALSE(*view.waveformColor) << "the system's accent";
    settings.setAccentColorHex("native");
    settings.setShowMenubarWaveform(false);
    fake.mainQueue.flush();
    EXPECT_FALSE(view.waveformColor);
    EXPECT_FALSE(view.showActiveWaveform);
}

TEST_F(StatusView, LowRatesHaveNoSpectrumButSound) {
    virtualDevice = fake.audioHardware.add(kVirtualDeviceUID, "Halvo Virtual Output");
    fake.sharedMemory.createRing(22050, 2, 8192);
    launch();
    settle();
    EXPECT_EQ(std::ranges::count(
                  output(), "Halvo: No spectrum at this sample rate, it needs 22414 Hz or more"),
              1);
    EXPECT_NE(play(std::vector<float>(4096 * 2, 0.25F))[4000], 0.0F);
    fake.mainQueue.advance(100ms);
    EXPECT_EQ(delegate->spectrumData().bandLevels.get()[5], 0.0F);
}

} // namespace halvo
