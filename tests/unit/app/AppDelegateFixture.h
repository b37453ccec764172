#pragma once

#include "app/AppDelegate.h"
#include "fake/FakePlatform.h"
#include "platform/VirtualOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace halvo {

using namespace std::chrono_literals;

/// A machine with two outputs, the virtual device and a ring; the application is not yet started.
class AppDelegateTest : public testing::Test {
  protected:
    FakePlatform fake;
    AudioDeviceID a = fake.audioHardware.add("acc.a", "Speakers");
    AudioDeviceID b = fake.audioHardware.add("acc.b", "Headphones");
    AudioDeviceID virtualDevice = 0;
    std::shared_ptr<AppDelegate> delegate;

    void SetUp() override { fake.audioHardware.changeDefault(a); }

    void plugDriver() {
        virtualDevice = fake.audioHardware.add(kVirtualDeviceUID, "Halvo Virtual Output");
        fake.sharedMemory.createRing(48000, 2, 8192);
    }
    void launch() {
        delegate = AppDelegate::create(fake.platform());
        delegate->applicationDidFinishLaunching();
        launchOutput = output();
    }
    void launchWithDriver() {
        plugDriver();
        launch();
        settle();
    }
    /// Lets everything that start-up scheduled run.
    void settle() { fake.mainQueue.advance(2s); }

    std::vector<std::string>& output() { return fake.standardOutput.lines; }
    std::string debugLog() { return fake.fileSystem.files["/tmp/halvo_debug.log"]; }
    float volume(AudioDeviceID device) {
        return *fake.audioHardware.volume(device, VolumeElement::main);
    }
    std::string defaultUID() {
        const auto device = fake.audioHardware.defaultOutput();
        return device ? *fake.audioHardware.uid(*device) : "none";
    }
    std::vector<float> play(const std::vector<float>& frames) {
        fake.sharedMemory.write(frames);
        return fake.outputUnits.current->render(static_cast<std::uint32_t>(frames.size() / 2));
    }
    void saveDirty(std::optional<std::string> uid, std::optional<float> volume) {
        fake.userDefaults.setBool(SavedSession::kSavedDirtyFlag, true);
        if (uid) fake.userDefaults.setString(SavedSession::kSavedRealDeviceUID, *uid);
        if (volume) fake.userDefaults.setFloat(SavedSession::kSavedRealVolume, *volume);
    }
    bool hasAnyKey() {
        return fake.userDefaults.contains(SavedSession::kSavedDirtyFlag) ||
               fake.userDefaults.contains(SavedSession::kSavedRealDeviceUID) ||
               fake.userDefaults.contains(SavedSession::kSavedRealVolume);
    }

    std::vector<std::string> launchOutput;
};

} // namespace halvo
