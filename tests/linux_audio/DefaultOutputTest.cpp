#include "linux_audio/ServerFixture.h"

namespace halvo {
namespace {

class DefaultOutputTest : public ServerFixture {};

TEST_F(DefaultOutputTest, IsSeenByTheNextReadAfterAWrite) {
    EXPECT_EQ(hardware_->defaultOutput(), device("acc.a"));
    EXPECT_EQ(hardware_->configuredDefault(), std::nullopt);
    for (int i = 0; i < 10; ++i) {
        const std::string uid = i % 2 ? "acc.a" : "acc.b";
        ASSERT_TRUE(hardware_->setDefaultOutput(device(uid)));
        ASSERT_EQ(hardware_->defaultOutput(), device(uid)) << i;
        ASSERT_EQ(hardware_->configuredDefault(), uid) << i;
    }
    EXPECT_TRUE(waitFor([&] { return session_->defaultSink() == "acc.a"; }));
    EXPECT_TRUE(hardware_->setDefaultSystemOutput(device("acc.b")));
    EXPECT_EQ(hardware_->defaultOutput(), device("acc.a")) << "alerts have no output of their own";
}

TEST_F(DefaultOutputTest, ChangedByOthersIsNoticed) {
    std::vector<std::optional<AudioDeviceID>> seen;
    ASSERT_TRUE(
        hardware_->listenToDefaultOutput([&] { seen.push_back(hardware_->defaultOutput()); }));
    ASSERT_TRUE(session_->setDefault("acc.b"));
    EXPECT_TRUE(waitFor([&] { return !seen.empty() && seen.back() == device("acc.b"); }));
    EXPECT_EQ(hardware_->configuredDefault(), "acc.b");
    // The session manager selects another one when the device is removed.
    ASSERT_TRUE(session_->unplug("acc.b"));
    EXPECT_TRUE(waitFor([&] { return seen.back() == device("acc.a"); }));
}

TEST_F(DefaultOutputTest, CanBeTakenBack) {
    ASSERT_TRUE(hardware_->setConfiguredDefault("acc.b"));
    EXPECT_EQ(hardware_->configuredDefault(), "acc.b");
    ASSERT_TRUE(waitFor([&] { return session_->configuredDefault() == "acc.b"; }));
    ASSERT_TRUE(hardware_->releaseDefaultOutput());
    EXPECT_EQ(hardware_->configuredDefault(), std::nullopt);
    EXPECT_TRUE(waitFor([&] { return !session_->configuredDefault(); })) << "the key is gone";
    EXPECT_TRUE(hardware_->defaultOutput()) << "the session manager still has one";
}

TEST_F(DefaultOutputTest, IsNotHeardOfAfterSilencing) {
    int calls = 0;
    ASSERT_TRUE(hardware_->listenToDefaultOutput([&] { ++calls; }));
    ASSERT_TRUE(hardware_->setDefaultOutput(device("acc.b")));
    hardware_->silenceListeners(); // queued events are dropped too
    ASSERT_TRUE(hardware_->setDefaultOutput(device("acc.a")));
    queue_.flush();
    EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace halvo
