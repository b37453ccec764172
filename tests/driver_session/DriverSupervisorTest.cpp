#include "driver_session/DriverScene.h"

#include "session/Player.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

using halvo::session::Player;
using halvo::session::PrivateSession;
using halvo::test::countingSamples;
using halvo::test::DriverScene;
using halvo::test::examineCounting;
using halvo::test::kVirtualSink;

constexpr std::size_t kLong = 48000 * 60;
constexpr const char* kDriver = "halvo-audio-dev";
constexpr const char* kSupervisor = "halvo-keeper";

/// A server that was started with the driver's bundle installed.
class SupervisedScene : public DriverScene {
  public:
    SupervisedScene() {
        installDropIn();
        session().stopServer();
        if (!session().startServer()) ADD_FAILURE() << "the server does not start";
    }

    int only(const char* name) const {
        const auto found = processes(name);
        return found.size() == 1 ? found.front() : 0;
    }
    /// Whether there are one supervisor and one driver, and the driver works.
    bool isSupervised() {
        return PrivateSession::waitFor(
                   [this] { return only(kDriver) > 0 && only(kSupervisor) > 0; }) &&
               isUp();
    }
    /// Well before a driver gives up looking for a server.
    bool allGoneSoon() const {
        return PrivateSession::waitFor(
            [this] { return processes(kDriver).empty() && processes(kSupervisor).empty(); },
            std::chrono::seconds(5));
    }
    /// Signals the one process of that name; false when there is not exactly one.
    bool signal(const char* name, int number) const {
        const int process = only(name);
        return process > 0 && ::kill(process, number) == 0;
    }
    int runDriver(const char* option) { return session().run({HALVO_AUDIO_DEVICE, option}).status; }
};

long timesAsleep(int process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    const std::string key = "voluntary_ctxt_switches:";
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key)) return std::stol(line.substr(key.size()));
    }
    return -1;
}

TEST(DriverSupervisorTests, TheServerBringsTheDriverAndWhateverIsKilledComesBack) {
    SupervisedScene scene;
    ASSERT_TRUE(scene.isSupervised());
    auto& session = scene.session();
    ASSERT_TRUE(session.setVolume(kVirtualSink, {0.25F, 0.5F}));
    const Player player(session.serverSocket(), countingSamples(kLong), 48000, kVirtualSink);
    const auto inode = scene.ring().inode();
    // A driver that dies takes no longer than a second; a supervisor that dies is not heard at all.
    const struct {
        const char* killed;
        std::size_t mostMissing; // frames
    } steps[] = {{kDriver, 48000}, {kSupervisor, 0}, {kDriver, 48000}, {kSupervisor, 0}};
    for (const auto& [killed, mostMissing] : steps) {
        SCOPED_TRACE(killed);
        scene.ring().clear();
        ASSERT_TRUE(scene.soundArrives());
        const int victim = scene.only(killed);
        ASSERT_TRUE(scene.signal(killed, SIGKILL));
        const auto before = examineCounting(scene.ring().samples()).last;
        ASSERT_TRUE(PrivateSession::waitFor(
            [&] { return scene.only(killed) > 0 && scene.only(killed) != victim; }));
        ASSERT_TRUE(scene.isSupervised());
        ASSERT_TRUE(scene.gatherUntil(
            [&] { return examineCounting(scene.ring().samples()).last > before + 48000; }));
        const auto heard = examineCounting(scene.ring().samples());
        EXPECT_EQ(heard.wrong, 0U);
        EXPECT_LE(heard.last - heard.first + 1 - heard.frames, mostMissing);
        EXPECT_EQ(scene.virtualSinks(), 1U);
        EXPECT_EQ(scene.ring().inode(), inode);
        EXPECT_EQ(session.volume(kVirtualSink), (std::vector<float>{0.25F, 0.5F}));
    }
    const int supervisor = scene.only(kSupervisor);
    const auto asleep = timesAsleep(supervisor);
    const auto played = player.framesPlayed();
    EXPECT_TRUE(PrivateSession::waitFor([&] { return player.framesPlayed() > played + 96000; }));
    EXPECT_EQ(timesAsleep(supervisor), asleep) << "the supervisor sleeps while the driver lives";
}

TEST(DriverSupervisorTests, BothEndWithTheServerAndComeWithTheNext) {
    SupervisedScene scene;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(scene.isSupervised()) << "round " << round;
        ASSERT_TRUE(scene.signal("pipewire", SIGKILL));
        EXPECT_TRUE(scene.allGoneSoon());
        scene.session().stopServer();
        ASSERT_TRUE(scene.session().startServer());
    }
    EXPECT_TRUE(scene.isSupervised());
}

TEST(DriverSupervisorTests, ThereIsNeverASecondOne) {
    SupervisedScene scene;
    ASSERT_TRUE(scene.isSupervised());
    const int driver = scene.only(kDriver);
    for (const char* option : {"--keep-alive", "--start"}) {
        EXPECT_EQ(scene.runDriver(option), 0) << option;
        EXPECT_EQ(scene.only(kDriver), driver) << option;
        EXPECT_GT(scene.only(kSupervisor), 0) << option;
    }
    EXPECT_EQ(scene.runDriver("--other"), 64);

    // The next server may start its supervisor while the last one's is still about to end.
    const int first = scene.only(kSupervisor);
    ASSERT_GT(first, 0);
    const auto next = scene.session().spawn({HALVO_AUDIO_DEVICE, "--keep-alive"});
    ASSERT_TRUE(next) << next.error();
    ASSERT_TRUE(PrivateSession::waitFor([&] { return scene.processes(kSupervisor).size() == 2; }));
    ASSERT_EQ(::kill(first, SIGTERM), 0);
    EXPECT_TRUE(scene.isSupervised());
    EXPECT_EQ(scene.only(kSupervisor), (*next)->pid());
}

TEST(DriverSupervisorTests, EndsAndStartsWhenItIsTold) {
    SupervisedScene scene;
    ASSERT_TRUE(scene.isSupervised());
    EXPECT_EQ(scene.runDriver("--end"), 0);
    EXPECT_TRUE(scene.processes(kDriver).empty());
    EXPECT_TRUE(scene.processes(kSupervisor).empty());
    EXPECT_EQ(scene.virtualSinks(), 1U);
    EXPECT_EQ(scene.runDriver("--end"), 0) << "nothing to end";

    EXPECT_EQ(scene.runDriver("--start"), 0);
    EXPECT_TRUE(scene.isSupervised()) << "it outlives the process group that began it";
    for (const int signal : {SIGTERM, SIGINT}) {
        ASSERT_TRUE(scene.signal(kSupervisor, signal));
        EXPECT_TRUE(scene.allGoneSoon());
        EXPECT_EQ(scene.runDriver("--start"), 0);
        EXPECT_TRUE(scene.isSupervised());
    }
    scene.session().stopServer();
    EXPECT_TRUE(scene.allGoneSoon()) << "also what was begun by hand";
}

TEST(DriverSupervisorTests, WithoutAServerItGivesUp) {
    DriverScene scene;
    scene.session().stopServer();
    const auto result =
        scene.session().run({HALVO_AUDIO_DEVICE, "--keep-alive"}, std::chrono::seconds(30));
    EXPECT_EQ(result.status, 0) << result.output;
}

} // namespace
