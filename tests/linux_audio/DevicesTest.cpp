#include "linux/pipewire/PipeWireGraph.h"
#include "linux_audio/ServerFixture.h"
#include "session/Player.h"

#include <algorithm>
#include <atomic>

namespace halvo {
namespace {

using session::SimulatedOutput;

std::vector<std::string> uids(AudioHardware& hardware) {
    std::vector<std::string> result;
    for (const auto device : hardware.deviceIDs().value_or(std::vector<AudioDeviceID>{})) {
        result.push_back(hardware.uid(device).value_or("?"));
    }
    return result;
}

/// Checks every announcement on the connection's thread, before other observers.
class AnnouncementCheck final : public PipeWireObserver {
  public:
    explicit AnnouncementCheck(PipeWireConnection& connection) : connection_(connection) {
        const PipeWireConnection::Lock lock(connection_);
        connection_.add(*this);
    }
    ~AnnouncementCheck() override {
        const PipeWireConnection::Lock lock(connection_);
        connection_.remove(*this);
    }
    void devicesChanged() override {
        const auto& graph = connection_.graph();
        for (const auto device : graph.sinks()) {
            if (!graph.level(*graph.sink(device)).channelVolumes) ++withoutLevel;
        }
        ++announcements;
    }
    std::atomic<int> announcements{0};
    std::atomic<int> withoutLevel{0};

  private:
    PipeWireConnection& connection_;
};

class DevicesTest : public ServerFixture {};

TEST_F(DevicesTest, AreTheSinksInOrderOfAppearance) {
    // Neither a program's stream nor a microphone is a device to play to.
    session::Player player(session_->serverSocket(), std::vector<float>(2 * 48000), 48000);
    ASSERT_TRUE(waitFor([&] { return player.hasStarted(); }));
    ASSERT_EQ(session_
                  ->run({"pw-cli", "create-node", "adapter",
                         "{ factory.name=support.null-audio-sink media.class=Audio/Source/Virtual "
                         "node.name=microphone object.linger=true audio.position=[FL FR] }"})
                  .status,
              0);
    ASSERT_TRUE(session_->plug({"acc.0", "First by name, last to come"}));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("acc.0").has_value(); }));

    EXPECT_EQ(uids(*hardware_), (std::vector<std::string>{"acc.a", "acc.b", "acc.0"}));
    EXPECT_EQ(hardware_->name(device("acc.b")), "Headphones");
    EXPECT_TRUE(hardware_->hasOutputStreams(device("acc.b")));
    EXPECT_EQ(hardware_->deviceForUID("acc"), std::nullopt);
}

TEST_F(DevicesTest, AreAnnouncedWithTheirVolumeKnown) {
    AnnouncementCheck check(*connection_);
    int calls = 0;
    ASSERT_TRUE(hardware_->listenToDeviceList([&] { ++calls; }));
    for (int i = 0; i < 5; ++i) {
        const std::string uid = "usb." + std::to_string(i);
        ASSERT_TRUE(session_->plug({uid, "USB", {0.25F, 0.125F}}));
        ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID(uid).has_value(); }));
        EXPECT_EQ(hardware_->volume(device(uid), VolumeElement::left), 0.25F);
        EXPECT_EQ(hardware_->volume(device(uid), VolumeElement::right), 0.125F);
    }
    EXPECT_TRUE(waitFor([&] { return calls >= 5; }));
    EXPECT_GE(check.announcements, 5);
    EXPECT_EQ(check.withoutLevel, 0);
}

TEST_F(DevicesTest, ThatGoAnswerNothingAndTheirListenersAreStill) {
    ASSERT_TRUE(session_->plug({"usb", "USB"}));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("usb").has_value(); }));
    const auto first = device("usb");
    int lists = 0;
    int volumes = 0;
    ASSERT_TRUE(hardware_->listenToDeviceList([&] { ++lists; }));
    ASSERT_TRUE(hardware_->listenToVolume(first, VolumeElement::main, [&] { ++volumes; }));
    ASSERT_TRUE(session_->setVolume("usb", {0.5F, 0.5F}));
    ASSERT_TRUE(waitFor([&] { return volumes == 1; }));

    ASSERT_TRUE(session_->unplug("usb"));
    ASSERT_TRUE(waitFor([&] { return lists > 0 && !hardware_->deviceForUID("usb"); }));
    EXPECT_EQ(uids(*hardware_), (std::vector<std::string>{"acc.a", "acc.b"}));
    EXPECT_FALSE(hardware_->hasOutputStreams(first));
    EXPECT_EQ(hardware_->name(first), std::nullopt);
    EXPECT_EQ(hardware_->uid(first), std::nullopt);
    EXPECT_EQ(hardware_->volume(first, VolumeElement::main), std::nullopt);
    EXPECT_EQ(hardware_->mute(first), std::nullopt);
    EXPECT_FALSE(hardware_->setVolume(first, VolumeElement::main, 1));
    EXPECT_FALSE(hardware_->setMute(first, false));
    EXPECT_FALSE(hardware_->setDefaultOutput(first));
    EXPECT_FALSE(hardware_->setDefaultSystemOutput(first));
    EXPECT_FALSE(hardware_->listenToVolume(first, VolumeElement::main, [] {}));
    EXPECT_FALSE(hardware_->listenToMute(first, [] {}));

    // A device that returns has a new ID, even if the server reuses its numbers.
    ASSERT_TRUE(session_->plug({"usb", "USB"}));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("usb").has_value(); }));
    EXPECT_NE(device("usb"), first);
    int again = 0;
    ASSERT_TRUE(hardware_->listenToVolume(device("usb"), VolumeElement::main, [&] { ++again; }));
    ASSERT_TRUE(session_->setVolume("usb", {0.25F, 0.25F}));
    EXPECT_TRUE(waitFor([&] { return again > 0; }));
    EXPECT_EQ(volumes, 1);
}

TEST_F(DevicesTest, TellWhetherOthersPlayIntoThem) {
    int streams = 0;
    ASSERT_TRUE(hardware_->listenToStreams([&] { ++streams; }));
    EXPECT_FALSE(hardware_->hasForeignStreams(device("acc.b")));
    {
        session::Player player(session_->serverSocket(), std::vector<float>(2 * 48000), 48000,
                               "acc.b");
        EXPECT_TRUE(
            waitFor([&] { return streams > 0 && hardware_->hasForeignStreams(device("acc.b")); }));
        EXPECT_FALSE(hardware_->hasForeignStreams(device("acc.a")));
        streams = 0;
    }
    EXPECT_TRUE(
        waitFor([&] { return streams > 0 && !hardware_->hasForeignStreams(device("acc.b")); }));
}

} // namespace
} // namespace halvo
