#include "fake/FakeServices.h"
#include "linux/mpris/LinuxScriptRunner.h"
#include "media/BusScene.h"
#include "nowplaying/PlayerQuery.h"
#include "nowplaying/PlayerScripts.h"
#include "qt/QtImageReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

// The players' scripts, answered from a session bus; and covers as pictures.

namespace halvo::test {

namespace {

using Commands = std::vector<std::string>;

BusScene::Metadata song(const std::string& title) {
    return {{"xesam:title", title},
            {"xesam:artist", std::vector<std::string>{"Artist"}},
            {"xesam:album", "Album"},
            {"mpris:length", std::int64_t{215'500'000}},
            {"mpris:artUrl", "https://covers.example/1"}};
}

std::string answer(LinuxScriptRunner& scripts, const std::string& source) {
    return scripts.run(source).value_or("failed").value_or("nothing");
}

} // namespace

TEST(Scripts, TellWhatPlayersPlay) {
    BusScene scene;
    LinuxScriptRunner scripts;
    FakeSystemLog log;
    EXPECT_EQ(answer(scripts, kSpotifyScript), "NOT_RUNNING");
    const auto hanging = scene.player("hanging");
    hanging->setHanging(true);
    const auto paused = scene.player("aaa", "Paused", song("paused"));
    const auto playing = scene.player("other", "Playing", song("playing"));
    EXPECT_EQ(answer(scripts, kMusicScript), "playing|||playing|||Artist|||Album|||215.500000");
    const auto spotify = scene.player("spotify", "Stopped", song("spotify"));
    EXPECT_EQ(answer(scripts, kSpotifyScript), "STOPPED");
    spotify->setStatus("Paused");
    const auto query = querySpotify(scripts, log);
    ASSERT_TRUE(query);
    EXPECT_EQ(query->track.title, "spotify");
    EXPECT_EQ(query->track.duration, 215.5);
    EXPECT_EQ(query->artworkURL, "https://covers.example/1");
    EXPECT_FALSE(query->isPlaying);
    EXPECT_EQ(answer(scripts, "beep"), "nothing");
}

TEST(Scripts, HandCommandsToSpotifyThenToAnother) {
    BusScene scene;
    LinuxScriptRunner scripts;
    EXPECT_EQ(answer(scripts, commandScript(MediaCommand::play)), "none");
    const auto other = scene.player("other", "Playing", song("other"));
    EXPECT_EQ(answer(scripts, commandScript(MediaCommand::togglePlayPause)), "ok");
    EXPECT_EQ(other->commands(), Commands{"PlayPause"});
    const auto spotify = scene.player("spotify", "Paused", song("spotify"));
    for (const auto command : {MediaCommand::play, MediaCommand::pause, MediaCommand::nextTrack,
                               MediaCommand::previousTrack})
        EXPECT_EQ(answer(scripts, commandScript(command)), "ok");
    EXPECT_EQ(spotify->commands(), (Commands{"Play", "Pause", "Next", "Previous"}));
    EXPECT_EQ(other->commands().size(), 1U);
}

TEST(Pictures, AreReadScaledDownOrRefused) {
    std::ifstream file(HALVO_COVER_FILE, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    QtImageReader reader;
    const auto whole = reader.read(bytes, 256);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->width, 64);
    EXPECT_EQ(whole->height, 64);
    EXPECT_GT(whole->pixels->front() >> 16U, 0xFFF0U) << "opaque red";
    const auto small = reader.read(bytes, 16);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->width, 16);
    EXPECT_EQ(small->pixels->size(), 256U);

    // A bitmap's header: 65536 pixels wide and high, 24 bits each, none of them there.
    const std::string huge("BM\x36\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\0\0\1\0\0\0\1\0\1\0\x18\0"
                           "\0\0\0\0\0\0\0\0\x13\x0B\0\0\x13\x0B\0\0\0\0\0\0\0\0\0\0",
                           54);
    const std::string drawing = "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>";
    for (const auto& refused :
         {huge, drawing, std::string(), std::string("nonsense"), bytes.substr(0, bytes.size() / 2)})
        EXPECT_FALSE(reader.read(refused, 256)) << refused.substr(0, 4);
}

} // namespace halvo::test
