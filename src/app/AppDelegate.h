#pragma once

#include "app/DiagnosticLog.h"
#include "app/SavedSession.h"
#include "app/StatusEQView.h"
#include "app/StatusPanel.h"
#include "audio/AudioEngine.h"
#include "audio/SpectrumData.h"
#include "base/Subscription.h"
#include "devices/DeviceManager.h"
#include "devices/DriverInstaller.h"
#include "nowplaying/AutoGenreController.h"
#include "nowplaying/GenrePresetMapper.h"
#include "nowplaying/LastFMClient.h"
#include "nowplaying/NowPlayingMonitor.h"
#include "nowplaying/SpotifyClient.h"
#include "platform/Platform.h"
#include "presets/PresetManager.h"
#include "settings/AppSettings.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// Owns every long-lived service, starts them in order, keeps the system's sound running through
/// the virtual device and gives the system its own routing back. Main thread only.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
  public:
    /// The services are made here, but nothing of the system is touched yet.
    static std::shared_ptr<AppDelegate> create(const Platform& platform);

    void applicationDidFinishLaunching();
    void applicationWillTerminate();
    /// What SIGTERM's handler and the session guard do: by the saved settings alone. Any thread.
    static void handleTermination(AudioHardware& hardware, const UserDefaults& defaults);

    AudioEngine& audioEngine() { return audioEngine_; }
    DeviceManager& deviceManager() { return deviceManager_; }
    PresetManager& presetManager() { return presetManager_; }
    SpectrumData& spectrumData() { return spectrumData_; }
    NowPlayingMonitor& nowPlayingMonitor() { return nowPlayingMonitor_; }
    SpotifyClient& spotifyClient() { return spotifyClient_; }
    AppSettings& appSettings() { return appSettings_; }
    /// Made on first use.
    AutoGenreController& autoGenreController();
    StatusEQView& statusView() { return statusView_; }

    /// The real device that was the default when the application took over.
    const std::optional<std::string>& originalOutputUID() const { return originalOutputUID_; }
    /// That device's volume before it was raised.
    std::optional<float> originalRealVolume() const { return originalRealVolume_; }

  private:
    explicit AppDelegate(const Platform& platform);

    // Start-up, quit and the repair of a session that ended badly: AppDelegate.cpp,
    // AppDelegateSession.cpp.
    void startNowPlaying();
    void checkDriver();
    void logDevices();
    void setupStatusItem();
    void setupPanel();
    void togglePopover();
    void saveDirtySession(const std::string& uid, float volume);
    void clearDirtySession();
    void restoreDirtySession();
    void restoreOutput();
    static void restoreVolumeStatic(AudioHardware& hardware, const std::string& uid, float volume);
    /// The last step of every end: the system's own choice where nothing else took its place.
    static void leaveVirtualDevice(AudioHardware& hardware);
    /// For everything, then for alerts, whatever becomes of either.
    static void makeDefault(AudioHardware& hardware, const std::string& uid);

    // The engine and what drives it: AppDelegateEngine.cpp.
    void setupAudioEngine();
    void connectMeters();
    void setupSettingsBindings();
    void startEngine(const std::string& uid);
    void subscribeToPresets();
    void subscribeToDevices();
    void applyPreset(const EQPreset& preset);
    void rebuildOutputUnit(const std::string& uid);

    // Routing: AppDelegateRouting.cpp.
    void captureAndSwitchOutput();
    static constexpr int kSwitchRetries = 3;
    void attemptSwitchToVirtual(int retries);
    bool makeVirtualDeviceDefault();
    void retrySwitchLater(int retries);
    void verifySwitch(int retries);
    void setupAutoSwitch();
    void followDefaultOutput(const std::string& uid);
    void moveToRealDevice(const AudioOutputDevice& device);
    void applyDeviceBinding(const std::string& uid);

    // Volumes: AppDelegateVolume.cpp.
    void maxOutDeviceVolume(const std::string& uid);
    void setupVolumeMonitoring();
    void readAndApplyVolume(AudioDeviceID device);
    void followOwnVolume();
    void writeVolume(float volume);

    // What comes back after it was gone: AppDelegateRecovery.cpp.
    void setupRecovery();
    void scheduleRecovery();
    void recover();
    void recoverRouting();
    void recoverEngine();
    std::optional<std::string> preferredOutputUID() const;

    Platform platform_;
    DiagnosticLog log_;
    AudioEngine audioEngine_;
    DeviceManager deviceManager_;
    PresetManager presetManager_;
    SpectrumData spectrumData_;
    NowPlayingMonitor nowPlayingMonitor_;
    SpotifyClient spotifyClient_;
    LastFMClient lastFMClient_;
    GenrePresetMapper genreMapper_;
    AppSettings appSettings_;
    StatusEQView statusView_;
    DriverInstaller driverInstaller_;
    std::unique_ptr<AutoGenreController> autoGenreController_;
    std::optional<StatusPanel> panel_; ///< from start to quit

    std::optional<std::string> originalOutputUID_;
    std::optional<float> originalRealVolume_;
    std::string outputUID_; ///< where the output unit plays, empty before the first start
    std::optional<AudioDeviceID> monitoredDevice_; ///< the virtual device whose volume is followed
    bool isApplyingVolume_ = false; ///< what is announced came from the virtual device
    bool recoveryScheduled_ = false;

    std::vector<Subscription> cancellables_; // last: the handlers die first
};

} // namespace halvo
