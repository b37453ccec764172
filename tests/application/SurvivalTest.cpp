#include "application/ApplicationScene.h"
#include "support/SessionPrograms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <set>

using namespace halvo::test;
using halvo::session::Options;
using halvo::session::PrivateSession;

namespace {

enum class Victim { application, driver, server };

const char* nameOf(Victim victim) {
    switch (victim) {
    case Victim::application:
        return "application";
    case Victim::driver:
        return "driver";
    case Victim::server:
        return "server";
    }
    return "";
}

constexpr const char* kDriver = "halvo-audio-device";
constexpr double kMargin = 1.0;
/// A sine of amplitude 0.1 at a level of 0.125, which the equalizer takes 6 dB down.
constexpr double kPlainDb = -23.0103 - 18.0618;
constexpr double kEqualizedDb = kPlainDb - 6;

std::uint32_t fromEnvironment(const char* name, std::uint32_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10))
                           : otherwise;
}

/// Halvo's objects in shared memory, except the rings of other sessions.
std::set<std::string> sharedObjects(const std::string& ringName) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
        const auto name = "/" + entry.path().filename().string();
        const bool isOthers = name.starts_with("/halvo_session_") && !name.starts_with(ringName);
        if (name.starts_with("/halvo") && !isOthers) names.insert(name);
    }
    return names;
}

/// Application, driver and server are killed while a client plays. The driver is installed; the
/// test restarts the server like a service manager.
class Survival : public testing::Test {
  protected:
    ApplicationScene scene{quietSpeakers()};
    PrivateSession& session = scene.session();
    std::mt19937 random;
    std::set<std::string> objectsBefore = sharedObjects(session.ringName());
    std::unique_ptr<halvo::session::Player> player;
    std::unique_ptr<halvo::session::Recorder> speakers;

    void begin() {
        std::vector<float> bands(10, 0.0F);
        bands[5] = -6;
        scene.writePresets(bands);
        installDriver();
        scene.startApplication();
    }
    /// As the package does: the server's configuration starts the driver's supervisor.
    void installDriver() {
        installDropIn(session.directory(), HALVO_DRIVER_BUNDLE_PATH);
        session.stopServer();
        ASSERT_TRUE(session.startServer());
    }
    void kill(Victim victim) {
        switch (victim) {
        case Victim::application:
            if (scene.application().signal(SIGKILL)) {
                (void)scene.application().wait(PrivateSession::kPatience);
            }
            break;
        case Victim::driver:
            for (const int driver : scene.processes(kDriver))
                (void)::kill(driver, SIGKILL); // it may be about to end by itself
            break;
        case Victim::server:
            ASSERT_TRUE(session.isServerRunning()) << "crashed";
            session.killServer();
        }
    }
    void waitUpTo(std::uint32_t milliseconds) {
        (void)PrivateSession::waitFor([] { return false; },
                                      std::chrono::milliseconds(random() % milliseconds));
    }
    void listen() {
        player.reset();
        speakers.reset();
        speakers = scene.record(kSpeakers);
        player = scene.play(sine(1000, 0.1F, 60));
    }
    bool settlesAt(double level) {
        return PrivateSession::waitFor([&] {
            const auto sound = speakers->recording().samples;
            const std::size_t window = 9600;
            if (sound.size() / 2 < window) return false;
            return std::abs(levelDb(sound, sound.size() / 2 - window, window) - level) < 0.1;
        });
    }
    void waitForServerAndDriver() {
        if (!session.isServerRunning()) {
            player.reset();
            speakers.reset();
            session.stopServer();
            ASSERT_TRUE(session.startServer());
        }
        EXPECT_TRUE(PrivateSession::waitFor([&] {
            return scene.processes(kDriver).size() == 1 && !session.volume(kVirtualSink).empty();
        }));
    }
    void expectGivenBack() {
        EXPECT_TRUE(PrivateSession::waitFor([&] {
            return session.defaultSink() == kSpeakers &&
                   session.volume(kSpeakers) == std::vector<float>{0.125F, 0.125F};
        })) << session.defaultSink();
        for (const auto* program : {"halvo", "halvo-session-guard", "halvo-restore",
                                    "halvo-media-helper", "halvo-cover-fetch"}) {
            EXPECT_TRUE(PrivateSession::waitFor([&] { return scene.processes(program).empty(); }))
                << program;
        }
    }
    void expectSound() {
        ASSERT_TRUE(scene.isReady()) << scene.debugLog() << session.defaultSink();
        if (!speakers) listen();
        EXPECT_TRUE(settlesAt(kEqualizedDb)) << scene.debugLog() << scene.standardOutput();
        EXPECT_LE(loudestDb(speakers->recording().samples), kPlainDb + kMargin);
        EXPECT_TRUE(session.isServerRunning());
        for (const auto* program :
             {"halvo", "halvo-session-guard", "halvo-media-helper", kDriver, "halvo-keeper"}) {
            EXPECT_TRUE(PrivateSession::waitFor([&] {
                return scene.processes(program).size() == 1;
            })) << program;
        }
    }

  private:
    static Options quietSpeakers() {
        Options options;
        options.outputs[0].volumes = {0.125F, 0.125F};
        return options;
    }
};

} // namespace

// HALVO_KILL_ROUNDS and HALVO_KILL_SEED set the number of rounds and the random seed.
TEST_F(Survival, KilledInRandomOrderWhilePlaying) {
    const auto rounds = fromEnvironment("HALVO_KILL_ROUNDS", 6);
    const auto seed = fromEnvironment("HALVO_KILL_SEED", std::random_device()());
    std::cout << rounds << " rounds, HALVO_KILL_SEED=" << seed << std::endl;
    random.seed(seed);
    begin();
    std::array victims{Victim::application, Victim::driver, Victim::server};
    for (std::uint32_t round = 0; round < rounds && !HasFailure(); ++round) {
        if (round % victims.size() == 0) std::ranges::shuffle(victims, random);
        ASSERT_TRUE(scene.isReady());
        listen();
        expectSound();
        waitUpTo(200);
        std::string story = "round " + std::to_string(round);
        // Sometimes another one is killed while the others still recover from the first.
        const std::size_t dead = random() % 3 == 0 ? 2 : 1;
        for (std::size_t i = 0; i < dead; ++i) {
            const auto victim = victims[(round + i) % victims.size()];
            story += std::string(", ") + nameOf(victim);
            kill(victim);
            waitUpTo(150);
        }
        std::cout << story << std::endl;
        SCOPED_TRACE(story);
        waitForServerAndDriver();
        if (!scene.application().isRunning()) {
            expectGivenBack();
            scene.startApplication();
        }
        expectSound();
    }
    EXPECT_EQ(scene.quit(), 0);
    expectGivenBack();
    auto expected = objectsBefore;
    expected.insert(session.ringName());
    EXPECT_EQ(sharedObjects(session.ringName()), expected);
}
