#include "PlatformFactory.h"
#include "app/AppDelegate.h"
#include "application/ApplicationScene.h"

#include <QCoreApplication>
#include <cmath>
#include <gtest/gtest.h>

using namespace halvo::test;
using halvo::session::PrivateSession;

namespace {

/// The application's own objects in this process, on the real server.
class OwnApplication {
  public:
    explicit OwnApplication(ApplicationScene& scene) {
        scene.session().setEnvironmentOfThisProcess();
        qputenv("HALVO_DRIVER_BUNDLE", HALVO_DRIVER_BUNDLE_PATH);
        auto host = halvo::makePlatform();
        if (!host) throw std::runtime_error("no platform");
        host_ = std::move(*host);
        delegate_ = halvo::AppDelegate::create(host_->platform());
        delegate_->applicationDidFinishLaunching();
    }
    ~OwnApplication() { delegate_->applicationWillTerminate(); }
    OwnApplication(const OwnApplication&) = delete;
    OwnApplication& operator=(const OwnApplication&) = delete;

    halvo::AppDelegate& delegate() { return *delegate_; }
    static bool runUntil(const std::function<bool()>& condition) {
        return PrivateSession::waitFor([&] {
            QCoreApplication::processEvents();
            return condition();
        });
    }

  private:
    int argc_ = 1;
    char name_[6] = "halvo";
    char* argv_[2] = {name_, nullptr};
    QCoreApplication application_{argc_, argv_};
    std::unique_ptr<halvo::PlatformHost> host_;
    std::shared_ptr<halvo::AppDelegate> delegate_;
};

} // namespace

TEST(Edits, ABandIsHeardInTheNextCycle) {
    ApplicationScene scene;
    scene.writePresets(std::vector<float>(10, 0.0F));
    scene.startDriver();
    OwnApplication own(scene);
    const auto recorder = scene.record(kSpeakers);
    const auto player = scene.play(sine(1000, 0.1F, 30));
    const auto newest = [&](std::size_t frames) {
        const auto sound = recorder->recording().samples;
        const auto count = sound.size() / 2;
        return count < frames ? -200.0 : levelDb(sound, count - frames, frames);
    };
    ASSERT_TRUE(OwnApplication::runUntil([&] { return std::abs(newest(9600) + 23.01) < 0.05; }));
    for (const float gain : {12.0F, -12.0F, 0.0F}) {
        const auto edited = recorder->frames();
        own.delegate().presetManager().setBandGain(5, gain);
        const double expected = -23.01 + static_cast<double>(gain);
        ASSERT_TRUE(OwnApplication::runUntil([&] {
            return std::abs(newest(9600) - expected) < 0.1;
        })) << gain;
        // The first 10 ms at the new level; the filter itself needs some periods to settle.
        const auto sound = recorder->recording().samples;
        std::size_t heard = edited;
        while (std::abs(levelDb(sound, heard, 480) - expected) > 0.5)
            heard += 48;
        EXPECT_LE(heard - edited, 4U * 1024) << gain;
    }
    // Picking another device moves the sound and leaves the preset alone.
    own.delegate().deviceManager().selectedDeviceID.set(kHeadphones);
    const auto there = scene.record(kHeadphones);
    EXPECT_TRUE(OwnApplication::runUntil([&] { return there->recording().peak() > 0.05F; }));
    EXPECT_EQ(own.delegate().originalOutputUID(), kSpeakers);
}
