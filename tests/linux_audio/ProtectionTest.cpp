#include "linux_audio/ServerFixture.h"
#include "session/Player.h"
#include "session/Recorder.h"

#include <algorithm>

namespace halvo {
namespace {

class ProtectionTest : public ServerFixture {
  protected:
    void SetUp() override {
        ServerFixture::SetUp();
        for (const auto* sink : {"acc.a", "acc.b"})
            ASSERT_TRUE(session_->wake(sink)); // what is set there shows from now on
    }
    void raise(const std::string& uid, const DeviceLevel& own) {
        hardware_->protect(uid, own);
        ASSERT_TRUE(hardware_->setLevel(device(uid), {{1, 1}, false}, LevelPersistence::temporary));
    }
};

TEST_F(ProtectionTest, LowersARaisedDeviceBeforeAStreamIsHeardThere) {
    const DeviceLevel own{{0.125F, 0.125F}, false};
    session::Player player(session_->serverSocket(), std::vector<float>(2 * 48000 * 20, 0.5F),
                           48000);
    ASSERT_TRUE(waitFor([&] { return player.hasStarted(); }));
    session::Recorder recorder(session_->serverSocket(), "acc.b", 48000);
    ASSERT_TRUE(waitFor([&] { return recorder.isRunning(); }));
    for (int i = 0; i < 5; ++i) {
        raise("acc.b", own);
        const auto first = recorder.frames();
        ASSERT_TRUE(session_->setDefault("acc.b"));
        ASSERT_TRUE(waitFor([&] { return recorder.recording().peak(first) > 0; }));
        const auto enough = recorder.frames() + 8192;
        ASSERT_TRUE(waitFor([&] { return recorder.frames() >= enough; }));
        EXPECT_EQ(recorder.recording().peak(first), 0.5F * 0.125F) << i;
        EXPECT_EQ(hardware_->level(device("acc.b")), own);
        ASSERT_TRUE(session_->setDefault("acc.a"));
        ASSERT_TRUE(waitFor([&] {
            const auto recording = recorder.recording();
            return recording.peak(recording.frames() -
                                  std::min<std::size_t>(recording.frames(), 1024)) == 0;
        }));
    }
}

TEST_F(ProtectionTest, ActsWithoutTheMainThreadAndOnEitherKey) {
    const DeviceLevel own{{0.5F, 0.25F}, true};
    // It is the default already, without being configured; now it is configured.
    raise("acc.a", own);
    ASSERT_TRUE(session_->setDefault("acc.a"));
    EXPECT_TRUE(session::PrivateSession::waitFor(
        [&] { return session_->volume("acc.a") == own.channelVolumes; }));
    raise("acc.b", own);
    // Nothing runs the main queue here.
    ASSERT_TRUE(session_->setDefault("acc.b"));
    EXPECT_TRUE(session::PrivateSession::waitFor([&] {
        return session_->volume("acc.b") == own.channelVolumes && session_->isMuted("acc.b");
    }));
    // The session manager falls back to one of them by itself, without it being configured:
    // WirePlumber 0.4 to the choice before, 0.5 to the one with the highest priority.
    ASSERT_TRUE(session_->plug({"usb", "USB"}));
    ASSERT_TRUE(session_->setDefault("usb"));
    ASSERT_TRUE(waitFor([&] { return hardware_->defaultOutput() == device("usb"); }));
    raise("acc.a", own);
    raise("acc.b", own);
    ASSERT_TRUE(session_->unplug("usb"));
    ASSERT_TRUE(waitFor([&] { return session_->defaultSink().starts_with("acc."); }));
    EXPECT_EQ(hardware_->configuredDefault(), "usb");
    EXPECT_TRUE(
        waitFor([&] { return session_->volume(session_->defaultSink()) == own.channelVolumes; }));
}

TEST_F(ProtectionTest, LeavesADeviceAloneThatOnlyStaysTheDefault) {
    raise("acc.b", {{0.25F, 0.25F}, false});
    ASSERT_TRUE(session_->setDefault("acc.b"));
    ASSERT_TRUE(waitFor([&] { return hardware_->defaultOutput() == device("acc.b"); }));
    ASSERT_TRUE(waitFor([&] { return session_->volume("acc.b")[0] == 0.25F; }));
    // The user's own choice afterwards, and what else happens around it.
    ASSERT_TRUE(session_->setVolume("acc.b", {0.75F, 0.75F}));
    ASSERT_TRUE(session_->plug({"usb", "USB"}));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("usb").has_value(); }));
    EXPECT_EQ(hardware_->volume(device("acc.b"), VolumeElement::main), 0.75F);
}

TEST_F(ProtectionTest, EndsWhenItIsTakenBack) {
    raise("acc.b", {{0.25F, 0.25F}, false});
    hardware_->unprotect("acc.b");
    ASSERT_TRUE(hardware_->setDefaultOutput(device("acc.b")));
    ASSERT_TRUE(hardware_->setVolume(device("acc.a"), VolumeElement::main, 0.5F)); // a round trip
    EXPECT_EQ(hardware_->volume(device("acc.b"), VolumeElement::main), 1.0F);
}

TEST_F(ProtectionTest, ReachesADeviceThatComesBackAsTheDefault) {
    ASSERT_TRUE(session_->plug({"usb", "USB", {1, 1}}));
    ASSERT_TRUE(session_->setDefault("usb"));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("usb").has_value(); }));
    hardware_->protect("usb", {{0.25F, 0.25F}, false});
    ASSERT_TRUE(session_->unplug("usb"));
    ASSERT_TRUE(waitFor([&] { return !hardware_->deviceForUID("usb"); }));
    ASSERT_TRUE(session_->plug({"usb", "USB", {1, 1}}));
    EXPECT_TRUE(
        waitFor([&] { return session_->volume("usb") == std::vector<float>{0.25F, 0.25F}; }));
}

} // namespace
} // namespace halvo
