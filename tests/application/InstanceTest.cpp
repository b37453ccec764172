#include "application/ApplicationScene.h"

#include <gtest/gtest.h>

using namespace halvo::test;
using halvo::session::PrivateSession;
using halvo::session::RunResult;

namespace {

constexpr const char* kNoBus = "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere";

/// Whether the session has a bus: without one only the lock prevents a second instance.
class ApplicationInstance : public testing::TestWithParam<bool> {
  protected:
    ApplicationScene scene;
    std::vector<std::string> surroundings;

    ApplicationInstance() {
        if (!GetParam()) surroundings.emplace_back(kNoBus);
        scene.startDriver();
    }
    RunResult start(const std::vector<std::string>& options = {}) {
        std::vector<std::string> words{"/usr/bin/env"};
        words.insert(words.end(), surroundings.begin(), surroundings.end());
        words.emplace_back(HALVO_APPLICATION);
        words.insert(words.end(), options.begin(), options.end());
        return scene.session().run(words);
    }
};

TEST_P(ApplicationInstance, IsOneAndEndsWhenAsked) {
    EXPECT_EQ(start({"--quit"}).status, 0) << "there is none";
    for (int round = 0; round < 2; ++round) {
        scene.startApplication(surroundings);
        ASSERT_TRUE(scene.isReady()) << scene.application().standardError();
        ASSERT_EQ(scene.application().standardError().contains("No session bus"), !GetParam());
        const auto second = start();
        EXPECT_EQ(second.status, 0);
        EXPECT_TRUE(second.output.contains("Halvo is already running.")) << second.output;
        EXPECT_TRUE(scene.application().isRunning());
        const auto quit = start({"--quit"});
        EXPECT_EQ(quit.status, 0) << quit.output;
        EXPECT_FALSE(scene.application().isRunning()) << "it waits for the end";
        EXPECT_EQ(scene.session().defaultSink(), kSpeakers);
        EXPECT_EQ(scene.hasDirtyRecord(), !GetParam()) << scene.savedSettings();
    }
}

INSTANTIATE_TEST_SUITE_P(Bus, ApplicationInstance, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "Bus" : "NoBus"; });

} // namespace
