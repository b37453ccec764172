#include "unit/app/AppDelegateFixture.h"

#include <random>

namespace halvo {

using Volume = AppDelegateTest;

TEST_F(Volume, RaisingRecordsFirstAndIgnoresMissingElements) {
    auto& device = fake.audioHardware.device(a);
    device.volumes = {std::nullopt, 0.3F, 0.5F};
    device.mute = true;
    plugDriver();
    launch();
    EXPECT_EQ(delegate->originalRealVolume(), 0.3F) << "element 1 where there is no element 0";
    EXPECT_EQ(fake.userDefaults.floatForKey(SavedSession::kSavedRealVolume), 0.3F);
    EXPECT_EQ(device.volumes[1], 1.0F);
    EXPECT_EQ(device.volumes[2], 1.0F);
    EXPECT_EQ(device.mute, false);
    const auto& calls = fake.log.calls();
    const auto at = std::ranges::find(calls, "setVolume acc.a 0 1.0");
    ASSERT_NE(at, calls.end());
    EXPECT_EQ(*(at + 1), "setVolume acc.a 1 1.0");
    EXPECT_EQ(*(at + 2), "setVolume acc.a 2 1.0");
    EXPECT_EQ(*(at + 3), "setMute acc.a off");
}

TEST_F(Volume, AnUnreadableVolumeCountsAsOneButIsNotRemembered) {
    launchWithDriver();
    EXPECT_EQ(delegate->originalRealVolume(), 1.0F);
    fake.audioHardware.device(b).volumes = {};
    fake.audioHardware.device(a).volumes = {0.7F, 0.7F, 0.7F};
    output().clear();
    delegate->deviceManager().selectedDeviceID.set("acc.b");
    EXPECT_EQ(delegate->originalRealVolume(), 1.0F);
    EXPECT_EQ(fake.userDefaults.floatForKey(SavedSession::kSavedRealVolume), 1.0F);
    EXPECT_EQ(fake.userDefaults.stringForKey(SavedSession::kSavedRealDeviceUID), "acc.b");
    EXPECT_EQ(output(),
              std::vector<std::string>{"Halvo: Saved real device volume 1.0, set to max"});
    // An unknown device has no effect at all.
    delegate->deviceManager().selectedDeviceID.set("acc.unknown");
    EXPECT_EQ(fake.userDefaults.stringForKey(SavedSession::kSavedRealDeviceUID), "acc.b");
    EXPECT_EQ(output().size(), 1U);
}

TEST_F(Volume, TheVirtualDevicesVolumeAndMuteSteerTheGain) {
    launchWithDriver();
    auto& engine = delegate->audioEngine();
    fake.audioHardware.changeVolume(virtualDevice, 0.25F);
    fake.mainQueue.runTurn();
    EXPECT_EQ(engine.outputVolume(), 1.0F) << "delivered, not yet handled";
    fake.mainQueue.runTurn();
    EXPECT_EQ(engine.outputVolume(), 0.25F);
    EXPECT_EQ(delegate->presetManager().outputVolume.get(), 0.25F);
    EXPECT_EQ(fake.userDefaults.floatForKey("halvo_outputVolume"), 0.25F);
    fake.audioHardware.changeMute(virtualDevice, true);
    fake.mainQueue.flush();
    EXPECT_EQ(engine.outputVolume(), 0.0F);
    EXPECT_EQ(volume(a), 1.0F) << "the real device stays where it is";
    fake.audioHardware.changeMute(virtualDevice, false);
    fake.mainQueue.flush();
    EXPECT_EQ(engine.outputVolume(), 0.25F);
    fake.audioHardware.device(virtualDevice).volumes = {};
    fake.audioHardware.changeMute(virtualDevice, true);
    fake.mainQueue.flush();
    EXPECT_EQ(engine.outputVolume(), 0.25F) << "nothing readable changes nothing";
}

TEST_F(Volume, ListensToTheFirstChannelWhereThereIsNoMainVolume) {
    fake.audioHardware.mainVolumeListenerFails = true;
    launchWithDriver();
    const auto& calls = fake.log.calls();
    EXPECT_EQ(std::ranges::count(calls, "listenToVolume HalvoVirtualOutput_UID 1"), 1);
    fake.audioHardware.changeVolume(virtualDevice, 0.5F);
    fake.mainQueue.flush();
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.5F);
}

TEST_F(Volume, ASavedVolumeOfZeroIsHonoured) {
    fake.userDefaults.setFloat("halvo_outputVolume", 0.0F);
    launch();
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.0F);
}

TEST_F(Volume, ThePanelsIsWrittenToTheVirtualDeviceAndNeverComesBackChanged) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    fake.audioHardware.changeVolume(virtualDevice, 1.0F);
    settle();
    fake.log.clear();
    presets.setOutputVolume(0.15F);
    settle();
    EXPECT_EQ(fake.log.calls(),
              std::vector<std::string>{"setVolume HalvoVirtualOutput_UID 0 0.15"});
    EXPECT_EQ(presets.outputVolume.get(), 0.15F);

    // A thousand changes from both sides: both always agree, and only the panel's are written.
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
    std::size_t written = 0;
    fake.log.clear();
    for (int change = 0; change < 1000; ++change) {
        const float wanted = static_cast<float>(random() % 1000) / 999;
        if (random() % 2 == 0) {
            presets.setOutputVolume(wanted);
            ++written;
        } else {
            fake.audioHardware.changeVolume(virtualDevice, wanted);
        }
        if (random() % 4 == 0) continue; // the other side is moved before the news arrives
        fake.mainQueue.flush();
        ASSERT_EQ(presets.outputVolume.get(), wanted);
        ASSERT_EQ(volume(virtualDevice), wanted);
        ASSERT_EQ(delegate->audioEngine().outputVolume(), wanted);
    }
    EXPECT_EQ(fake.log.calls().size(), written);
}

TEST_F(Volume, AMuteIsLiftedByThePanelAndNeverOverwritesTheLevel) {
    launchWithDriver();
    auto& presets = delegate->presetManager();
    fake.audioHardware.changeVolume(virtualDevice, 0.25F);
    fake.audioHardware.changeMute(virtualDevice, true);
    settle();
    EXPECT_EQ(presets.outputVolume.get(), 0.0F);
    EXPECT_EQ(volume(virtualDevice), 0.25F) << "beneath the mute";
    presets.setOutputVolume(0.0F);
    settle();
    EXPECT_EQ(fake.audioHardware.mute(virtualDevice), true) << "silent as before";
    presets.setOutputVolume(0.5F);
    settle();
    EXPECT_EQ(fake.audioHardware.mute(virtualDevice), false);
    EXPECT_EQ(presets.outputVolume.get(), 0.5F);
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.5F);
}

TEST_F(Volume, WithoutAVirtualDeviceThePanelStillSteersTheGain) {
    launch();
    settle();
    delegate->presetManager().setOutputVolume(0.5F);
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.5F);
}

} // namespace halvo
