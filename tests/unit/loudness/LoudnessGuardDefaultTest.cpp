#include "platform/VirtualOutput.h"
#include "unit/loudness/LoudnessGuardFixture.h"

#include <algorithm>

namespace halvo::test {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Not;

namespace {

struct DefaultChange {
    const char* name;
    const char* uid;
    float headphones; ///< their own volume
    float expected;
};

class DefaultChangeTest : public LoudnessGuardTest,
                          public testing::WithParamInterface<DefaultChange> {};

TEST_P(DefaultChangeTest, NeverGetsLouderThanTheDeviceThatWasChosen) {
    const auto& change = GetParam();
    begin(stereo(0.5F), stereo(change.headphones));
    machine.launch();
    turnTo(stereo(0.1F)); // the session is far below what was found
    machine.allow(kMusic, std::max(0.1F, change.expected));
    server.choose(change.uid);
    machine.settle();
    EXPECT_EQ(server.defaultUID(), kVirtualDeviceUID);
    EXPECT_EQ(machine.level(change.uid), stereo(1));
    EXPECT_HEARD(machine, kMusic, change.expected);
    machine.allow(kMusic, 1);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.5F));
    EXPECT_EQ(machine.level(kHeadphones), stereo(change.headphones));
}

INSTANTIATE_TEST_SUITE_P(Devices, DefaultChangeTest,
                         testing::Values(DefaultChange{"theOneInUse", kSpeakers, 0.2F, 0.1F},
                                         DefaultChange{"aQuieterOne", kHeadphones, 0.05F, 0.05F},
                                         DefaultChange{"aLouderOne", kHeadphones, 0.8F, 0.8F}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(LoudnessGuardTest, ADefaultChangeToAFormerDeviceUsesItsSessionLevel) {
    begin(stereo(0.5F), stereo(0.2F));
    machine.launch();
    turnTo(stereo(0.3F));
    pick(kHeadphones);
    turnTo(stereo(0.9F));
    server.choose(kSpeakers);
    machine.pass(server.moveDelay);
    machine.allow(kMusic, 0.3F);
    machine.settle();
    EXPECT_HEARD(machine, kMusic, 0.3F);
}

TEST_F(LoudnessGuardTest, ADefaultChangeKeepsAMutedSessionSilent) {
    begin(stereo(0.5F));
    machine.launch();
    turnTo(muted(0.5F));
    server.choose(kSpeakers);
    machine.settle();
    EXPECT_EQ(machine.level(kVirtualDeviceUID), muted(0.5F));
}

TEST_F(LoudnessGuardTest, TheEngineIsSilentWhileProgramsPlayStraightIntoAnotherDefault) {
    begin(stereo(0.5F));
    machine.launch();
    EXPECT_TRUE(machine.gate.isOpen());
    server.choose(kHeadphones);
    machine.pass(server.newsDelay);
    EXPECT_FALSE(machine.gate.isOpen());
    machine.pass(400ms); // shortly before the virtual device is the default again
    EXPECT_FALSE(machine.gate.isOpen());
    machine.settle();
    EXPECT_TRUE(machine.gate.isOpen());
}

TEST_F(LoudnessGuardTest, ADefaultIsNotRaisedEvenWhileNothingPlays) {
    begin(stereo(0.5F), stereo(0.2F));
    machine.launch();
    server.stopStream(kMusic);
    for (const char* uid : {kHeadphones, kSpeakers, kSpeakers}) {
        server.choose(uid);
        machine.pass(400ms);
        machine.allow("alarm", 0.2F);
        server.play("alarm");
        machine.settle();
        EXPECT_EQ(machine.level(uid), stereo(1));
        EXPECT_HEARD(machine, "alarm", 0.2F);
        server.stopStream("alarm");
        machine.settle();
    }
    server.choose(kSpeakers);
    machine.settle();
    EXPECT_EQ(machine.level(kSpeakers), stereo(1));
}

TEST_F(LoudnessGuardTest, ADefaultChangeToADeviceThatWasJustPickedIsSafe) {
    begin(stereo(0.3F), stereo(0.8F));
    machine.launch();
    pick(kHeadphones);
    server.choose(kHeadphones);
    machine.settle();
    EXPECT_HEARD(machine, kMusic, 0.3F);
}

TEST_F(LoudnessGuardTest, ADefaultThatTheEngineDoesNotFollowLeavesItsLoudnessAlone) {
    begin(stereo(0.2F));
    server.plug("conference", "Microsoft Teams Audio", stereo(1));
    machine.launch();
    machine.allow(kMusic, 1); // straight into that device
    server.choose("conference");
    machine.pass(400ms);
    machine.allow(kMusic, 1);
    machine.settle();
    EXPECT_EQ(server.defaultUID(), kVirtualDeviceUID);
    EXPECT_HEARD(machine, kMusic, 0.2F);
    machine.quit();
    EXPECT_EQ(server.defaultUID(), kSpeakers);
    EXPECT_THAT(server.calls(), Not(Contains("configured conference")));
}

} // namespace

} // namespace halvo::test
