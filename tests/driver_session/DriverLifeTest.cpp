#include "driver_session/DriverScene.h"

#include "session/Player.h"
#include "session/Recorder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using halvo::session::Player;
using halvo::session::PrivateSession;
using halvo::session::Recorder;
using halvo::test::countingSamples;
using halvo::test::DriverScene;
using halvo::test::examineCounting;
using halvo::test::kVirtualSink;

constexpr std::size_t kLong = 48000 * 60;
constexpr std::chrono::seconds kSoon{5};

TEST(DriverLifeTests, ADriverThatDiedIsFollowedByOneThatAdoptsEverything) {
    DriverScene scene;
    auto& session = scene.session();
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    const auto inode = scene.ring().inode();
    ASSERT_TRUE(session.setDefault(kVirtualSink));
    ASSERT_TRUE(session.setVolume(kVirtualSink, {0.25F, 0.5F}));
    const Recorder speakers(session.serverSocket(), "acc.a", 48000);
    const Player player(session.serverSocket(), countingSamples(kLong), 48000);
    ASSERT_TRUE(scene.soundArrives());

    scene.driver().signal(SIGKILL);
    ASSERT_EQ(scene.driver().wait(kSoon), 128 + SIGKILL);
    const auto index = scene.ring().writeIndex();
    const auto played = player.framesPlayed();
    EXPECT_TRUE(PrivateSession::waitFor([&] { return player.framesPlayed() > played + 8192; }))
        << "the sink stays without its driver";
    EXPECT_EQ(scene.ring().writeIndex(), index);

    scene.startDriver();
    scene.ring().clear();
    ASSERT_TRUE(scene.soundArrives());
    EXPECT_EQ(scene.virtualSinks(), 1U);
    EXPECT_GE(scene.ring().writeIndex(), index);
    EXPECT_EQ(scene.ring().inode(), inode);
    EXPECT_EQ(session.volume(kVirtualSink), (std::vector<float>{0.25F, 0.5F}));
    EXPECT_EQ(session.defaultSink(), kVirtualSink);
    EXPECT_TRUE(speakers.isRunning());
    EXPECT_EQ(speakers.recording().peak(), 0.0F) << "nothing falls through to a real output";
    EXPECT_EQ(examineCounting(scene.ring().samples()).wrong, 0U);
}

TEST(DriverLifeTests, ASignalEndsItAndLeavesSinkAndRing) {
    DriverScene scene;
    for (const int signal : {SIGTERM, SIGINT}) {
        scene.startDriver();
        ASSERT_TRUE(scene.isUp());
        scene.driver().signal(signal);
        EXPECT_EQ(scene.driver().wait(kSoon), 0) << "signal " << signal;
        EXPECT_EQ(scene.driver().standardError(), "");
        EXPECT_EQ(scene.virtualSinks(), 1U);
        EXPECT_TRUE(scene.ring().open());
    }
}

TEST(DriverLifeTests, ASecondDriverLeavesTheFirstAlone) {
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    const auto second = scene.session().run({HALVO_AUDIO_DEVICE});
    EXPECT_EQ(second.status, 2);
    EXPECT_NE(second.output.find("one is running already"), std::string::npos) << second.output;
    const Player player(scene.session().serverSocket(), countingSamples(kLong), 48000,
                        kVirtualSink);
    EXPECT_TRUE(scene.soundArrives());
    EXPECT_EQ(scene.virtualSinks(), 1U);
}

TEST(DriverLifeTests, SurvivesTheServer) {
    DriverScene scene;
    auto& session = scene.session();
    session.stopServer();
    scene.startDriver();
    const auto hasSaid = [&](const char* text) {
        return PrivateSession::waitFor(
            [&, text] { return scene.driver().standardError().find(text) != std::string::npos; });
    };
    EXPECT_TRUE(hasSaid("no sound server can be reached"));
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(session.startServer());
        ASSERT_TRUE(scene.isUp());
        scene.ring().clear();
        {
            const Player player(session.serverSocket(), countingSamples(kLong), 48000,
                                kVirtualSink);
            EXPECT_TRUE(scene.soundArrives()) << "round " << round;
        }
        session.stopServer();
        EXPECT_TRUE(hasSaid("the sound server went away"));
        EXPECT_TRUE(scene.driver().isRunning());
    }
}

TEST(DriverLifeTests, MakesTheSinkAgainWhenItIsTakenAway) {
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    // The driver may end before the check.
    (void)scene.session().unplug(kVirtualSink);
    ASSERT_TRUE(scene.isUp());
    const Player player(scene.session().serverSocket(), countingSamples(kLong), 48000,
                        kVirtualSink);
    EXPECT_TRUE(scene.soundArrives());
}

TEST(DriverLifeTests, MakesTheRingAgainWhenItIsSpoilt) {
    struct Case {
        const char* name;
        void (*spoil)(const char* name);
    };
    const std::vector<Case> cases{
        {"shrunk to nothing",
         [](const char* name) {
             const int descriptor = ::shm_open(name, O_RDWR, 0);
             EXPECT_EQ(::ftruncate(descriptor, 0), 0);
             ::close(descriptor);
         }},
        {"removed", [](const char* name) { EXPECT_EQ(::shm_unlink(name), 0); }},
        {"replaced",
         [](const char* name) {
             EXPECT_EQ(::shm_unlink(name), 0);
             ::close(::shm_open(name, O_RDWR | O_CREAT, 0600));
         }},
    };
    DriverScene scene;
    scene.startDriver();
    ASSERT_TRUE(scene.isUp());
    const Player player(scene.session().serverSocket(), countingSamples(kLong), 48000,
                        kVirtualSink);
    for (const Case& spoiling : cases) {
        SCOPED_TRACE(spoiling.name);
        ASSERT_TRUE(scene.soundArrives());
        scene.ring().close();
        spoiling.spoil(scene.session().ringName().c_str());
        ASSERT_TRUE(PrivateSession::waitFor([&] { return scene.ring().open(); }));
        scene.ring().clear();
        EXPECT_TRUE(scene.soundArrives());
        EXPECT_TRUE(scene.driver().isRunning());
    }
}

TEST(DriverLifeTests, SaysThatTheRingCannotBeCreated) {
    DriverScene scene;
    // A directory of that name blocks every user.
    const std::string obstacle = "/dev/shm" + scene.session().ringName();
    ASSERT_EQ(::mkdir(obstacle.c_str(), 0700), 0);
    const auto result = scene.session().run({HALVO_AUDIO_DEVICE});
    EXPECT_EQ(::rmdir(obstacle.c_str()), 0);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("the ring cannot be created"), std::string::npos) << result.output;
}

} // namespace
