#include "nowplaying/HelperMessage.h"
#include "unit/nowplaying/NowPlayingFixture.h"

#include <algorithm>

using namespace halvo;

namespace {

using Helper = NowPlayingTest;

constexpr const char* kLaunch =
    "launch /usr/bin/perl /bundle/run.pl /bundle/media_helper.dylib loop";
/// "image" in base64, which the fake reader takes for a picture.
const std::string kArt = R"(,"artworkDataBase64":"aW1hZ2U=")";

} // namespace

TEST_F(Helper, WhereItLies) {
    struct Row {
        const char* name;
        std::optional<std::string> folder;
        std::vector<std::string> files;
        std::string script;
        std::string log;
    };
    const Row rows[] = {
        {"both places",
         "/r",
         {"/r/run.pl", "/r/media_helper.dylib", "/r/MediaRemoteHelper/run.pl",
          "/r/MediaRemoteHelper/media_helper.dylib"},
         "/r/MediaRemoteHelper/run.pl",
         "Halvo: Found helper in app bundle subdir: /r/MediaRemoteHelper"},
        {"half in the subfolder",
         "/r",
         {"/r/run.pl", "/r/media_helper.dylib", "/r/MediaRemoteHelper/run.pl"},
         "/r/run.pl",
         "Halvo: Found helper in app bundle root: /r"},
        {"half", "/r", {"/r/run.pl"}, "none", "Halvo: Helper files not found in bundle"},
        {"no folder", std::nullopt, {}, "none", "Halvo: Helper files not found in bundle"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        NowPlayingMonitor fresh(
            {queue, background, launcher, scripts, session, images, helper, files, log});
        helper.folder = row.folder;
        files.files.clear();
        for (const auto& file : row.files)
            files.files[file] = "";
        fresh.locateHelperFiles();
        fresh.startHelperProcess();
        EXPECT_EQ(fresh.scriptPath().value_or("none"), row.script);
        EXPECT_EQ(fresh.dylibPath().has_value(), row.script != "none");
        EXPECT_EQ(takeLog().front(), row.log);
        EXPECT_EQ(launcher.isRunning(), row.script != "none");
        fresh.stopHelperProcess();
        takeLog();
    }
}

TEST_F(Helper, WhatAPayloadPublishes) {
    struct Row {
        const char* name;
        std::string members;
        NowPlayingTrack track; ///< without a title: nothing plays
        bool isPlaying;
        bool hasArtwork;
    };
    const Row rows[] = {
        {"all",
         R"("title":"T","artist":"A","album":"L","bundleIdentifier":"b","isPlaying":true,)"
         R"("durationMicros":215000000)" +
             kArt,
         {"T", "A", "L", "b", 215},
         true,
         true},
        {"title alone", R"("title":"T")", {"T", "", {}, {}, {}}, false, false},
        {"other kinds",
         R"("title":"T","artist":["A"],"album":1,"isPlaying":1,"durationMicros":"9")",
         {"T", "", {}, {}, {}},
         false,
         false},
        {"playing as text",
         R"("title":"T","isPlaying":"true")",
         {"T", "", {}, {}, {}},
         false,
         false},
        {"no duration", R"("title":"T","durationMicros":0)", {"T", "", {}, {}, {}}, false, false},
        {"negative", R"("title":"T","durationMicros":-5)", {"T", "", {}, {}, {}}, false, false},
        {"fraction",
         R"("title":"T","durationMicros":1500000.0)",
         {"T", "", {}, {}, 1.5},
         false,
         false},
        {"blank in base64",
         R"("title":"T","artworkDataBase64":"aW1h Z2U=")",
         {"T", "", {}, {}, {}},
         false,
         false},
        {"no picture",
         R"("title":"T","artworkDataBase64":"AAAA")",
         {"T", "", {}, {}, {}},
         false,
         false},
        {"no picture of the same length",
         R"("title":"T","artworkDataBase64":"AAAAAAAA")",
         {"T", "", {}, {}, {}},
         false,
         false},
        {"empty title", R"("title":"","isPlaying":true)" + kArt, {}, false, false},
        {"no title", R"("artist":"A","isPlaying":true)", {}, false, false}};
    startHelper();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        say(line(R"("title":"before","isPlaying":true)" + kArt));
        ASSERT_TRUE(monitor->artworkImage.get());
        say(line(row.members));
        const auto expected = row.track.title.empty() ? std::nullopt : std::optional(row.track);
        EXPECT_EQ(monitor->currentTrack.get(), expected);
        EXPECT_EQ(monitor->isPlaying.get(), row.isPlaying);
        EXPECT_EQ(monitor->artworkImage.get().has_value(), row.hasArtwork);
    }
}

TEST_F(Helper, TheSameTrackAgainChangesItsStateAlone) {
    startHelper();
    say(line(R"("title":"T","artist":"A","isPlaying":true)"));
    EXPECT_EQ(takeLog(), Lines{R"(Halvo: Now Playing: "T" by "A" [?])"});
    say(line(R"("title":"T","artist":"A","isPlaying":false)" + kArt));
    EXPECT_FALSE(monitor->isPlaying.get());
    EXPECT_FALSE(monitor->artworkImage.get()) << "equality comes before the artwork";
    EXPECT_EQ(takeLog(), Lines{});
    say(line(R"("title":"T","artist":"A","bundleIdentifier":"b")" + kArt));
    EXPECT_TRUE(monitor->artworkImage.get());
    EXPECT_EQ(takeLog(), Lines{R"(Halvo: Now Playing: "T" by "A" [b])"});
}

TEST_F(Helper, ReadsMayCutAnywhere) {
    const std::string stream = "\n" + line(R"("title":"Å 1")") + line(R"("title":"2")") +
                               "{\"type\":\"da\n" + "[]\n7\n" + R"({"type":"data"})" + "\n" +
                               R"({"type":"other","payload":{"title":"no"}})" + "\n" +
                               line(R"("title":"3")");
    startHelper();
    for (const std::size_t size :
         {stream.size(), std::size_t{1}, std::size_t{7}, std::size_t{40}}) {
        SCOPED_TRACE(size);
        Lines seen;
        const auto titles = monitor->currentTrack.didChange(
            [&](const auto& track) { seen.push_back(track->title); });
        for (std::size_t at = 0; at < stream.size(); at += size)
            say(stream.substr(at, size));
        EXPECT_EQ(seen, (Lines{"Å 1", "2", "3"}));
        const auto logged = takeLog();
        EXPECT_EQ(std::ranges::count_if(logged,
                                        [](const std::string& text) {
                                            return text.starts_with(
                                                "Halvo: Failed to parse helper JSON: ");
                                        }),
                  1);
    }
}

TEST_F(Helper, ALineWithoutEndIsDroppedToItsLineFeed) {
    startHelper();
    const std::string chunk(1024UL * 1024, 'x');
    for (int i = 0; i < 40; ++i)
        launcher.say(chunk);
    launcher.say("\n" + line(R"("title":"after")"));
    settle();
    EXPECT_EQ(title(), "after");
    EXPECT_EQ(takeLog(),
              (Lines{"Halvo: Failed to parse helper JSON: a line of more than 16777216 bytes",
                     R"(Halvo: Now Playing: "after" by "" [?])"}));
}

TEST_F(Helper, OfTooManyWaitingLinesTheOldestGo) {
    startHelper();
    const std::string cover(4UL * 1024 * 1024, 'A');
    Lines seen;
    const auto titles =
        monitor->currentTrack.didChange([&](const auto& track) { seen.push_back(track->title); });
    for (int i = 1; i <= 10; ++i) // the background is too slow for any of them
        launcher.say(
            line(R"("artworkDataBase64":")" + cover + R"(","title":")" + std::to_string(i) + "\""));
    settle();
    EXPECT_EQ(seen, (Lines{"4", "5", "6", "7", "8", "9", "10"}));
}

TEST_F(Helper, ItIsStartedAgainForEver) {
    startHelper();
    EXPECT_EQ(calls.calls(), Lines{kLaunch});
    launcher.say("{\"type\":\"da");
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        launcher.closeOutput();
        launcher.exit(9);
        EXPECT_EQ(takeLog(), Lines{"Halvo: Helper process terminated with status 9"});
        advance(1999ms);
        EXPECT_FALSE(launcher.isRunning());
        advance(1ms);
        EXPECT_EQ(takeLog(), (Lines{"Halvo: Restarting helper process...",
                                    "Halvo: MediaRemote helper process started (PID: 4711)"}));
        advance(10s);
        EXPECT_EQ(calls.calls().size(), static_cast<std::size_t>(i) + 2) << "one restart of two";
    }
    say(line(R"("title":"lost")"));
    EXPECT_EQ(title(), "none") << "the dead helper's half line stands before it";
    say(line(R"("title":"heard")"));
    EXPECT_EQ(title(), "heard");
    monitor->stopHelperProcess();
    EXPECT_EQ(takeLog().back(), "Halvo: Helper process terminated");
    launcher.exit(15);
    advance(10s);
    EXPECT_EQ(takeLog(), Lines{});
    EXPECT_EQ(calls.calls().back(), "terminate helper");
    monitor->startHelperProcess();
    launcher.exit(0);
    monitor->stopHelperProcess();
    takeLog();
    advance(10s);
    EXPECT_EQ(takeLog(), Lines{}) << "a restart that was due is off";
}

TEST_F(Helper, OneThatClosesItsOutputButLivesIsReplaced) {
    startHelper();
    launcher.closeOutput();
    advance(2s);
    EXPECT_EQ(calls.calls(), (Lines{kLaunch, kLaunch}));
    say(line(R"("title":"second")"));
    EXPECT_EQ(title(), "second");
    takeLog();
    launcher.exitEarlier(7);
    advance(2s);
    EXPECT_EQ(takeLog(), Lines{"Halvo: Helper process terminated with status 7"});
    say(line(R"("title":"still the second")"));
    EXPECT_EQ(title(), "still the second");
    launcher.closeOutput();
    monitor->stopHelperProcess();
    EXPECT_FALSE(launcher.isRunning()) << "nor is it left behind";
}

TEST_F(Helper, OneThatCannotBeLaunchedLeavesThePlayersToTheScripts) {
    launcher.launchFails = true;
    startHelper();
    for (int i = 0; i <= 10; ++i)
        advance(i == 0 ? 0s : 3s);
    EXPECT_EQ(calls.calls().size(), 1U);
    EXPECT_EQ(scripts.sources.size(), 22U) << "both players, at once and every 3 s";
    launcher.launchFails = false;
    scripts.sources.clear();
    monitor->send(MediaCommand::togglePlayPause);
    settle();
    EXPECT_EQ(calls.calls().back(),
              "run /usr/bin/perl /bundle/run.pl /bundle/media_helper.dylib toggle_play_pause");
    EXPECT_TRUE(scripts.sources.empty());
}

TEST_F(Helper, NothingReachesAMonitorThatIsGone) {
    startHelper();
    launcher.say(line(R"("title":"late")"));
    monitor->send(MediaCommand::play);
    monitor->startAppleScriptPolling();
    launcher.closeOutput();
    monitor.reset();
    background.flush();
    queue.advance(10s);
    launcher.say("more\n");
    launcher.exit(0);
    settle();
    EXPECT_EQ(calls.calls().size(), 2U) << "the launch and the command";
}

TEST(Base64, IsStrict) {
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {"", ""},     {"TQ==", "M"}, {"TWE=", "Ma"}, {"TWFu", "Man"}, {"+/8=", "\xFB\xFF"},
        {"TQ", {}},   {"TQ=", {}},   {"TQ==\n", {}}, {"T===", {}},    {"TR==", {}},
        {"TW=u", {}}, {"TW-_", {}}};
    for (const auto& [text, bytes] : rows)
        EXPECT_EQ(decodeBase64(text), bytes) << text;
}
