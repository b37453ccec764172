#include "linux/pipewire/PipeWireOutputUnit.h"
#include "linux_audio/ServerFixture.h"
#include "linux_audio/TestSignal.h"
#include "session/Recorder.h"

#include <thread>

namespace halvo {
namespace {

class RecoveryTest : public ServerFixture {};

TEST_F(RecoveryTest, OfAServerThatWentAndCameBack) {
    int lists = 0;
    int defaults = 0;
    int deadVolumes = 0;
    const auto before = hardware_->deviceIDs().value();
    ASSERT_TRUE(hardware_->listenToDeviceList([&] { ++lists; }));
    ASSERT_TRUE(hardware_->listenToDefaultOutput([&] { ++defaults; }));
    for (const auto id : before) {
        ASSERT_TRUE(hardware_->listenToVolume(id, VolumeElement::main, [&] { ++deadVolumes; }));
    }
    OutputGate gate;
    TestSignal signal;
    PipeWireOutputUnit unit(*connection_, gate);
    ASSERT_TRUE(unit.setStreamFormat({48000, 2}));
    ASSERT_TRUE(unit.setRenderCallback(TestSignal::render, &signal));
    ASSERT_TRUE(unit.setDevice(device("acc.b")));
    ASSERT_TRUE(unit.initialize());
    ASSERT_TRUE(unit.start());
    // A recorder keeps the device awake: for a unit alone it sleeps.
    const auto listen = [this] {
        return std::make_unique<session::Recorder>(session_->serverSocket(), "acc.b", 48000);
    };
    auto listener = listen();
    ASSERT_TRUE(waitFor([&] { return unit.framesPlayed() > 4096; }));

    for (int round = 0; round < 2; ++round) {
        session_->stopServer();
        ASSERT_TRUE(waitFor([&] { return !hardware_->deviceIDs(); }));
        EXPECT_EQ(hardware_->defaultOutput(), std::nullopt);
        EXPECT_EQ(hardware_->deviceForUID("acc.a"), std::nullopt);
        EXPECT_EQ(hardware_->configuredDefault(), std::nullopt);
        EXPECT_FALSE(hardware_->setVolume(before[0], VolumeElement::main, 1));
        EXPECT_FALSE(hardware_->setDefaultOutput(before[0]));
        EXPECT_FALSE(hardware_->setConfiguredDefault("acc.a"));
        EXPECT_FALSE(hardware_->hasForeignStreams(before[0]));
        EXPECT_FALSE(unit.setDevice(before[0]));
        EXPECT_FALSE(connection_->waitUntilReady(std::chrono::milliseconds(0)));

        queue_.flush();
        lists = defaults = 0;
        const auto played = unit.framesPlayed();
        ASSERT_TRUE(session_->startServer());
        listener = listen();
        ASSERT_TRUE(waitFor([&] { return lists > 0 && defaults > 0; })) << round;
        // What the first listener finds is complete: nothing seems to be newly connected.
        EXPECT_EQ(hardware_->deviceIDs()->size(), 2U);
        EXPECT_EQ(hardware_->defaultOutput(), device("acc.a"));
        EXPECT_TRUE(waitFor([&] { return unit.framesPlayed() > played + 8192; })) << round;
        for (const auto id : before)
            EXPECT_EQ(hardware_->name(id), std::nullopt) << "no old id names a new device";
        ASSERT_TRUE(hardware_->setVolume(device("acc.a"), VolumeElement::main, 0.5F));
        EXPECT_EQ(hardware_->volume(device("acc.a"), VolumeElement::main), 0.5F);
    }
    EXPECT_EQ(deadVolumes, 0);
}

TEST_F(RecoveryTest, OfAServerThatComesLate) {
    session_->stopServer();
    const auto connection = PipeWireConnection::create(session_->serverSocket());
    ASSERT_TRUE(connection);
    PipeWireAudioHardware hardware(*connection, queue_);
    int lists = 0;
    ASSERT_TRUE(hardware.listenToDeviceList([&] { ++lists; }));
    EXPECT_FALSE(connection->waitUntilReady(session::PrivateSession::kPatience));
    EXPECT_EQ(hardware.deviceIDs(), std::nullopt);
    ASSERT_TRUE(session_->startServer());
    EXPECT_TRUE(waitFor([&] { return lists > 0 && hardware.defaultOutput(); }));
}

TEST_F(RecoveryTest, WaitsForTheSessionManagerButNotForEver) {
    session_->stopServer();
    const auto server = session_->spawn({"pipewire"});
    ASSERT_TRUE(server);
    std::unique_ptr<PipeWireConnection> connection;
    ASSERT_TRUE(waitFor([&] {
        connection = PipeWireConnection::create(session_->serverSocket());
        const PipeWireConnection::Lock lock(*connection);
        return connection->core() != nullptr;
    }));
    {
        // Long after all objects have been reported; there is no default yet.
        PipeWireConnection::Lock lock(*connection);
        for (int i = 0; i < 10; ++i)
            ASSERT_TRUE(lock.roundTrip(session::PrivateSession::kPatience));
        EXPECT_FALSE(connection->isReady());
    }
    EXPECT_TRUE(connection->waitUntilReady(session::PrivateSession::kPatience));
}

TEST_F(RecoveryTest, LeavesASecondConnectionAlone) {
    // As the SIGTERM thread does: with its own connection, while the main thread continues.
    FakeMainQueue otherQueue;
    std::thread other([&] {
        const auto connection = PipeWireConnection::create(session_->serverSocket());
        ASSERT_TRUE(connection->waitUntilReady(session::PrivateSession::kPatience));
        PipeWireAudioHardware hardware(*connection, otherQueue);
        const auto id = hardware.deviceForUID("acc.b");
        ASSERT_TRUE(id);
        for (int i = 1; i <= 20; ++i)
            EXPECT_TRUE(hardware.setVolume(*id, VolumeElement::main, static_cast<float>(i) / 20));
    });
    for (int i = 1; i <= 20; ++i) {
        EXPECT_TRUE(
            hardware_->setVolume(device("acc.a"), VolumeElement::main, static_cast<float>(i) / 20));
    }
    other.join();
    EXPECT_TRUE(
        waitFor([&] { return hardware_->volume(device("acc.b"), VolumeElement::main) == 1; }));
}

} // namespace
} // namespace halvo
