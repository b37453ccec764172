#include "application/ApplicationScene.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

using namespace halvo::test;
using halvo::session::Options;
using halvo::session::PrivateSession;

namespace {

using Clock = std::chrono::steady_clock;

Options quietSpeakers() {
    Options options;
    options.outputs[0].volumes = {0.125F, 0.125F};
    options.outputs[1].volumes = {0.5F, 0.5F};
    return options;
}

/// The levels at once; the default by the session manager, which may take its time.
testing::AssertionResult isGivenBack(PrivateSession& session) {
    const auto volume = session.volume(kSpeakers);
    const bool isDefault =
        PrivateSession::waitFor([&] { return session.defaultSink() == kSpeakers; });
    if (isDefault && volume == std::vector<float>{0.125F, 0.125F}) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "default " << session.defaultSink() << ", volumes " << testing::PrintToString(volume);
}

} // namespace

TEST(ApplicationEnd, QuitGivesEverythingBackEachTime) {
    ApplicationScene scene(quietSpeakers());
    scene.startDriver();
    const auto player = scene.play(sine(1000, 0.1F, 60));
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        scene.startApplication();
        ASSERT_TRUE(scene.isReady());
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return scene.session().volume(kSpeakers)[0] == 1.0F; }));
        EXPECT_TRUE(scene.hasDirtyRecord());
        EXPECT_EQ(scene.quit(), 0);
        EXPECT_TRUE(isGivenBack(scene.session()));
        EXPECT_FALSE(scene.hasDirtyRecord()) << scene.savedSettings();
        EXPECT_EQ(scene.session().configuredDefault(), std::nullopt) << "none was configured";
    }
}

TEST(ApplicationEnd, TerminationGivesBackAndKeepsTheRecord) {
    ApplicationScene scene(quietSpeakers());
    scene.startDriver();
    ASSERT_TRUE(scene.session().setDefault(kSpeakers));
    const auto player = scene.play(sine(1000, 0.1F, 60));
    double slowest = 0;
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        scene.startApplication();
        ASSERT_TRUE(scene.isReady());
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return scene.session().volume(kSpeakers)[0] == 1.0F; }));
        const auto start = Clock::now();
        ASSERT_TRUE(scene.application().signal(SIGTERM));
        EXPECT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + SIGTERM);
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        slowest = std::max(slowest, took.count());
        EXPECT_TRUE(isGivenBack(scene.session()));
        EXPECT_TRUE(scene.hasDirtyRecord());
        EXPECT_EQ(scene.session().configuredDefault(), kSpeakers);
    }
    RecordProperty("slowestTerminationMs", std::to_string(slowest));
}

TEST(ApplicationEnd, ADefaultThatWasNeverTakenAwayIsNotPinned) {
    for (const bool isTerminated : {false, true}) {
        ApplicationScene scene(quietSpeakers());
        scene.startApplication(); // without a driver there is nothing to switch to
        ASSERT_TRUE(scene.prints("Halvo: Can't find virtual device"));
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return scene.debugLog().contains("Launch done"); }));
        if (isTerminated) {
            ASSERT_TRUE(scene.application().signal(SIGTERM));
            EXPECT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + SIGTERM);
        } else {
            EXPECT_EQ(scene.quit(), 0);
        }
        EXPECT_EQ(scene.session().configuredDefault(), std::nullopt) << isTerminated;
        EXPECT_TRUE(isGivenBack(scene.session()));
    }
}

TEST(ApplicationEnd, AfterACrashTheNextStartRepairsFirst) {
    ApplicationScene scene(quietSpeakers());
    scene.startDriver();
    scene.startApplication({"HALVO_SESSION_GUARD="}); // no guard
    ASSERT_TRUE(scene.isReady());
    ASSERT_TRUE(
        PrivateSession::waitFor([&] { return scene.session().volume(kSpeakers)[0] == 1.0F; }));
    ASSERT_TRUE(scene.application().signal(SIGKILL));
    ASSERT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + SIGKILL);
    EXPECT_EQ(scene.session().defaultSink(), kVirtualSink);
    scene.startApplication();
    ASSERT_TRUE(scene.isReady());
    EXPECT_TRUE(scene.debugLog().contains(
        "Halvo: Dirty session detected — restoring acc.a to volume 0.125\n"))
        << scene.debugLog();
    EXPECT_TRUE(scene.debugLog().contains("Halvo: Will output to real device: acc.a\n"));
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(isGivenBack(scene.session()));
}
