#include "application/ApplicationScene.h"
#include "support/SessionPrograms.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <unistd.h>

using namespace halvo::test;
using halvo::session::Options;
using halvo::session::PrivateSession;

namespace {

using Clock = std::chrono::steady_clock;
using Volumes = std::vector<float>;

const Volumes kOwnLevel{0.125F, 0.0625F};
const Volumes kRaised{1.0F, 0.5F};

/// The driver runs, music plays, and the speakers have a balance.
class SessionGuard : public testing::Test {
  protected:
    ApplicationScene scene{rememberedSpeakers(kOwnLevel)};
    PrivateSession& session = scene.session();
    std::unique_ptr<halvo::session::Player> player;

    void SetUp() override {
        scene.startDriver();
        ASSERT_TRUE(session.setVolume(kSpeakers, kOwnLevel));
        player = scene.play(sine(1000, 0.1F, 120));
    }
    void startApplication() {
        scene.startApplication();
        ASSERT_TRUE(scene.isReady());
        ASSERT_TRUE(PrivateSession::waitFor([&] { return session.volume(kSpeakers) == kRaised; }));
    }
    void kill(int number = SIGKILL) {
        ASSERT_TRUE(scene.application().signal(number));
        ASSERT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + number);
    }
    bool isGivenBack() const {
        return session.defaultSink() == kSpeakers && session.volume(kSpeakers) == kOwnLevel;
    }
    bool isGivenBackSoon() {
        return PrivateSession::waitFor([&] { return isGivenBack(); });
    }
    std::string record() const {
        std::ifstream file(session.directory() + "/config/halvo/raised-devices.json");
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Whether guard and restore of that process number have come to their end.
    static bool ends(int pid) {
        return PrivateSession::waitFor([&] { return statusField(pid, "Name").empty(); });
    }
};

} // namespace

TEST_F(SessionGuard, GivesBackHoweverTheApplicationDiesAndKeepsTheRecord) {
    const rlimit noCore{0, 0};
    ASSERT_EQ(::setrlimit(RLIMIT_CORE, &noCore), 0);
    double slowest = 0;
    for (const int number : {SIGKILL, SIGSEGV, SIGINT}) {
        SCOPED_TRACE(number);
        startApplication();
        const int guard = scene.guard();
        const auto start = Clock::now();
        kill(number);
        EXPECT_TRUE(isGivenBackSoon());
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        slowest = std::max(slowest, took.count());
        EXPECT_TRUE(ends(guard));
        EXPECT_TRUE(isGivenBack());
        EXPECT_TRUE(scene.hasDirtyRecord());
        EXPECT_EQ(session.configuredDefault(), std::nullopt) << "none was configured";
    }
    RecordProperty("slowestRestoreMs", std::to_string(slowest));
    startApplication();
    EXPECT_TRUE(scene.debugLog().contains(
        "Halvo: Dirty session detected — restoring acc.a to volume 0.125\n"));
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(isGivenBack());
}

TEST_F(SessionGuard, DoesNothingWhenTheApplicationHasGivenBackItself) {
    for (const bool isTerminated : {false, true}) {
        SCOPED_TRACE(isTerminated ? "terminated" : "quit");
        startApplication();
        const int guard = scene.guard();
        ASSERT_EQ(::kill(guard, SIGSTOP), 0);
        if (isTerminated) {
            kill(SIGTERM);
        } else {
            EXPECT_EQ(scene.quit(), 0);
        }
        EXPECT_TRUE(isGivenBack());
        ASSERT_TRUE(session.setDefault(kHeadphones)); // the user selects another device
        ASSERT_TRUE(session.setVolume(kSpeakers, {0.25F, 0.25F}));
        ASSERT_EQ(::kill(guard, SIGCONT), 0);
        EXPECT_TRUE(ends(guard));
        EXPECT_EQ(session.defaultSink(), kHeadphones);
        EXPECT_EQ(session.volume(kSpeakers), (Volumes{0.25F, 0.25F}));
        ASSERT_TRUE(session.setDefault(kSpeakers));
        ASSERT_TRUE(session.setVolume(kSpeakers, kOwnLevel));
    }
}

TEST_F(SessionGuard, LeavesAnApplicationAloneThatIsThereAgain) {
    startApplication();
    const int late = scene.guard();
    ASSERT_EQ(::kill(late, SIGSTOP), 0);
    kill();
    startApplication();
    ASSERT_EQ(::kill(late, SIGCONT), 0);
    EXPECT_TRUE(ends(late));
    EXPECT_EQ(session.defaultSink(), kVirtualSink);
    EXPECT_EQ(session.volume(kSpeakers), kRaised);
    EXPECT_FALSE(scene.debugLog().contains("Default changed to")) << scene.debugLog();
    kill();
    EXPECT_TRUE(isGivenBackSoon()) << "the new one has a guard of its own";
}

TEST_F(SessionGuard, StartsInQuickSuccessionEndWell) {
    startApplication();
    for (int round = 0; round < 4; ++round) {
        SCOPED_TRACE(round);
        kill();
        startApplication(); // while the restore is under way
        EXPECT_FALSE(scene.debugLog().contains("Default changed to")) << scene.debugLog();
    }
    (void)scene.guard(); // exactly one
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(isGivenBack());
}

TEST_F(SessionGuard, WaitsForAServerThatComesBack) {
    startApplication();
    player.reset();
    session.stopServer();
    kill();
    ASSERT_TRUE(session.startServer());
    EXPECT_TRUE(PrivateSession::waitFor([&] { return !session.volume(kVirtualSink).empty(); }));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return scene.processes("halvo-restore").empty(); }));
    EXPECT_TRUE(isGivenBackSoon());
    EXPECT_EQ(session.configuredDefault(), std::nullopt);
}

TEST_F(SessionGuard, GivesBackAgainWhereTheServerDiesBeforeThatIsWrittenDown) {
    startApplication();
    const auto state = session.directory() + "/state/wireplumber/";
    ASSERT_TRUE(PrivateSession::waitFor([&] {
        return std::filesystem::exists(state + "restore-stream") || // WirePlumber 0.4
               std::filesystem::exists(state + "stream-properties");
    })) << "the session manager keeps what it sees, a second later";
    player.reset();
    kill();
    EXPECT_TRUE(isGivenBackSoon());
    session.killServer();
    session.stopServer();
    ASSERT_TRUE(session.startServer());
    EXPECT_TRUE(PrivateSession::waitFor([&] { return !session.volume(kVirtualSink).empty(); }));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return scene.processes("halvo-restore").empty(); }));
    EXPECT_TRUE(isGivenBack()) << session.defaultSink() << session.volume(kSpeakers)[0];
}

TEST_F(SessionGuard, OneThatIsKilledIsReplaced) {
    startApplication();
    const int first = scene.guard();
    ASSERT_EQ(::kill(first, SIGKILL), 0);
    ASSERT_TRUE(PrivateSession::waitFor([&] { return scene.guard() != first; }));
    kill();
    EXPECT_TRUE(isGivenBackSoon());
}

TEST_F(SessionGuard, LeavesTheVirtualDeviceWhenTheDeviceInUseHasGone) {
    startApplication();
    ASSERT_TRUE(session.plug({"acc.x", "USB", {0.25F, 0.25F}}));
    ASSERT_TRUE(PrivateSession::waitFor([&] { return session.volume("acc.x") == Volumes{1, 1}; }));
    ASSERT_TRUE(session.unplug("acc.x"));
    kill();
    EXPECT_TRUE(isGivenBackSoon());
}

TEST_F(SessionGuard, WhatAPersonSetsOnTheRaisedDeviceIsItsOwnFromThenOn) {
    const Volumes softer{0.027F, 0.0135F};
    for (const bool isMuted : {false, true}) {
        for (const int number : {0, SIGTERM, SIGKILL}) {
            SCOPED_TRACE((isMuted ? "muted, signal " : "softer, signal ") + std::to_string(number));
            std::filesystem::remove_all(session.directory() + "/config/halvo");
            ASSERT_TRUE(session.setVolume(kSpeakers, kOwnLevel));
            ASSERT_TRUE(session.setMuted(kSpeakers, false));
            startApplication();
            const int guard = scene.guard();
            if (isMuted) {
                ASSERT_TRUE(session.setMuted(kSpeakers, true));
            } else {
                ASSERT_TRUE(session.setVolume(kSpeakers, softer));
            }
            const std::string noticed = isMuted ? "\"muted\": true" : "0.027";
            ASSERT_TRUE(PrivateSession::waitFor([&] { return record().contains(noticed); }))
                << record() << session.volume(kSpeakers)[0] << session.isMuted(kSpeakers);
            if (number == 0) {
                EXPECT_EQ(scene.quit(), 0);
            } else {
                kill(number);
            }
            EXPECT_TRUE(ends(guard));
            EXPECT_EQ(session.volume(kSpeakers), isMuted ? kOwnLevel : softer);
            EXPECT_EQ(session.isMuted(kSpeakers), isMuted);
            EXPECT_EQ(session.defaultSink(), kSpeakers);
        }
    }
}

TEST_F(SessionGuard, GivesBackThoughTheSettingsFolderTakesNothing) {
    std::filesystem::remove_all(session.directory() + "/config/halvo");
    std::ofstream(session.directory() + "/config/halvo") << "where the folder should be";
    for (const int number : {SIGTERM, SIGKILL}) {
        SCOPED_TRACE(number);
        startApplication();
        kill(number);
        EXPECT_TRUE(isGivenBackSoon()) << session.volume(kSpeakers)[0] << session.defaultSink();
        EXPECT_TRUE(
            PrivateSession::waitFor([&] { return scene.processes("halvo-restore").empty(); }));
    }
}

TEST(SessionGuardProcess, StartsWithTheFirstRecordThenSleepsAndHoldsNothing) {
    Options options;
    options.outputs = {};
    ApplicationScene scene(options);
    scene.startApplication();
    ASSERT_TRUE(PrivateSession::waitFor([&] { return scene.debugLog().contains("Launch done"); }));
    EXPECT_TRUE(scene.processes("halvo-session-guard").empty()) << "nothing to restore yet";
    ASSERT_TRUE(scene.session().plug({kSpeakers, "Speakers"}));

    const int guard = scene.guard();
    EXPECT_EQ(::getpgid(guard), guard);
    for (const auto* mask : {"SigBlk", "SigIgn", "SigCgt"}) {
        const auto signals = std::stoull(statusField(guard, mask), nullptr, 16);
        EXPECT_EQ(signals & 0x7FFFFFFFU, 0U) << mask; // above are those of the C library
    }
    std::size_t descriptors = 0;
    for ([[maybe_unused]] const auto& descriptor :
         std::filesystem::directory_iterator("/proc/" + std::to_string(guard) + "/fd"))
        ++descriptors;
    EXPECT_EQ(descriptors, 3U);
    // It may still be on its way to its wait.
    EXPECT_TRUE(PrivateSession::waitFor(
        [&] { return statusField(guard, "voluntary_ctxt_switches") != "0"; }));
    const auto switches = statusField(guard, "voluntary_ctxt_switches");
    (void)PrivateSession::waitFor([] { return false; }, std::chrono::seconds(2));
    EXPECT_EQ(statusField(guard, "voluntary_ctxt_switches"), switches);
    RecordProperty("guardResident", statusField(guard, "VmRSS"));
}
