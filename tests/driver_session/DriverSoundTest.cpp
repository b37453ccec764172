#include "driver_session/DriverScene.h"

#include "session/Player.h"
#include "session/Recorder.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>

namespace {

using halvo::session::Options;
using halvo::session::Player;
using halvo::session::PrivateSession;
using halvo::session::Recorder;
using halvo::test::countingSamples;
using halvo::test::DriverScene;
using halvo::test::examineCounting;
using halvo::test::kVirtualSink;

void append(std::string& bytes, std::uint32_t value, int width) {
    for (int index = 0; index < width; ++index) {
        bytes += static_cast<char>((value >> (8 * index)) & 0xFFU);
    }
}

/// A stereo file of 32-bit floats, so that what the file holds is what is played.
void writeWave(const std::string& path, const std::vector<float>& samples, std::uint32_t rate) {
    const auto size = static_cast<std::uint32_t>(samples.size() * sizeof(float));
    std::string bytes = "RIFF";
    append(bytes, size + 36, 4);
    bytes += "WAVEfmt ";
    append(bytes, 16, 4);
    append(bytes, 3, 2);
    append(bytes, 2, 2);
    append(bytes, rate, 4);
    append(bytes, rate * 8, 4);
    append(bytes, 8, 2);
    append(bytes, 32, 2);
    bytes += "data";
    append(bytes, size, 4);
    bytes.append(reinterpret_cast<const char*>(samples.data()), size);
    std::ofstream(path, std::ios::binary) << bytes;
}

/// Plays counting samples with an ordinary program and changes the sink's level all the while.
void expectEveryFrame(DriverScene& scene, std::uint32_t rate, int changes) {
    auto& session = scene.session();
    const std::size_t frames = rate * 3;
    const std::string file = session.directory() + "/tmp/counting.wav";
    auto samples = countingSamples(frames);
    // pw-play drops a last block that is not full, so silence comes last.
    samples.resize(samples.size() + std::size_t{2} * 4096);
    writeWave(file, samples, rate);
    ASSERT_TRUE(session.setDefault(kVirtualSink));
    auto player = session.spawn({"pw-play", file});
    ASSERT_TRUE(player) << player.error();
    ASSERT_TRUE(
        scene.gatherUntil([&] { return examineCounting(scene.ring().samples()).frames > 0; }));
    for (int change = 0; change < changes; ++change) {
        const float volume = static_cast<float>(change % 10) / 10.0F;
        ASSERT_TRUE(session.setVolume(kVirtualSink, {volume, 1.0F - volume}));
        ASSERT_TRUE(session.setMuted(kVirtualSink, change % 3 == 0));
        scene.ring().gather();
    }
    EXPECT_TRUE((*player)->isRunning()) << "the changes were over before the sound was";
    ASSERT_TRUE(scene.gatherUntil([&] { return !(*player)->isRunning(); }));
    const auto result = examineCounting(scene.ring().samples());
    EXPECT_EQ(scene.ring().overtaken(), 0U);
    EXPECT_EQ(result.wrong, 0U);
    EXPECT_EQ(result.jumps, 0U);
    EXPECT_EQ(result.first, 1U);
    EXPECT_EQ(result.last, frames);
    EXPECT_EQ(result.frames, frames);
}

TEST(DriverSoundTests, EveryFrameArrivesUnchangedWhateverTheVolume) {
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    EXPECT_EQ(scene.ring().sampleRate(), 48000U);
    expectEveryFrame(scene, 48000, 200);
}

TEST(DriverSoundTests, FollowsTheServersRate) {
    for (const std::uint32_t rate : {44100U, 96000U}) {
        SCOPED_TRACE(rate);
        Options options;
        options.rate = rate;
        options.quantum = rate > 48000 ? 2048 : 1024; // cycles last as long at each rate
        DriverScene scene(options);
        scene.startDriver();
        ASSERT_TRUE(scene.isUp());
        EXPECT_EQ(scene.ring().sampleRate(), rate);
        expectEveryFrame(scene, rate, 20);
    }
}

TEST(DriverSoundTests, FollowsARateThatIsForcedLater) {
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    for (const char* rate : {"44100", "0"}) {
        ASSERT_EQ(scene.session()
                      .run({"pw-metadata", "-n", "settings", "0", "clock.force-rate", rate})
                      .status,
                  0);
        const std::uint32_t expected = std::strcmp(rate, "0") == 0 ? 48000 : 44100;
        EXPECT_TRUE(PrivateSession::waitFor([&] { return scene.ring().sampleRate() == expected; }));
        scene.ring().clear();
        const Player player(scene.session().serverSocket(), countingSamples(200000), expected,
                            kVirtualSink);
        EXPECT_TRUE(scene.soundArrives()) << "at " << expected;
    }
}

TEST(DriverSoundTests, SleepsWhileNobodyPlays) {
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    {
        const Player player(scene.session().serverSocket(), countingSamples(200000), 48000,
                            kVirtualSink);
        ASSERT_TRUE(scene.soundArrives());
    }
    // Still for as long as a dozen cycles would take.
    std::uint64_t index = 0;
    int still = 0;
    EXPECT_TRUE(PrivateSession::waitFor([&] {
        still = scene.ring().writeIndex() == index ? still + 1 : 0;
        index = scene.ring().writeIndex();
        return still > 120;
    }));
}

TEST(DriverSoundTests, IsNeverTheDefaultUnasked) {
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    EXPECT_EQ(scene.session().defaultSink(), "acc.a");
    EXPECT_EQ(scene.session().configuredDefault(), std::nullopt);
    EXPECT_EQ(scene.session().volume(kVirtualSink), (std::vector<float>{1.0F, 1.0F}));
    EXPECT_FALSE(scene.session().isMuted(kVirtualSink));
}

} // namespace
