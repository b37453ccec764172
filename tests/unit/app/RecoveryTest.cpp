#include "platform/VirtualOutput.h"
#include "unit/app/AppDelegateFixture.h"

namespace halvo {

using Recovery = AppDelegateTest;

TEST_F(Recovery, ADriverThatComesLaterIsTakenIntoUse) {
    launch();
    settle();
    plugDriver();
    settle();
    EXPECT_TRUE(delegate->audioEngine().isRunning());
    EXPECT_EQ(fake.outputUnits.current->device, a);
    EXPECT_EQ(defaultUID(), kVirtualDeviceUID);
    fake.audioHardware.changeVolume(virtualDevice, 0.5F);
    fake.mainQueue.flush();
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.5F);
    EXPECT_NE(play(std::vector<float>(128, 0.1F))[100], 0.0F);
}

TEST_F(Recovery, WaitingForADriverIsQuiet) {
    launch();
    settle();
    const auto lines = output().size();
    fake.audioHardware.add("x", "ZoomAudio"); // an irrelevant change of the list
    fake.sharedMemory.announceChange();
    settle();
    EXPECT_EQ(output().size(), lines);
}

TEST_F(Recovery, ARingOfAnotherRateIsReadAnewAndItsCoefficientsFollow) {
    launchWithDriver();
    const auto before = delegate->audioEngine().eq().coefficients();
    fake.sharedMemory.createRing(44100, 2, 8192);
    fake.mainQueue.flush();
    EXPECT_EQ(fake.outputUnits.current->format.sampleRate, 44100);
    EXPECT_NE(delegate->audioEngine().eq().coefficients(), before);
    EXPECT_EQ(fake.sharedMemory.mapped, 1);
}

TEST_F(Recovery, ARingThatGoesStopsTheEngineUntilItIsBack) {
    launchWithDriver();
    fake.sharedMemory.removeObject();
    fake.mainQueue.flush();
    EXPECT_FALSE(delegate->audioEngine().isRunning());
    fake.sharedMemory.createRing(48000, 2, 4096);
    fake.mainQueue.flush();
    EXPECT_TRUE(delegate->audioEngine().isRunning());
}

TEST_F(Recovery, AVirtualDeviceWithANewIDIsFollowedAgain) {
    launchWithDriver();
    fake.audioHardware.remove(virtualDevice);
    fake.mainQueue.flush();
    const auto other = fake.audioHardware.add("other", "ZoomAudio");
    virtualDevice = fake.audioHardware.add(kVirtualDeviceUID, "Halvo Virtual Output");
    settle();
    EXPECT_EQ(defaultUID(), kVirtualDeviceUID);
    fake.audioHardware.changeVolume(virtualDevice, 0.5F);
    fake.mainQueue.flush();
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.5F);
    fake.audioHardware.changeVolume(other, 0.1F);
    fake.mainQueue.flush();
    EXPECT_EQ(delegate->audioEngine().outputVolume(), 0.5F);
}

TEST_F(Recovery, TheFirstOutputDeviceStartsTheEngine) {
    fake.audioHardware.remove(a);
    fake.audioHardware.remove(b);
    plugDriver();
    launch();
    settle();
    EXPECT_FALSE(delegate->audioEngine().isRunning());
    const auto late = fake.audioHardware.add("late", "Late Speakers");
    settle();
    EXPECT_TRUE(delegate->audioEngine().isRunning());
    EXPECT_EQ(fake.outputUnits.current->device, late);
}

} // namespace halvo
