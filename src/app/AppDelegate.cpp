#include "app/AppDelegate.h"

#include "platform/Application.h"
#include "platform/AudioHardware.h"
#include "platform/DriverInstallation.h"
#include "platform/StatusItem.h"
#include "platform/SystemLog.h"
#include "platform/TerminationSignal.h"

namespace halvo {

namespace {

constexpr double kStatusItemLength = 30; // points

/// A character of a text as the description of an array shows it, which stays on one line.
std::string escaped(char character) {
    switch (character) {
    case '"':
        return R"(\")";
    case '\\':
        return R"(\\)";
    case '\0':
        return R"(\0)";
    case '\n':
        return R"(\n)";
    case '\r':
        return R"(\r)";
    case '\t':
        return R"(\t)";
    default:
        break;
    }
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7F) return {character};
    constexpr const char* kHexDigits = "0123456789ABCDEF";
    return {'\\', 'u', '{', kHexDigits[byte / 16], kHexDigits[byte % 16], '}'};
}

} // namespace

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
      nowPlayingMonitor_({.mainQueue = platform.mainQueue,
                          .backgroundQueue = platform.backgroundQueue,
                          .childProcesses = platform.childProcesses,
                          .scriptRunner = platform.scriptRunner,
                          .httpSession = platform.httpSession,
                          .imageReader = platform.imageReader,
                          .mediaHelper = platform.mediaHelper,
                          .fileSystem = platform.fileSystem,
                          .systemLog = platform.systemLog}),
      spotifyClient_(platform.userDefaults, platform.systemLog),
      lastFMClient_(platform.httpSession, platform.mainQueue, platform.unicodeText,
                    platform.systemLog),
      genreMapper_(platform.unicodeText), appSettings_(platform.userDefaults),
      driverInstaller_(platform.driverInstallation, platform.alert, platform.systemLog) {}

void AppDelegate::applicationDidFinishLaunching() {
    log_.write("Launch start");
    restoreDirtySession();
    platform_.terminationSignal.install(&AppDelegate::handleTermination);
    startNowPlaying();
    (void)autoGenreController(); // it observes from now on
    setupStatusItem();
    setupPanel();
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
    followOwnVolume();
    setupSettingsBindings();
    setupRecovery();
    log_.write("Launch done");
}

void AppDelegate::applicationWillTerminate() {
    // Before the first write, or giving the default back would be taken for a person's choice.
    platform_.audioHardware.silenceListeners();
    cancellables_.clear();
    statusView_.onNeedsDisplay = nullptr;
    platform_.statusItem.hide();
    panel_.reset();
    restoreOutput();
    clearDirtySession();
    nowPlayingMonitor_.stopHelperProcess();
    nowPlayingMonitor_.stopAppleScriptPolling();
    audioEngine_.stop();
}

AutoGenreController& AppDelegate::autoGenreController() {
    if (!autoGenreController_) {
        autoGenreController_ = std::make_unique<AutoGenreController>(AutoGenreServices{
            .nowPlaying = nowPlayingMonitor_,
            .spotify = spotifyClient_,
            .lastFM = lastFMClient_,
            .mapper = genreMapper_,
            .presetManager = std::shared_ptr<PresetManager>(shared_from_this(), &presetManager_),
            .userDefaults = platform_.userDefaults,
            .mainQueue = platform_.mainQueue,
            .systemLog = platform_.systemLog});
    }
    return *autoGenreController_;
}

void AppDelegate::startNowPlaying() {
    nowPlayingMonitor_.locateHelperFiles();
    if (nowPlayingMonitor_.dylibPath() && nowPlayingMonitor_.scriptPath()) {
        nowPlayingMonitor_.startHelperProcess();
        return;
    }
    // By design not in the diagnostic log's file.
    platform_.systemLog.write("Halvo: MediaRemote helper not found, using AppleScript fallback");
    nowPlayingMonitor_.startAppleScriptPolling();
}

void AppDelegate::setupStatusItem() {
    auto& item = platform_.statusItem;
    statusView_.onNeedsDisplay = [&item] { item.setNeedsDisplay(); };
    item.show(
        kStatusItemLength, [this](ScreenSize size) { return statusView_.draw(size); },
        [this] { togglePopover(); });
}

void AppDelegate::setupPanel() {
    panel_.emplace(platform_, PopoverServices{.deviceManager = deviceManager_,
                                              .presetManager = presetManager_,
                                              .spectrumData = spectrumData_,
                                              .appSettings = appSettings_,
                                              .autoGenreController = autoGenreController(),
                                              .nowPlayingMonitor = nowPlayingMonitor_});
}

void AppDelegate::togglePopover() {
    if (panel_) panel_->toggle();
}

void AppDelegate::checkDriver() {
    if (!driverInstaller_.isInstalled() || driverInstaller_.needsUpdate()) {
        log_.write("Driver not installed or needs update, prompting user");
        if (!driverInstaller_.installIfNeeded()) {
            log_.write("Driver installation failed or cancelled, quitting");
            // By design the sequence goes on until the request is taken.
            return platform_.application.terminate();
        }
    }
    platform_.driverInstallation.ensureRunning();
}

void AppDelegate::logDevices() {
    std::string list;
    for (const auto& [uid, name] : deviceManager_.outputDevices.get()) {
        if (!list.empty()) list += ", ";
        list += '"';
        for (const char character : name + " [" + uid + "]")
            list += escaped(character);
        list += '"';
    }
    log_.write("Devices: [" + list + "]");
    log_.write("Default: " + deviceManager_.defaultDeviceUID.get());
}

} // namespace halvo
