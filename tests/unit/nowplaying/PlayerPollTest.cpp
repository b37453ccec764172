#include "nowplaying/PlayerScripts.h"
#include "unit/nowplaying/NowPlayingFixture.h"

using namespace halvo;

namespace {

class Polls : public NowPlayingTest {
  protected:
    /// What the two players answer from now on, seen at the next poll.
    void poll(const std::string& spotify, const std::string& music = "NOT_RUNNING") {
        scripts.answers = {{kSpotifyScript, spotify}, {kMusicScript, music}};
        advance(3s);
    }
    bool hasArtwork() { return monitor->artworkImage.get().has_value(); }
};

} // namespace

TEST_F(Polls, WhatAReplyGives) {
    struct Row {
        const char* name;
        std::string spotify;
        std::string music;
        NowPlayingTrack track; ///< without an application: nothing plays
        bool isPlaying;
    };
    const std::string s = "com.spotify.client";
    const std::string m = "com.apple.Music";
    const Row rows[] = {
        {"all", "playing|||T|||A|||L|||215.5|||u", "", {"T", "A", "L", s, 215.5}, true},
        {"paused first", "paused|||T|||A", "playing|||M|||B", {"T", "A", {}, s, {}}, false},
        {"the other", "STOPPED", "playing|||M|||B|||L|||3", {"M", "B", "L", m, 3}, true},
        {"comma", "playing|||T|||A|||L|||215,5", "", {"T", "A", "L", s, {}}, true},
        {"rest", "Playing|||T|||A|||L|||215abc", "", {"T", "A", "L", s, {}}, false},
        {"blank before", "playing|||T|||A|||L||| 2", "", {"T", "A", "L", s, {}}, true},
        {"empty title", "playing||||||A", "", {"", "A", {}, s, {}}, true},
        {"two parts", "playing|||T", "NOT_RUNNING", {}, false},
        {"neither", "NOT_RUNNING", "STOPPED", {}, false}};
    monitor->startAppleScriptPolling();
    settle();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        poll("playing|||before|||x|||y|||1|||z");
        poll(row.spotify, row.music);
        const auto expected = row.track.bundleID ? std::optional(row.track) : std::nullopt;
        EXPECT_EQ(monitor->currentTrack.get(), expected);
        EXPECT_EQ(monitor->isPlaying.get(), row.isPlaying);
    }
}

TEST_F(Polls, ArtworkFollowsItsAddress) {
    monitor->startAppleScriptPolling();
    settle();
    poll("playing|||1|||A|||L|||1|||http://art/1");
    EXPECT_EQ(takeLog(), Lines{"Halvo: Now Playing (AppleScript): \"1\" by \"A\" "
                               "[com.spotify.client]"});
    poll("playing|||1|||A|||L|||1|||http://art/other");
    EXPECT_EQ(takeLog(), Lines{}) << "the same track's address is not looked at";
    EXPECT_EQ(session.requests.size(), 1U);
    session.answer(HTTPResponse{200, "image 1"});
    settle();
    EXPECT_TRUE(hasArtwork());
    poll("playing|||2|||A|||L|||1|||http://art/2");
    EXPECT_TRUE(hasArtwork()) << "the old one stays until the new one has loaded";
    session.answer(std::nullopt);
    settle();
    EXPECT_TRUE(hasArtwork()) << "a failure leaves it";
    poll("playing|||3|||A|||L|||1");
    EXPECT_FALSE(hasArtwork());
    poll("playing|||4|||A|||L|||1|||not an address");
    poll("STOPPED", "playing|||4|||A|||L|||1|||http://art/4");
    EXPECT_EQ(session.requests.size(), 2U) << "the other player is not asked for one";
    poll("playing|||5|||A|||L|||1|||http://art/5");
    poll("STOPPED", "STOPPED");
    poll("playing|||6|||A|||L|||1|||http://art/5");
    EXPECT_EQ(session.requests.size(), 3U) << "the address is remembered while nothing plays";
    poll("playing|||7|||A|||L|||1|||http://art/7");
    session.answer(HTTPResponse{200, "image 5"});
    settle();
    EXPECT_FALSE(hasArtwork()) << "another track's by now";
}

TEST_F(Polls, ASlowScriptIsNotAskedTwice) {
    monitor->startAppleScriptPolling();
    queue.advance(9s); // the background still works on the first
    background.flush();
    EXPECT_EQ(scripts.sources, (Lines{kSpotifyScript, kMusicScript}));
    queue.advance(3s);
    background.flush();
    EXPECT_EQ(scripts.sources.size(), 4U);
    monitor->stopAppleScriptPolling();
    advance(30s);
    EXPECT_EQ(scripts.sources.size(), 4U);
}

TEST_F(Polls, OnlyUnexpectedErrorsAreLogged) {
    monitor->startAppleScriptPolling();
    for (const int number : {-1728, -600, -1743}) {
        scripts.errors = {{kMusicScript, {number, "Not allowed"}}};
        advance(3s);
    }
    EXPECT_EQ(takeLog(), Lines{"Halvo: AppleScript error (code -1743): Not allowed"});
}

TEST_F(Polls, CommandsHaveAVerbAndAWord) {
    struct Row {
        MediaCommand command;
        std::string word;
        std::string verb;
    };
    const Row rows[] = {{MediaCommand::play, "play", "play"},
                        {MediaCommand::pause, "pause", "pause"},
                        {MediaCommand::togglePlayPause, "toggle_play_pause", "playpause"},
                        {MediaCommand::nextTrack, "next_track", "next track"},
                        {MediaCommand::previousTrack, "previous_track", "previous track"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.word);
        monitor->send(row.command);
        EXPECT_TRUE(scripts.sources.empty()) << "not on the main thread";
        settle();
        const auto source = std::exchange(scripts.sources, {}).at(0);
        EXPECT_TRUE(source.contains("        tell application \"Spotify\" to " + row.verb +
                                    "\n        return \"ok\"\n    end if\n"));
        EXPECT_TRUE(source.contains("        tell application \"Music\" to " + row.verb + "\n"));
        EXPECT_TRUE(source.ends_with("end tell\nreturn \"none\""));
    }
    launcher.launchFails = true;
    startHelper();
    monitor->stopAppleScriptPolling();
    settle();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.word);
        scripts.sources.clear();
        takeLog();
        monitor->send(row.command);
        settle();
        EXPECT_EQ(calls.calls().back(),
                  "run /usr/bin/perl /bundle/run.pl /bundle/media_helper.dylib " + row.word);
        EXPECT_EQ(takeLog(), Lines{"Halvo: Failed to send command via helper: no such program"});
        EXPECT_EQ(scripts.sources, Lines{commandScript(row.command)});
    }
}
