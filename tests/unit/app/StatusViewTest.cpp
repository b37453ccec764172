#include "unit/app/AppDelegateFixture.h"

namespace halvo {

using StatusView = AppDelegateTest;

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
