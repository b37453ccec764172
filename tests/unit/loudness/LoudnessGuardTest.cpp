#include "platform/VirtualOutput.h"
#include "unit/loudness/LoudnessGuardFixture.h"

namespace halvo::test {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

TEST_F(LoudnessGuardTest, StartAndQuitSoundAsBefore) {
    begin(stereo(0.5F, 0.25F));
    machine.launch();
    EXPECT_EQ(server.defaultUID(), kVirtualDeviceUID);
    EXPECT_EQ(machine.level(kSpeakers), stereo(1, 0.5F));
    EXPECT_FLOAT_EQ(virtualVolume(), 0.5F);
    EXPECT_THAT(machine.heard(kMusic), testing::ElementsAre(0.5F, 0.25F));

    machine.quit();
    EXPECT_EQ(server.defaultUID(), kSpeakers);
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F, 0.25F));
    EXPECT_THAT(machine.heard(kMusic), testing::ElementsAre(0.5F, 0.25F));
    EXPECT_FALSE(machine.hasRecord());
}

TEST_F(LoudnessGuardTest, ARaiseIsNotKeptByTheServerButTheOwnLevelIs) {
    begin(stereo(0.5F));
    machine.launch();
    EXPECT_EQ(server.sink(kSpeakers)->saved, stereo(0.5F));
    server.changeLevel(kSpeakers, stereo(1)); // some server keeps it all the same
    machine.quit();
    EXPECT_EQ(server.sink(kSpeakers)->saved, stereo(0.5F));
}

TEST_F(LoudnessGuardTest, AMutedDeviceStaysSilentUntilThePersonUnmutes) {
    begin(muted(0.5F));
    machine.launch();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
    EXPECT_EQ(machine.level(kVirtualDeviceUID), muted(0.5F));
    EXPECT_HEARD(machine, kMusic, 0);
    turnTo(stereo(0.5F));
    EXPECT_HEARD(machine, kMusic, 0.5F);
    turnTo(muted(0.5F));
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), muted(0.5F));
}

TEST_F(LoudnessGuardTest, ASilentBalanceIsRaisedEvenly) {
    begin(stereo(0));
    machine.launch();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
    EXPECT_HEARD(machine, kMusic, 0);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0));
}

TEST_F(LoudnessGuardTest, ADeviceBeyondFullScaleIsLoweredAndGivenBack) {
    begin(stereo(1.5F, 0.75F));
    machine.launch();
    EXPECT_FLOAT_EQ(virtualVolume(), 1);
    EXPECT_EQ(machine.level(kSpeakers), stereo(1, 0.5F));
    machine.allow(kMusic, 1.5F);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1.5F, 0.75F));
}

TEST_F(LoudnessGuardTest, ADeviceWithAForeignStreamKeepsItsLevel) {
    begin(stereo(0.5F));
    server.play("game", kSpeakers);
    machine.settle();
    machine.launch();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F));
    EXPECT_HEARD(machine, "game", 0.5F);
    EXPECT_THAT(log(), Contains("Halvo: Other programs play straight into Speakers; its volume "
                                "stays as it is"));
    EXPECT_HEARD(machine, kMusic, 0.25F);
    machine.allow(kMusic, 0.5F); // as before the start
    machine.quit();
    EXPECT_THAT(server.calls(), Not(Contains(StartsWith("level acc.speakers"))));
    EXPECT_HEARD(machine, kMusic, 0.5F);
}

TEST_F(LoudnessGuardTest, AForeignStreamThatEndsInTimeDelaysTheRaise) {
    begin(stereo(0.5F));
    server.moveDelay = 900ms; // this desktop moves its streams slowly
    machine.start();
    machine.pass(800ms);
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F));
    machine.pass(200ms);
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
    EXPECT_HEARD(machine, kMusic, 0.5F);
}

TEST_F(LoudnessGuardTest, ALevelThatChangesWhileTheRaiseWaitsIsTheOneToGiveBack) {
    begin(stereo(0.5F));
    server.moveDelay = 900ms;
    machine.start();
    machine.pass(800ms);
    server.changeLevel(kSpeakers, stereo(0.4F));
    machine.settle();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.4F));
}

TEST_F(LoudnessGuardTest, ADeviceThatWasGivenUpIsRaisedWithoutAJumpWhenAskedAgain) {
    begin(stereo(0.5F));
    server.play("game", kSpeakers);
    machine.settle();
    machine.launch();
    turnTo(stereo(1)); // to make up for the device's own level
    EXPECT_HEARD(machine, kMusic, 0.5F);
    server.stopStream("game");
    machine.settle();
    server.unplug(kVirtualDeviceUID); // the driver starts anew
    server.plugAgain(kVirtualDeviceUID);
    machine.settle();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
    EXPECT_HEARD(machine, kMusic, 0.5F);
    machine.quit();
    EXPECT_EQ(server.configuredDefault(), std::nullopt); // nobody asked but the application
}

TEST_F(LoudnessGuardTest, FromADeviceThatWasGivenUpTheNextIsAsLoudAsItWas) {
    begin(stereo(0.5F), stereo(0.8F));
    server.play("game", kSpeakers);
    machine.settle();
    machine.launch();
    server.stopStream("game");
    machine.allow(kMusic, 0.5F);
    server.choose(kSpeakers);
    machine.settle();
    EXPECT_HEARD(machine, kMusic, 0.5F);

    server.play("call", kHeadphones);
    pick(kHeadphones);
    EXPECT_EQ(machine.level(kHeadphones), stereo(0.8F));
    EXPECT_THAT(log(), Contains(HasSubstr("play straight into Headphones")));
    EXPECT_HEARD(machine, kMusic, 0.4F);
    pick(kSpeakers);
    EXPECT_HEARD(machine, kMusic, 0.4F);
    server.stopStream("call");
    pick(kHeadphones);
    EXPECT_HEARD(machine, kMusic, 0.4F);
}

TEST_F(LoudnessGuardTest, AStreamPutStraightIntoARaisedDeviceIsAsLoudAsTheSession) {
    begin(stereo(0.5F, 0.25F));
    machine.launch();
    turnTo(stereo(0.1F));
    server.play("call", kSpeakers);
    machine.pass(server.newsDelay);
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.1F, 0.05F));
    machine.settle();
    EXPECT_THAT(log(), Contains(HasSubstr("play straight into Speakers")));
    machine.allow(kMusic, 0.5F); // as before the start
    machine.allow("call", 0.5F);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F, 0.25F));
}

TEST_F(LoudnessGuardTest, AStreamPutStraightIntoARaisedDeviceIsSilentWhileTheSessionIs) {
    begin(stereo(1));
    machine.launch();
    turnTo(muted(1));
    server.play("call", kSpeakers);
    machine.pass(server.newsDelay);
    EXPECT_HEARD(machine, "call", 0);
}

TEST_F(LoudnessGuardTest, PickingADeviceIsNeverLouderThanEither) {
    begin(stereo(0.5F), stereo(0.8F));
    machine.launch();
    turnTo(stereo(0.3F));
    pick(kHeadphones);
    EXPECT_EQ(machine.level(kHeadphones), stereo(1));
    EXPECT_HEARD(machine, kMusic, 0.3F);
    turnTo(stereo(0.9F));
    pick(kSpeakers);
    EXPECT_HEARD(machine, kMusic, 0.3F);
    turnTo(stereo(0.1F));
    pick(kHeadphones);
    EXPECT_HEARD(machine, kMusic, 0.1F);
    machine.allow(kMusic, 0.5F); // the speakers' own level comes back
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F));
    EXPECT_EQ(machine.level(kHeadphones), stereo(0.8F));
}

TEST_F(LoudnessGuardTest, PickingAQuieterDeviceTakesItsLevel) {
    begin(stereo(0.5F), stereo(0.2F, 0.1F));
    machine.launch();
    pick(kHeadphones);
    EXPECT_THAT(machine.heard(kMusic), testing::ElementsAre(0.2F, 0.1F));
}

TEST_F(LoudnessGuardTest, ALoudDeviceThatIsPluggedInIsNoLouderThanTheSession) {
    begin(stereo(0.3F));
    machine.launch();
    server.plug("acc.usb", "USB Amplifier", stereo(1));
    machine.settle();
    EXPECT_EQ(machine.delegate->deviceManager().selectedDeviceID.get(), "acc.usb");
    EXPECT_HEARD(machine, kMusic, 0.3F);
}

TEST_F(LoudnessGuardTest, ADeviceThatVanishedAndReturnsIsStillKnown) {
    begin(stereo(0.5F, 0.25F));
    machine.launch();
    server.unplug(kSpeakers);
    machine.settle();
    machine.allow(kMusic, 0.5F);
    server.plugAgain(kSpeakers);
    machine.settle();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1, 0.5F));
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F, 0.25F));
}

TEST_F(LoudnessGuardTest, ADeviceThatReturnsWithoutBeingUsedIsGivenBack) {
    begin(stereo(0.5F));
    server.plug("conference", "Microsoft Teams Audio", stereo(0.4F));
    machine.launch();
    pick("conference");
    pick(kSpeakers);
    server.unplug("conference");
    machine.settle();
    server.plug("conference", "Microsoft Teams Audio", stereo(1)); // its mixer kept the raise
    machine.settle();
    EXPECT_EQ(machine.level("conference"), stereo(0.4F));
    EXPECT_FALSE(server.isProtected("conference"));
}

TEST_F(LoudnessGuardTest, ARestartOfTheServerIsNoLouderThanTheSession) {
    begin(stereo(0.5F));
    machine.launch();
    turnTo(stereo(0.1F));
    for (const char* uid : {kVirtualDeviceUID, kHeadphones, kSpeakers})
        server.unplug(uid);
    machine.pass(1s);
    machine.allow(kMusic, 0.1F);
    for (const char* uid : {kSpeakers, kHeadphones, kVirtualDeviceUID}) {
        server.plugAgain(uid);
        machine.pass(100ms);
    }
    machine.settle();
    EXPECT_EQ(server.defaultUID(), kVirtualDeviceUID);
    EXPECT_HEARD(machine, kMusic, 0.1F);
    machine.allow(kMusic, 0.5F);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F));
}

TEST_F(LoudnessGuardTest, AWaitingRaiseGoesByTheLevelOfThatMoment) {
    server.plug(kSpeakers, "Speakers", stereo(0.5F));
    server.play(kMusic);
    machine.launch(); // without the driver the speakers stay the default
    machine.pass(10s);
    EXPECT_THAT(log(), Not(Contains(HasSubstr("play straight into"))));
    server.changeLevel(kSpeakers, stereo(0.2F));
    machine.settle();
    machine.plugDriver();
    machine.settle();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
    EXPECT_HEARD(machine, kMusic, 0.2F);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.2F));
}

TEST_F(LoudnessGuardTest, ReadsOfARaisedDeviceAnswerWhatWasFound) {
    begin({{0.5F, 0.25F}, true});
    machine.launch();
    const auto device = *server.deviceForUID(kSpeakers);
    EXPECT_EQ(machine.guard->volume(device, VolumeElement::main), 0.5F);
    EXPECT_EQ(machine.guard->volume(device, VolumeElement::right), 0.25F);
    EXPECT_EQ(machine.guard->mute(device), true);
    EXPECT_EQ(machine.delegate->originalRealVolume(), 0.5F);
}

DeviceLevel at(const std::string& port, float both) {
    return {{both, both}, false, port};
}

TEST_F(LoudnessGuardTest, EachPortOfADeviceKeepsItsOwnLevel) {
    begin(at("speaker", 0.5F));
    machine.launch();
    const auto plug = [this](const DeviceLevel& own) {
        server.switchPort(kSpeakers, own);
        machine.settle();
        EXPECT_EQ(machine.level(kSpeakers), at(own.port, 1));
    };
    plug(at("headphones", 0.2F));
    EXPECT_HEARD(machine, kMusic, 0.2F);
    turnTo(stereo(0.1F));
    machine.allow(kMusic, 0.5F); // as before
    plug(at("speaker", 0.5F));
    EXPECT_HEARD(machine, kMusic, 0.5F);
    plug(at("headphones", 0.2F));
    EXPECT_HEARD(machine, kMusic, 0.1F);
    plug(at("dock", 0.9F)); // no louder than before
    EXPECT_HEARD(machine, kMusic, 0.1F);
    plug(at("headphones", 0.2F));
    machine.allow(kMusic, 0.2F);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), at("headphones", 0.2F));
    EXPECT_FALSE(machine.hasRecord());
}

TEST_F(LoudnessGuardTest, APortThatComesAndGoesInHasteIsNotRaisedUnknown) {
    begin(at("speaker", 0.5F));
    machine.launch();
    server.switchPort(kSpeakers, at("headphones", 0.2F));
    machine.pass(400ms);
    server.switchPort(kSpeakers, at("speaker", 0.5F));
    machine.pass(200ms);
    EXPECT_EQ(machine.level(kSpeakers), at("speaker", 0.5F));
    machine.settle();
    EXPECT_EQ(machine.level(kSpeakers), at("speaker", 1));
    EXPECT_HEARD(machine, kMusic, 0.5F);
    server.switchPort(kSpeakers, at("headphones", 0.2F));
    machine.pass(100ms);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), at("headphones", 0.2F));
}

TEST_F(LoudnessGuardTest, AMutedPortStaysSilent) {
    begin(at("speaker", 0.5F));
    machine.launch();
    server.switchPort(kSpeakers, {{0.2F, 0.2F}, true, "headphones"});
    machine.settle();
    EXPECT_HEARD(machine, kMusic, 0);
}

TEST_F(LoudnessGuardTest, APortsLevelIsNotGivenToAnotherOneAfterACrash) {
    begin(at("speaker", 0.5F));
    machine.launch();
    machine.crash();
    server.switchPort(kSpeakers, at("headphones", 0.2F));
    machine.settle();
    machine.allow(kMusic, 0.2F); // the default comes back
    EXPECT_TRUE(machine.crashUnderGuard());
    EXPECT_EQ(machine.level(kSpeakers), at("headphones", 0.2F));
    machine.launch();
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), at("headphones", 0.2F));
}

TEST_F(LoudnessGuardTest, ADeviceThatGetsItsLevelOnlyAfterItAppearedIsNotTakenForLoud) {
    begin(stereo(0.5F));
    machine.launch();
    server.plug("acc.headset", "Headset", at("headset", 1));
    server.switchPort("acc.headset", at("headset", 0.2F));
    machine.settle();
    EXPECT_EQ(machine.level("acc.headset"), at("headset", 1));
    EXPECT_HEARD(machine, kMusic, 0.2F);
    machine.allow(kMusic, 0.5F); // the speakers' own level
    machine.quit();
    EXPECT_EQ(machine.level("acc.headset"), at("headset", 0.2F));
}

} // namespace

} // namespace halvo::test
