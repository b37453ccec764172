#include "application/ApplicationScene.h"
#include "support/SessionPrograms.h"

#include <chrono>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

using namespace halvo::test;
using halvo::session::PrivateSession;
using Clock = std::chrono::steady_clock;

namespace {

bool hasSignal(const std::string& mask, int number) {
    return (std::stoull(mask, nullptr, 16) >> (number - 1) & 1U) != 0;
}

/// What is finally heard at the speakers.
bool soundArrives(ApplicationScene& scene, const char* node = kSpeakers) {
    const auto recorder = scene.record(node);
    const auto player = scene.play(sine(1000, 0.1F, 20));
    return PrivateSession::waitFor([&] { return recorder->recording().peak() > 0.001F; });
}

} // namespace

TEST(ApplicationStart, TheDebugLogAndTheOutputTellWhatHappened) {
    ApplicationScene scene;
    scene.startBoth();
    ASSERT_TRUE(scene.prints("Switched default + system output"));
    EXPECT_EQ(scene.debugLog(), "Halvo: Launch start\n"
                                "Halvo: Devices: [\"Speakers [acc.a]\", \"Headphones [acc.b]\", "
                                "\"Halvo Virtual Output [HalvoVirtualOutput_UID]\"]\n"
                                "Halvo: Default: acc.a\n"
                                "Halvo: Will output to real device: acc.a\n"
                                "Halvo: originalOutputUID: acc.a\n"
                                "Halvo: Starting engine, outputting to: acc.a\n"
                                "Halvo: Engine started, ringBuffer connected: true\n"
                                "Halvo: Launch done\n");
    EXPECT_EQ(scene.standardOutput(),
              "Halvo: Saved real device volume 1.0, set to max\n"
              "Halvo: Switched default + system output to Halvo Virtual Output\n");
    const int pid = scene.application().pid();
    for (const auto* field : {"SigCgt", "SigIgn"}) {
        EXPECT_FALSE(hasSignal(statusField(pid, field), SIGINT)) << field;
        EXPECT_FALSE(hasSignal(statusField(pid, field), SIGHUP)) << field;
    }
}

TEST(ApplicationStart, APersonFindsTheVirtualOutputAmongTheSinks) {
    ApplicationScene scene;
    scene.startBoth();
    ASSERT_TRUE(scene.isReady());
    const auto status = scene.session().run({"wpctl", "status"}).output;
    const auto sinks = status.find("Sinks:");
    const auto sources = status.find("Sources:", sinks);
    ASSERT_NE(sources, std::string::npos) << status;
    const auto list = status.substr(sinks, sources - sinks);
    EXPECT_NE(list.find(halvo::kVirtualDeviceName), std::string::npos) << status;
}

TEST(ApplicationStart, WithoutADriverItReportsAndTakesTheDriverWhenItComes) {
    ApplicationScene scene;
    scene.startApplication();
    ASSERT_TRUE(scene.prints("Is the driver installed?"));
    EXPECT_EQ(scene.standardOutput(),
              "Halvo: Saved real device volume 1.0, set to max\n"
              "Halvo: Could not connect to driver shared memory\n"
              "Halvo: Can't find virtual device for volume monitoring\n"
              "Halvo: setDefaultOutputDevice failed, retrying... (3 left)\n"
              "Halvo: setDefaultOutputDevice failed, retrying... (2 left)\n"
              "Halvo: setDefaultOutputDevice failed, retrying... (1 left)\n"
              "Halvo: WARNING - Could not switch to Halvo Virtual Output. Is the driver "
              "installed?\n");
    EXPECT_FALSE(std::filesystem::exists("/dev/shm" + scene.session().ringName()));
    scene.startDriver();
    ASSERT_TRUE(scene.isReady());
    EXPECT_TRUE(soundArrives(scene));
}

TEST(ApplicationStart, WithoutAnOutputItWaitsForOne) {
    halvo::session::Options options;
    options.outputs = {};
    ApplicationScene scene(options);
    scene.startDriver();
    scene.startApplication();
    ASSERT_TRUE(PrivateSession::waitFor([&] { return scene.debugLog().contains("Launch done"); }));
    EXPECT_TRUE(scene.debugLog().contains("Halvo: No suitable hardware output device found\n"));
    ASSERT_TRUE(scene.session().plug({kSpeakers, "Speakers"}));
    ASSERT_TRUE(scene.isReady());
    EXPECT_TRUE(soundArrives(scene));
}

TEST(ApplicationStart, WithoutASoundServerItWaitsForOne) {
    ApplicationScene scene;
    scene.session().stopServer();
    scene.startApplication();
    ASSERT_TRUE(PrivateSession::waitFor([&] { return scene.debugLog().contains("Launch done"); }));
    EXPECT_TRUE(scene.application().isRunning());
    const auto says = [&](const char* text) {
        return PrivateSession::waitFor(
            [&] { return scene.application().standardError().contains(text); });
    };
    EXPECT_TRUE(says("No sound server; waiting"));
    ASSERT_TRUE(scene.session().startServer());
    EXPECT_TRUE(says("Connected to the sound server"));
    scene.startDriver();
    ASSERT_TRUE(scene.isReady());
    EXPECT_TRUE(soundArrives(scene));
}

TEST(ApplicationStart, AServerThatRestartsIsFollowed) {
    ApplicationScene scene;
    scene.startBoth();
    for (int round = 0; round < 2; ++round) {
        scene.session().stopServer();
        EXPECT_TRUE(scene.application().isRunning());
        ASSERT_TRUE(scene.session().startServer());
        ASSERT_TRUE(scene.isReady()) << round;
        EXPECT_TRUE(soundArrives(scene)) << round << "\n" << scene.debugLog();
    }
    ASSERT_TRUE(scene.session().setVolume(kVirtualSink, {0.25F, 0.25F}));
    EXPECT_TRUE(PrivateSession::waitFor([&] {
        return scene.savedSettings().contains("\"halvo_outputVolume\": 0.25") ||
               scene.savedSettings().contains("\"halvo_outputVolume\":0.25");
    })) << scene.savedSettings();
}

TEST(ApplicationStart, ADriverThatIsKilledAndComesBackGoesOn) {
    ApplicationScene scene;
    scene.startBoth();
    ASSERT_TRUE(scene.driver().signal(SIGKILL));
    scene.startDriver();
    EXPECT_TRUE(soundArrives(scene));
    ASSERT_TRUE(scene.session().setVolume(kVirtualSink, {0.25F, 0.25F}));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return scene.savedSettings().contains("0.25"); }));
}

TEST(ApplicationStart, AVirtualDeviceThatIsNotLetBeDefaultIsGivenUpAndTriedAgainLater) {
    ApplicationScene scene;
    scene.startDriver();
    scene.startApplication();
    // Another program sets the speakers again, each time they are no longer the default.
    EXPECT_TRUE(PrivateSession::waitFor([&] {
        if (scene.session().defaultSink() == kVirtualSink)
            (void)scene.session().setDefault(kSpeakers);
        return scene.standardOutput().contains(
            "Halvo: WARNING - Could not switch to Halvo Virtual Output");
    }));
    EXPECT_TRUE(scene.application().isRunning());
    // Each of its changes causes a retry; the last one is over once a second passes without a
    // change.
    ASSERT_TRUE(PrivateSession::waitFor([&, since = Clock::now()]() mutable {
        if (scene.session().defaultSink() != kVirtualSink) since = Clock::now();
        return Clock::now() - since > std::chrono::seconds(1);
    }));
    ASSERT_TRUE(scene.session().setDefault(kHeadphones));
    EXPECT_TRUE(
        PrivateSession::waitFor([&] { return scene.session().defaultSink() == kVirtualSink; }));
    EXPECT_TRUE(soundArrives(scene, kHeadphones));
}

TEST(ApplicationStart, OtherRates) {
    for (const std::uint32_t rate : {44100U, 96000U}) {
        halvo::session::Options options;
        options.rate = rate;
        ApplicationScene scene(options);
        std::vector<float> bands(10, 0.0F);
        bands[5] = 12;
        scene.writePresets(bands);
        scene.startBoth();
        const auto recorder = scene.record(kSpeakers);
        const auto player = scene.play(sine(1000, 0.1F, 3, rate));
        ASSERT_TRUE(PrivateSession::waitFor([&] { return player->isFinished(); }));
        const auto sound = recorder->recording().samples;
        EXPECT_NEAR(loudestDb(sound, 0, rate), -23.01 + 12, 0.2) << rate;
    }
}

TEST(ApplicationStart, ALowRateHasSoundAndAMessageButNoSpectrum) {
    halvo::session::Options options;
    options.rate = 22050;
    ApplicationScene scene(options);
    scene.startBoth();
    EXPECT_TRUE(scene.prints("Halvo: No spectrum at this sample rate"));
    EXPECT_TRUE(soundArrives(scene));
    EXPECT_TRUE(scene.application().isRunning());
}

TEST(ApplicationStart, ASecondInstanceLeavesTheFirstAlone) {
    ApplicationScene scene;
    scene.startBoth();
    const auto second = scene.session().run({HALVO_APPLICATION});
    EXPECT_EQ(second.status, 0);
    EXPECT_TRUE(second.output.contains("already running")) << second.output;
    EXPECT_TRUE(scene.application().isRunning());
    EXPECT_EQ(scene.session().defaultSink(), kVirtualSink);
}
