#include "application/ApplicationScene.h"
#include "support/SessionPrograms.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

using namespace halvo::test;
using namespace std::chrono_literals;
using halvo::session::PrivateSession;

namespace {

using Volumes = std::vector<float>;

const Volumes kOwnLevel{0.125F, 0.0625F};
const Volumes kRaised{1.0F, 0.5F};

enum class End { quit, termination, kill };

/// How a session ends: the application, and so much later the sound server and its manager.
struct Order {
    const char* name;
    End end;
    std::chrono::milliseconds delay;
};

/// The speakers are a device whose level the session manager keeps by itself. The driver is
/// installed: the sound server starts it, and what puts devices right after a bad end.
class Logout : public testing::TestWithParam<Order> {
  protected:
    ApplicationScene scene{rememberedSpeakers(kOwnLevel)};
    PrivateSession& session = scene.session();

    void SetUp() override {
        ASSERT_TRUE(session.setVolume(kSpeakers, kOwnLevel));
        installDropIn(session.directory(), HALVO_DRIVER_BUNDLE_PATH);
        session.stopServer();
        logIn();
    }
    void logIn() {
        ASSERT_TRUE(session.startServer());
        ASSERT_TRUE(PrivateSession::waitFor([&] { return !session.volume(kVirtualSink).empty(); }));
    }
    void startApplication() {
        scene.startApplication();
        ASSERT_TRUE(scene.isReady());
        ASSERT_TRUE(PrivateSession::waitFor([&] { return session.volume(kSpeakers) == kRaised; }))
            << scene.debugLog();
        pass(2s); // the session manager keeps what it sees, a second later
    }
    void logOut(const Order& order) {
        if (order.end == End::quit) {
            EXPECT_EQ(scene.quit(), 0);
        } else {
            const int number = order.end == End::kill ? SIGKILL : SIGTERM;
            ASSERT_TRUE(scene.application().signal(number));
            EXPECT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + number);
        }
        pass(order.delay);
        for (const auto* program : {"halvo-session-guard", "halvo-restore"}) {
            for (const int pid : scene.processes(program))
                (void)::kill(pid, SIGKILL); // it may be about to end by itself
        }
        session.killServer();
        session.stopServer();
    }
    bool isAtItsOwnLevel() {
        return PrivateSession::waitFor([&] { return session.volume(kSpeakers) == kOwnLevel; });
    }
    bool isDefault(const std::string& name) {
        return PrivateSession::waitFor([&] { return session.defaultSink() == name; });
    }
    static void pass(std::chrono::milliseconds time) {
        (void)PrivateSession::waitFor([] { return false; }, time);
    }
};

} // namespace

TEST_P(Logout, TheNextLoginFindsTheDeviceAtItsOwnLevel) {
    startApplication();
    logOut(GetParam());
    ASSERT_TRUE(session.startServer()); // and its manager has found the devices
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(isAtItsOwnLevel()) << "without the application: " << session.volume(kSpeakers)[0];
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    RecordProperty("ownLevelAfterMs", std::to_string(took.count()));
    EXPECT_TRUE(isDefault(kSpeakers)) << "silence until the application starts";
    // A session manager that had kept the raised level gets the own one.
    EXPECT_TRUE(PrivateSession::waitFor([&] { return scene.processes("halvo-restore").empty(); }));
    session.stopServer();
    logIn();
    EXPECT_TRUE(isAtItsOwnLevel()) << "nor at the second one: " << session.volume(kSpeakers)[0];
    EXPECT_TRUE(isDefault(kSpeakers));
    startApplication();
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(isAtItsOwnLevel());
}

INSTANTIATE_TEST_SUITE_P(Orders, Logout,
                         testing::Values(Order{"terminatedTogether", End::termination, 0ms},
                                         Order{"terminatedBefore", End::termination, 200ms},
                                         Order{"quitTogether", End::quit, 0ms},
                                         Order{"quitBefore", End::quit, 200ms},
                                         Order{"quitLongBefore", End::quit, 2000ms},
                                         Order{"killedTogether", End::kill, 0ms}),
                         [](const auto& test) { return std::string(test.param.name); });
