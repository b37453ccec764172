#include "linux_audio/ServerFixture.h"

#include <limits>

namespace halvo {
namespace {

class LevelTest : public ServerFixture {};

TEST_F(LevelTest, WritesAreSeenByTheNextRead) {
    struct Case {
        VolumeElement element;
        float volume;
        std::vector<float> channels;
        float loudest;
    };
    const Case cases[] = {
        {VolumeElement::main, 0.5F, {0.5F, 0.5F}, 0.5F},
        {VolumeElement::left, 0.25F, {0.25F, 0.5F}, 0.5F},
        {VolumeElement::right, 0.125F, {0.25F, 0.125F}, 0.25F},
        {VolumeElement::main, 0, {0, 0}, 0},
        {VolumeElement::right, 1, {0, 1}, 1},
        {VolumeElement::main, 7, {1, 1}, 1},
        {VolumeElement::main, -1, {0, 0}, 0},
        {VolumeElement::main, 0.001F, {0.001F, 0.001F}, 0.001F},
    };
    const auto id = device("acc.b");
    for (const auto& entry : cases) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, entry.volume);
        ASSERT_TRUE(hardware_->setVolume(id, entry.element, entry.volume));
        EXPECT_EQ(hardware_->volume(id, VolumeElement::main), entry.loudest);
        EXPECT_EQ(hardware_->volume(id, VolumeElement::left), entry.channels[0]);
        EXPECT_EQ(hardware_->volume(id, VolumeElement::right), entry.channels[1]);
        EXPECT_TRUE(waitFor([&] { return session_->volume("acc.b") == entry.channels; }));
    }
    EXPECT_FALSE(
        hardware_->setVolume(id, VolumeElement::main, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(session_->volume("acc.a"), (std::vector<float>{1, 1}))
        << "the other one is as it was";
}

TEST_F(LevelTest, OfASinkThatNeverPlayedIsSeenByEverybody) {
    ASSERT_TRUE(session_->plug({"acc.c", "Never Played"}));
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("acc.c").has_value(); }));
    const auto id = device("acc.c");
    for (const float volume : {0.25F, 0.5F}) {
        ASSERT_TRUE(hardware_->setLevel(id, {{volume, volume}, true}, LevelPersistence::temporary));
        EXPECT_EQ(hardware_->volume(id, VolumeElement::main), volume);
        EXPECT_TRUE(waitFor([&] {
            return session_->volume("acc.c") == std::vector<float>{volume, volume} &&
                   session_->isMuted("acc.c");
        }));
    }
    EXPECT_FALSE(hardware_->hasForeignStreams(id));
}

TEST_F(LevelTest, MuteLeavesTheVolumeAlone) {
    const auto id = device("acc.a");
    ASSERT_TRUE(hardware_->setVolume(id, VolumeElement::main, 0.5F));
    for (const bool muted : {true, false, true}) {
        ASSERT_TRUE(hardware_->setMute(id, muted));
        EXPECT_EQ(hardware_->mute(id), muted);
        EXPECT_TRUE(waitFor([&] { return session_->isMuted("acc.a") == muted; }));
    }
    EXPECT_EQ(hardware_->volume(id, VolumeElement::main), 0.5F);
    ASSERT_TRUE(hardware_->setVolume(id, VolumeElement::main, 0.25F));
    EXPECT_EQ(hardware_->mute(id), true);
}

TEST_F(LevelTest, IsReadAndWrittenAsAWhole) {
    const auto id = device("acc.a");
    const DeviceLevel level{{0.25F, 0.75F}, true};
    ASSERT_TRUE(hardware_->setLevel(id, level, LevelPersistence::saved));
    EXPECT_EQ(hardware_->level(id), level);
    ASSERT_TRUE(hardware_->setLevel(id, {{0.5F}, false}, LevelPersistence::temporary));
    EXPECT_EQ(hardware_->level(id), (DeviceLevel{{0.5F, 0.5F}, false})) << "of another width";
    EXPECT_FALSE(hardware_->setLevel(id, {}, LevelPersistence::temporary));
    EXPECT_EQ(hardware_->level(id + 1000), std::nullopt);
}

TEST_F(LevelTest, OfAMonoDeviceHasNoRight) {
    ASSERT_EQ(session_
                  ->run({"pw-cli", "create-node", "adapter",
                         "{ factory.name=support.null-audio-sink media.class=Audio/Sink "
                         "node.name=mono object.linger=true audio.position=[MONO] }"})
                  .status,
              0);
    ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("mono").has_value(); }));
    const auto id = device("mono");
    ASSERT_TRUE(session_->wake("mono")); // by then the session manager has set its level
    EXPECT_EQ(hardware_->level(id)->channelVolumes.size(), 1U);
    EXPECT_TRUE(hardware_->setVolume(id, VolumeElement::left, 0.5F));
    EXPECT_EQ(hardware_->volume(id, VolumeElement::main), 0.5F);
    EXPECT_EQ(hardware_->volume(id, VolumeElement::right), std::nullopt);
    EXPECT_FALSE(hardware_->setVolume(id, VolumeElement::right, 1));
    EXPECT_FALSE(hardware_->listenToVolume(id, VolumeElement::right, [] {}));
}

TEST_F(LevelTest, ChangedByOthersIsHeardByItsOwnListenersOnly) {
    int volumesA = 0;
    int volumesB = 0;
    int mutesA = 0;
    ASSERT_TRUE(
        hardware_->listenToVolume(device("acc.a"), VolumeElement::main, [&] { ++volumesA; }));
    ASSERT_TRUE(
        hardware_->listenToVolume(device("acc.b"), VolumeElement::main, [&] { ++volumesB; }));
    ASSERT_TRUE(hardware_->listenToMute(device("acc.a"), [&] { ++mutesA; }));
    ASSERT_TRUE(session_->setVolume("acc.a", {0.5F, 0.5F}));
    EXPECT_TRUE(waitFor([&] { return volumesA == 1; }));
    EXPECT_EQ(hardware_->volume(device("acc.a"), VolumeElement::main), 0.5F);
    EXPECT_EQ(mutesA, 0);
    ASSERT_TRUE(session_->setMuted("acc.a", true));
    EXPECT_TRUE(waitFor([&] { return mutesA == 1; }));
    EXPECT_EQ(volumesA, 1);
    EXPECT_EQ(volumesB, 0);

    ASSERT_TRUE(session_->setVolume("acc.a", {1.5F, 1.25F}));
    EXPECT_TRUE(waitFor([&] { return volumesA == 2; }));
    EXPECT_EQ(hardware_->level(device("acc.a")), (DeviceLevel{{1, 1}, true})) << "amplified";
}

} // namespace
} // namespace halvo
