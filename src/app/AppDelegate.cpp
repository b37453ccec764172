#include "app/AppDelegate.h"

#include "platform/Application.h"
#include "platform/AudioHardware.h"
#include "platform/TerminationSignal.h"

namespace halvo {

std::shared_ptr<AppDelegate> AppDelegate::create(const Platform& platform) {
    return std::shared_ptr<AppDelegate>(new AppDelegate(platform));
}

AppDelegate::AppDelegate(const Platform& platform)
    : platform_(platform), log_(platform.systemLog, platform.fileSystem),
      audioEngine_(platform.sharedMemory, platform.outputUnits, platform.mainQueue,
                   platform.standardOutput,
                   [this](const std::string& uid) { return deviceManager_.audioDeviceID(uid); }),
      deviceManager_(platform.audioHardware, platform.mainQueue),
      presetManager_(platform.fileSystem, platform.userDefaults, platform.systemLog),
      appSettings_(platform.userDefaults),
      driverInstaller_(platform.driverInstallation, platform.alert, platform.systemLog) {}

void AppDelegate::applicationDidFinishLaunching() {
    log_.write("Launch start");
    restoreDirtySession();
    platform_.terminationSignal.install(&AppDelegate::handleTermination);
    checkDriver();
    deviceManager_.refreshDevices();
    deviceManager_.installDefaultDeviceListener();
    deviceManager_.installDeviceListListener();
    logDevices();
    captureAndSwitchOutput();
    log_.write("originalOutputUID: " + originalOutputUID_.value_or("nil"));
    if (originalOutputUID_) deviceManager_.selectedDeviceID.set(*originalOutputUID_);
    setupAutoSwitch();
    setupAudioEngine();
    setupVolumeMonitoring();
    setupSettingsBindings();
    setupRecovery();
    log_.write("Launch done");
}

void AppDelegate::applicationWillTerminate() {
    // Before the first write, or giving the default back would be taken for a person's choice.
    platform_.audioHardware.silenceListeners();
    cancellables_.clear();
    giveOutputBack();
    SavedSession::clear(platform_.userDefaults);
    audioEngine_.stop();
}

void AppDelegate::checkDriver() {
    if (driverInstaller_.isInstalled() && !driverInstaller_.needsUpdate()) return;
    log_.write("Driver not installed or needs update, prompting user");
    if (driverInstaller_.installIfNeeded()) return;
    log_.write("Driver installation failed or cancelled, quitting");
    platform_.application.terminate(); // by design the sequence goes on until the request is taken
}

void AppDelegate::logDevices() {
    std::string list;
    for (const auto& [uid, name] : deviceManager_.outputDevices.get()) {
        if (!list.empty()) list += ", ";
        list += '"';
        for (const char character : name + " [" + uid + "]") {
            if (character == '"' || character == '\\') list += '\\';
            list += character;
        }
        list += '"';
    }
    log_.write("Devices: [" + list + "]");
    log_.write("Default: " + deviceManager_.defaultDeviceUID.get());
}

} // namespace halvo
