#include "media/BusScene.h"
#include "media/TagServer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

// The shipped helper with players on a session bus.

namespace halvo::test {

namespace {

using Json = nlohmann::json;
using media::ScriptedPlayer;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

const Json kNothing{{"isPlaying", false}};

ScriptedPlayer::Metadata song(const std::string& title) {
    return {{"xesam:title", title}, {"xesam:artist", std::vector<std::string>{"Artist"}}};
}

/// A number from a line of /proc/PID/status.
long statusNumber(int pid, const std::string& field) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(field + ':')) return std::stol(line.substr(field.size() + 1));
    }
    return -1;
}

/// Processor time so far, in hundredths of a second.
long cpuTicks(int pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        fields >> skipped;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return user + system;
}

/// Whether it runs; a zombie has ended.
bool runs(int pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("State:")) return !line.contains('Z');
    }
    return false;
}

} // namespace

TEST(MediaHelper, MpvShowsATaggedFileAndObeys) {
    BusScene scene;
    HelperRun helper;
    ASSERT_TRUE(helper.shows(kNothing));
    auto mpv = scene.spawn({"mpv", "--no-config", "--vo=null", "--ao=null", "--really-quiet",
                            "--script=/usr/lib/mpv-mpris/mpris.so", HALVO_TAGGED_FILE});
    ASSERT_TRUE(helper.shows({{"title", "Blue Étude"},
                              {"artist", "Ensemble Ö"},
                              {"album", "Kind of Test"},
                              {"bundleIdentifier", "mpv"},
                              {"durationMicros", 60'000'000},
                              {"isPlaying", true}}));
    // One line for all of it, cover included.
    EXPECT_EQ(std::ranges::count_if(helper.payloads(),
                                    [](const Json& line) { return line.contains("title"); }),
              1);
    const auto cover = helper.last().value("artworkDataBase64", "");
    EXPECT_TRUE(cover.starts_with("iVBORw0KGgo")) << cover.substr(0, 40);
    EXPECT_EQ(scene.command("pause"), 0);
    EXPECT_TRUE(helper.shows({{"title", "Blue Étude"}, {"isPlaying", false}}));
    EXPECT_EQ(scene.command("toggle_play_pause"), 0);
    EXPECT_TRUE(helper.shows({{"title", "Blue Étude"}, {"isPlaying", true}}));
    ASSERT_TRUE(mpv->signal(SIGKILL));
    EXPECT_TRUE(helper.shows(kNothing));
    EXPECT_FALSE(helper.last().contains("title"));
    EXPECT_NE(scene.command("play"), 0);
}

TEST(MediaHelper, TakesWhatPlayersSayInWhateverTypes) {
    BusScene scene;
    media::TagServer server;
    server.setContent("/cover.png", "from the network");
    struct Case {
        const char* name;
        ScriptedPlayer::Metadata metadata;
        Json expected; ///< null: must not be there
    };
    const std::string inFile = "file://" + scene.file("a cover.png", "from a file");
    const std::vector<Case> cases{
        {"artist as text", {{"xesam:artist", "Nina"}}, {{"artist", "Nina"}}},
        {"artists", {{"xesam:artist", std::vector<std::string>{"", "A", "B"}}}, {{"artist", "A"}}},
        {"no artist", {{"xesam:artist", std::vector<std::string>{}}}, {{"artist", nullptr}}},
        {"length int64", {{"mpris:length", std::int64_t{7}}}, {{"durationMicros", 7}}},
        {"length uint64", {{"mpris:length", std::uint64_t{8}}}, {{"durationMicros", 8}}},
        {"length int32", {{"mpris:length", std::int32_t{9}}}, {{"durationMicros", 9}}},
        {"length double", {{"mpris:length", 215e6}}, {{"durationMicros", 215'000'000}}},
        {"length unknown", {{"mpris:length", INT64_MAX}}, {{"durationMicros", nullptr}}},
        {"length as text", {{"mpris:length", "long"}}, {{"durationMicros", nullptr}}},
        {"file", {{"mpris:artUrl", inFile}}, {{"artworkDataBase64", "ZnJvbSBhIGZpbGU="}}},
        {"data", {{"mpris:artUrl", "data:image/png;base64,AAEC"}}, {{"artworkDataBase64", "AAEC"}}},
        {"http",
         {{"mpris:artUrl", server.address() + "/cover.png"}},
         {{"artworkDataBase64", "ZnJvbSB0aGUgbmV0d29yaw=="}}},
        {"device", {{"mpris:artUrl", "file:///dev/zero"}}, {{"artworkDataBase64", nullptr}}},
    };
    const auto player = scene.player("odd");
    player->setStatus("Playing");
    HelperRun helper;
    for (const auto& [name, metadata, expected] : cases) {
        auto told = metadata;
        told["xesam:title"] = name;
        player->setMetadata(told);
        ASSERT_TRUE(helper.shows({{"title", name}})) << name;
        for (const auto& [key, value] : expected.items())
            EXPECT_EQ(helper.last().value(key, Json()), value) << name;
    }
    player->setMetadata({{"xesam:artist", "Somebody"}});
    EXPECT_TRUE(waitFor([&] { return !helper.last().contains("title"); })) << "no title";
}

TEST(MediaHelper, APlayerThatPlaysComesFirstThenTheLatest) {
    BusScene scene;
    const auto paused = scene.player("aaa", "Paused", song("paused"));
    const auto playing = scene.player("zzz.instance12", "Playing", song("playing"));
    const auto proxy = scene.player("playerctld", "Playing", song("proxy"));
    const auto phone = scene.player("kdeconnect.mpris_1", "Playing", song("phone"));
    HelperRun helper;
    EXPECT_TRUE(helper.shows({{"title", "playing"}, {"bundleIdentifier", "zzz"}}));
    playing->setStatus("Paused");
    EXPECT_TRUE(helper.shows({{"title", "playing"}, {"isPlaying", false}})) << "the later change";
    EXPECT_EQ(scene.command("next_track"), 0);
    EXPECT_EQ(playing->commands(), std::vector<std::string>{"Next"}) << "to the one shown";
    paused->setMetadata(song("again"));
    EXPECT_TRUE(helper.shows({{"title", "again"}, {"isPlaying", false}}));
    playing->setStatus("Playing");
    EXPECT_TRUE(helper.shows({{"title", "playing"}, {"isPlaying", true}}));
    playing->setStatus("Stopped");
    EXPECT_TRUE(helper.shows({{"title", "again"}}));
    for (const auto& payload : helper.payloads()) {
        EXPECT_NE(payload.value("title", ""), "proxy");
        EXPECT_NE(payload.value("title", ""), "phone");
    }
}

TEST(MediaHelper, EveryWordIsItsOwnCommand) {
    BusScene scene;
    const auto player = scene.player("player", "Playing", song("obeys"));
    for (const auto* word : {"play", "pause", "toggle_play_pause", "next_track", "previous_track"})
        EXPECT_EQ(scene.command(word), 0) << word;
    EXPECT_EQ(player->commands(),
              (std::vector<std::string>{"Play", "Pause", "PlayPause", "Next", "Previous"}));
    EXPECT_NE(scene.command("rewind"), 0);
}

TEST(MediaHelper, APlayerThatHangsOrDiesHoldsUpNobody) {
    BusScene scene;
    auto hanging = scene.player("hanging", "Playing", song("never told"));
    hanging->setHanging(true);
    HelperRun helper;
    ASSERT_TRUE(helper.shows(kNothing));
    auto other = scene.player("other", "Playing", song("told"));
    EXPECT_TRUE(helper.shows({{"title", "told"}}));
    other->setHanging(true);
    EXPECT_NE(scene.command("pause"), 0) << "an answer never comes";
    other.reset();
    EXPECT_TRUE(helper.shows(kNothing));
    hanging->setHanging(false);
    EXPECT_TRUE(helper.shows({{"title", "never told"}}));
    hanging.reset();
    EXPECT_TRUE(helper.shows(kNothing));
}

TEST(MediaHelper, AThousandChangesASecondAreFewLinesAndNoMemory) {
    BusScene scene;
    const auto player = scene.player("busy", "Playing", song("0"));
    HelperRun helper;
    ASSERT_TRUE(helper.shows({{"title", "0"}}));
    const auto flood = [&](int from, int count) {
        auto next = std::chrono::steady_clock::now();
        for (int i = from; i < from + count; ++i) {
            auto track = song(std::to_string(i)); // complete: it waits for nothing
            track["mpris:artUrl"] = "data:," + std::to_string(i);
            player->setMetadata(std::move(track));
            if (i % 100 == 0) (void)helper.payloads(); // the reader keeps up
            std::this_thread::sleep_until(next += 1ms);
        }
        EXPECT_TRUE(helper.shows({{"title", std::to_string(from + count - 1)}}));
    };
    flood(1, 1000);
    const long before = statusNumber(helper.pid(), "VmRSS");
    const long ticks = cpuTicks(helper.pid());
    const auto lines = helper.payloads().size();
    const auto begin = std::chrono::steady_clock::now();
    flood(1001, 3000);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    const auto written = static_cast<double>(helper.payloads().size() - lines);
    EXPECT_LE(written, 20 * time.count() + 2);
    EXPECT_LE(statusNumber(helper.pid(), "VmRSS") - before, 256) << "KiB";
    RecordProperty("rss_kib", std::to_string(statusNumber(helper.pid(), "VmRSS")));
    RecordProperty(
        "cpu_percent",
        std::to_string(static_cast<double>(cpuTicks(helper.pid()) - ticks) / time.count()));
}

TEST(MediaHelper, SleepsWhileNothingChanges) {
    BusScene scene;
    const auto player = scene.player("calm", "Playing", song("calm"));
    HelperRun helper;
    ASSERT_TRUE(helper.shows({{"title", "calm"}}));
    const long before = statusNumber(helper.pid(), "voluntary_ctxt_switches");
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(statusNumber(helper.pid(), "voluntary_ctxt_switches"), before);
}

TEST(MediaHelper, WaitsForABusAndForTheNextOne) {
    BusScene scene(BusScene::Bus::later);
    HelperRun helper;
    ASSERT_TRUE(helper.shows(kNothing));
    for (const auto* title : {"first", "second"}) {
        scene.startBus();
        auto player = scene.player("player", "Playing", song(title));
        EXPECT_TRUE(helper.shows({{"title", title}}));
        scene.stopBus();
        EXPECT_TRUE(helper.shows(kNothing));
    }
    EXPECT_LE(cpuTicks(helper.pid()), 20) << "a lost bus must not keep it busy";
}

TEST(MediaHelper, EndsWithItsReaderAndWithItsParent) {
    BusScene scene;
    HelperRun helper;
    ASSERT_TRUE(helper.shows(kNothing));
    EXPECT_EQ(helper.leave(1s), 0);

    // A killed parent, with an output pipe that stays open.
    const auto pidFile = scene.directory() + "/tmp/pid";
    const auto lines = scene.directory() + "/tmp/lines";
    auto parent = scene.spawn({"sh", "-c",
                               std::string(HALVO_MEDIA_HELPER_PATH) + " loop >" + lines +
                                   " & echo $! >" + pidFile + "; wait"});
    int pid = 0;
    ASSERT_TRUE(waitFor([&] { return static_cast<bool>(std::ifstream(pidFile) >> pid); }));
    ASSERT_TRUE(waitFor([&] { return std::ifstream(lines).peek() == '{'; }));
    ASSERT_TRUE(runs(pid));
    ASSERT_TRUE(parent->signal(SIGKILL));
    const auto killed = std::chrono::steady_clock::now();
    EXPECT_TRUE(waitFor([&] { return !runs(pid); }));
    EXPECT_LT(std::chrono::steady_clock::now() - killed, 1s);
}

} // namespace halvo::test
