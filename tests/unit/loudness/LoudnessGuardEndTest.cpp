#include "app/SavedSession.h"
#include "loudness/RaisedDevicesRecord.h"
#include "platform/VirtualOutput.h"
#include "unit/loudness/LoudnessGuardFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

namespace halvo::test {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Two devices are raised, with a balance each; music plays.
class LoudnessGuardEndTest : public testing::Test {
  protected:
    LoudnessMachine machine;
    FakeAudioServer& server = machine.server;
    const DeviceLevel speakers = stereo(0.5F, 0.25F);
    const DeviceLevel headphones = stereo(0.3F, 0.6F);

    void begin() {
        server.plug(kSpeakers, "Speakers", speakers);
        server.plug(kHeadphones, "Headphones", headphones);
        machine.plugDriver();
        server.play(kMusic);
        machine.settle();
    }
    void raiseBoth() {
        machine.launch();
        machine.allow(kMusic, 0.5F); // the balances differ
        machine.delegate->deviceManager().selectedDeviceID.set(kHeadphones);
        machine.settle();
        machine.allow(kMusic, 0.5F);
        machine.delegate->deviceManager().selectedDeviceID.set(kSpeakers);
        machine.settle();
        ASSERT_EQ(machine.level(kHeadphones), stereo(0.5F, 1));
        server.changeLevel(kVirtualDeviceUID, stereo(0.1F));
        machine.settle();
        machine.allow(kMusic, 0.5F); // the end brings back what was found
    }
    void expectOwnLevels() {
        EXPECT_EQ(machine.level(kSpeakers), speakers);
        EXPECT_EQ(machine.level(kHeadphones), headphones);
        EXPECT_EQ(server.defaultUID(), kSpeakers);
    }
};

TEST_F(LoudnessGuardEndTest, QuitGivesEveryDeviceBack) {
    begin();
    raiseBoth();
    machine.quit();
    expectOwnLevels();
    EXPECT_FALSE(machine.hasRecord());
}

TEST_F(LoudnessGuardEndTest, TerminationGivesEveryDeviceBackFromTheRecord) {
    begin();
    raiseBoth();
    machine.terminate();
    expectOwnLevels();
    EXPECT_THAT(machine.heard(kMusic), ElementsAre(0.5F, 0.25F));

    // The next start repeats the restore; what was changed in between is the user's affair.
    server.changeLevel(kSpeakers, stereo(0.1F));
    machine.settle();
    machine.launch();
    EXPECT_EQ(machine.delegate->originalRealVolume(), 0.1F);
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), stereo(0.1F));
    EXPECT_FALSE(machine.hasRecord());
}

TEST_F(LoudnessGuardEndTest, AfterTerminationBeganTheMainThreadRaisesNothing) {
    begin();
    machine.launch();
    EXPECT_TRUE(server.isProtected(kSpeakers));
    std::thread([this] { machine.guard->silenceListeners(); }).join();
    EXPECT_FALSE(server.isProtected(kSpeakers)); // or giving the default back would lower it
    const auto hardware = LoudnessGuard::forRestore(server, machine.record());
    const auto before = server.calls();
    const auto device = *server.deviceForUID(kHeadphones);
    EXPECT_FALSE(machine.guard->setVolume(device, VolumeElement::main, 1));
    EXPECT_FALSE(machine.guard->setMute(device, false));
    EXPECT_FALSE(machine.guard->setDefaultOutput(*server.deviceForUID(kVirtualDeviceUID)));
    machine.pass(3s);
    EXPECT_EQ(server.calls(), before);
}

TEST_F(LoudnessGuardEndTest, ATerminationDuringTheQuitLeavesTheQuitToEnd) {
    begin();
    raiseBoth();
    machine.guard->silenceListeners();
    std::thread([this] { machine.guard->silenceListeners(); }).join();
    EXPECT_TRUE(machine.guard->setDefaultOutput(*server.deviceForUID(kSpeakers)));
    machine.settle();
    expectOwnLevels();
    machine.keep();
    EXPECT_FALSE(machine.record().isOpen());
}

TEST_F(LoudnessGuardEndTest, ACrashIsRepairedAtTheNextStart) {
    begin();
    raiseBoth();
    machine.crash();
    EXPECT_THAT(machine.heard(kMusic), ElementsAre(0, 0)); // the virtual device is still there
    machine.allow(kMusic, 0.5F);
    machine.launch();
    EXPECT_EQ(machine.level(kHeadphones), headphones);
    EXPECT_EQ(machine.delegate->originalOutputUID(), kSpeakers);
    EXPECT_THAT(machine.heard(kMusic), ElementsAre(0.5F, 0.25F));
    machine.quit();
    expectOwnLevels();
}

TEST_F(LoudnessGuardEndTest, TheSessionGuardGivesEveryDeviceBackAndLeavesTheRecord) {
    begin();
    raiseBoth();
    EXPECT_TRUE(machine.crashUnderGuard());
    expectOwnLevels();
    EXPECT_EQ(server.configuredDefault(), std::nullopt);
    EXPECT_EQ(machine.record().devices.size(), 2U);
    ASSERT_TRUE(machine.record().origin);
    EXPECT_EQ(machine.record().origin->output, kSpeakers);
    EXPECT_TRUE(machine.crashUnderGuard()) << "once more does no harm";
    expectOwnLevels();
}

TEST_F(LoudnessGuardEndTest, TheSessionGuardLeavesTheVirtualDeviceInAnyCase) {
    begin();
    machine.allow(kMusic, 0.6F);
    // Killed after the switch, ahead of the session's own record.
    machine.guard.emplace(server, machine.gate, machine.fake.mainQueue, machine.fake.systemLog,
                          machine.record());
    EXPECT_TRUE(machine.guard->setDefaultOutput(*server.deviceForUID(kVirtualDeviceUID)));
    EXPECT_TRUE(machine.crashUnderGuard());
    expectOwnLevels();
    // The device that was the default has gone.
    machine.launch();
    server.unplug(kSpeakers);
    machine.allow(kMusic, 0.6F);
    EXPECT_TRUE(machine.crashUnderGuard());
    EXPECT_EQ(server.defaultUID(), kHeadphones);
    EXPECT_EQ(server.configuredDefault(), std::nullopt);
    // No default is known yet: to be tried again.
    server.unplug(kHeadphones);
    server.unplug(kVirtualDeviceUID);
    EXPECT_FALSE(machine.crashUnderGuard());
}

TEST_F(LoudnessGuardEndTest, AfterACrashADeviceIsGivenBackWhenItComes) {
    begin();
    raiseBoth();
    machine.crash();
    server.unplug(kHeadphones);
    machine.allow(kMusic, 0.5F);
    machine.launch();
    machine.quit();
    EXPECT_TRUE(machine.hasRecord());
    server.plug(kHeadphones, "Headphones", stereo(0.5F, 1)); // a mixer that keeps what was raised
    machine.launch();
    EXPECT_EQ(machine.level(kHeadphones), headphones);
}

TEST_F(LoudnessGuardEndTest, ABalanceAtFullScaleSurvivesTheRestore) {
    server.plug(kSpeakers, "Speakers", {{1, 0.5F}, true});
    machine.plugDriver();
    server.play(kMusic);
    machine.settle();
    machine.launch();
    machine.crash();
    machine.launch();
    machine.quit();
    EXPECT_EQ(machine.level(kSpeakers), (DeviceLevel{{1, 0.5F}, true}));
}

struct Configured {
    const char* name;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

class ConfiguredDefaultTest : public LoudnessGuardEndTest,
                              public testing::WithParamInterface<Configured> {};

TEST_P(ConfiguredDefaultTest, IsAsBeforeAfterEveryEnd) {
    begin();
    if (GetParam().before) (void)server.setConfiguredDefault(*GetParam().before);
    machine.settle();
    machine.launch();
    EXPECT_EQ(server.configuredDefault(), kVirtualDeviceUID);
    machine.quit();
    EXPECT_EQ(server.configuredDefault(), GetParam().after) << "after quitting";
    machine.launch();
    machine.terminate();
    EXPECT_EQ(server.configuredDefault(), GetParam().after) << "after SIGTERM";
    machine.launch();
    machine.crash();
    machine.allow(kMusic, 0.5F); // after the silence
    machine.launch();
    machine.quit();
    EXPECT_EQ(server.configuredDefault(), GetParam().after) << "after a crash";
    EXPECT_EQ(server.defaultUID(), kSpeakers);
}

INSTANTIATE_TEST_SUITE_P(Requests, ConfiguredDefaultTest,
                         testing::Values(Configured{"none", std::nullopt, std::nullopt},
                                         Configured{"theDevice", kSpeakers, kSpeakers},
                                         Configured{"oneThatIsAway", "acc.away", "acc.away"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(LoudnessGuardEndTest, ARequestThatTakesEffectLateIsStillTakenBack) {
    begin();
    server.hold();
    machine.start();
    machine.pass(400ms); // by now the application has asked twice
    server.release();
    machine.settle();
    EXPECT_EQ(server.defaultUID(), kVirtualDeviceUID);
    machine.quit();
    EXPECT_EQ(server.configuredDefault(), std::nullopt);
}

TEST_F(LoudnessGuardEndTest, ADefaultThatWouldGoElsewhereIsPinned) {
    begin();
    machine.launch();
    machine.allow(kMusic, 0.6F);
    server.choose(kHeadphones); // not the first choice of a server that is left alone
    machine.settle();
    machine.quit();
    EXPECT_EQ(server.configuredDefault(), kHeadphones);
    EXPECT_EQ(server.defaultUID(), kHeadphones);
}

TEST_F(LoudnessGuardEndTest, ADefaultThatNoLongerComesByItselfIsPinned) {
    begin();
    machine.launch();
    server.last.insert(kSpeakers); // something that ranks higher is there now
    machine.quit();
    EXPECT_EQ(server.configuredDefault(), kSpeakers);
    EXPECT_EQ(server.defaultUID(), kSpeakers);
}

TEST_F(LoudnessGuardEndTest, TheRecordIsWrittenBeforeTheRaise) {
    begin();
    std::optional<RaisedDevicesRecord> atTheRaise;
    const auto listen = server.changed;
    server.changed = [&] {
        if (!atTheRaise && machine.level(kSpeakers) == stereo(1, 0.5F)) {
            atTheRaise.emplace(machine.record());
        }
        listen();
    };
    machine.launch();
    ASSERT_TRUE(atTheRaise);
    const RaisedDevicesRecord::Device expected{speakers, true};
    EXPECT_EQ(atTheRaise->devices[kSpeakers], expected);
    EXPECT_EQ(atTheRaise->origin->output, kSpeakers);
}

TEST_F(LoudnessGuardEndTest, VolumesOfAFileAreLimitedToFullScale) {
    begin();
    machine.fake.fileSystem.files[LoudnessMachine::kRecord] =
        R"({"devices": {"acc.headphones": {"volumes": [9.9, 0.5], "muted": false, "moved": true}}})";
    machine.launch();
    EXPECT_EQ(machine.level(kHeadphones), stereo(1, 0.5F));
    machine.quit();

    auto& defaults = machine.fake.userDefaults;
    for (const auto& [saved, limited] : {std::pair{9.9F, 1.0F}, {-1.0F, 0.0F}, {NAN, 0.0F}}) {
        SavedSession::save(defaults, {kSpeakers, saved});
        EXPECT_EQ(SavedSession::load(defaults)->volume, limited);
    }
}

class BrokenRecordTest : public LoudnessGuardEndTest,
                         public testing::WithParamInterface<const char*> {};

TEST_P(BrokenRecordTest, IsSetAside) {
    begin();
    auto& files = machine.fake.fileSystem.files;
    files[LoudnessMachine::kRecord] = GetParam();
    machine.launch();
    EXPECT_THAT(machine.fake.systemLog.lines, Contains(HasSubstr("cannot be read")));
    EXPECT_EQ(files[LoudnessMachine::kRecord + std::string(".unreadable")], GetParam());
    EXPECT_EQ(machine.level(kSpeakers), stereo(1, 0.5F));
    machine.quit();
    expectOwnLevels();
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BrokenRecordTest,
    testing::Values("", "{", "[]", R"({"devices": 3})",
                    R"({"devices": {"acc.speakers": {"volumes": [], "muted": false,
                        "moved": true}}})",
                    R"({"devices": {"acc.speakers": {"volumes": ["loud"], "muted": false,
                        "moved": true}}})",
                    R"({"devices": {"acc.speakers": {"volumes": [0.5], "muted": 0,
                        "moved": true}}})",
                    R"({"devices": {"acc.headphones": {"volumes": [1, 1], "muted": false,
                        "moved": true}, "acc.speakers": 1}})",
                    R"({"devices": {}, "origin": "acc.speakers"})"));

} // namespace

} // namespace halvo::test
