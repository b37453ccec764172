#pragma once

#include "base/Lifetime.h"
#include "loudness/AudioServer.h"
#include "loudness/GuardedDevice.h"
#include "loudness/RaisedDevicesRecord.h"
#include "platform/MainQueue.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace halvo {

class OutputGate;
class SystemLog;

/// The hardware as the core sees it, made safe for ears: devices are raised to full scale only when
/// nothing plays straight into them, and each gets its own level, balance and mute back at the end.
/// Main thread, but for `silenceListeners`.
class LoudnessGuard final : public AudioHardware {
  public:
    /// `record` is what is raised; devices that an earlier process left in it are given back as
    /// soon as they are there. `onRecord` is called whenever it has been written with something in
    /// it, ahead of the change itself. What is passed in by reference must outlive the guard.
    LoudnessGuard(AudioServer& server, OutputGate& gate, MainQueue& mainQueue, SystemLog& log,
                  RaisedDevicesRecord record, std::function<void()> onRecord = {});
    ~LoudnessGuard() override;

    /// A guard that raises nothing and goes by the record on disk alone: it gives all devices back
    /// at once, and the default when it is told to. It leaves the record to the next start, which
    /// repeats this. Any one thread, with a server connection of its own.
    static std::unique_ptr<LoudnessGuard> forRestore(AudioServer& server,
                                                     RaisedDevicesRecord record);
    /// The last step of a give-back: where nothing else has taken the default from the virtual
    /// device, it goes to the one before, or to nobody's choice. False: not done yet.
    bool leaveVirtualDevice();

    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override;
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;

    std::optional<AudioDeviceID> defaultOutput() override;
    /// To the virtual device: it takes over level and mute of the present default first. To another
    /// one: that device gets its own level back first, and a default that nobody had asked for is
    /// not pinned.
    bool setDefaultOutput(AudioDeviceID device) override;
    bool setDefaultSystemOutput(AudioDeviceID device) override;

    /// Of a raised device: its own volume, as it was found.
    std::optional<float> volume(AudioDeviceID device, VolumeElement element) override;
    /// Full scale on a real device raises it, now or when that is safe; true also when it is only
    /// noted. Anything else on a device that was raised gives it back all that was found.
    bool setVolume(AudioDeviceID device, VolumeElement element, float volume) override;
    std::optional<bool> mute(AudioDeviceID device) override;
    bool setMute(AudioDeviceID device, bool muted) override;

    bool listenToDeviceList(Listener listener) override;
    bool listenToDefaultOutput(Listener listener) override;
    bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) override;
    bool listenToMute(AudioDeviceID device, Listener listener) override;

    /// Begins the give-back: nothing is raised from here on. On the guard's own thread every device
    /// gets its own level back; on another one the caller does that through `forRestore`.
    void silenceListeners() override;

  private:
    using State = GuardedDevice::State;
    using Sound = GuardedDevice::Sound;
    using Entry = std::pair<const std::string, GuardedDevice>;

    LoudnessGuard(AudioServer& server, OutputGate* gate, MainQueue* mainQueue, SystemLog* log,
                  RaisedDevicesRecord record, std::function<void()> onRecord);

    // LoudnessGuard.cpp
    void listen();
    AudioServer::Listener whileAlive(void (LoudnessGuard::*work)());
    Entry* find(const std::string& uid);
    bool isStopped() const { return isSilenced_ && !isRestoring_; }
    bool save();

    // LoudnessGuardRaise.cpp
    bool raise(AudioDeviceID id, const std::string& uid, Sound sound);
    Entry* remember(AudioDeviceID id, const std::string& uid);
    void activate(Entry& entry);
    bool isHeldBack(AudioDeviceID id);
    void tryPending();
    void performRaise(AudioDeviceID id, Entry& entry);
    void waitForPending();
    void giveUpPending();
    void lower(AudioDeviceID id, Entry& entry);
    void lowerDefault();
    bool capture(AudioDeviceID virtualDevice);
    void takeOver(AudioDeviceID virtualDevice, AudioDeviceID real, const std::string& uid);
    void closeGateFor(MainQueue::Duration time);

    // LoudnessGuardSession.cpp: how loud the session is, by the virtual device.
    std::optional<DeviceLevel> virtualLevel();
    void setVirtualVolume(float volume);
    void limitVirtualVolume(float limit);
    DeviceLevel sessionLevel(const Entry& entry);
    void protectRaised();
    void listenToVirtualDevice();
    void devicesChanged();
    void defaultChanged();
    void streamsChanged();

    // LoudnessGuardGiveBack.cpp
    bool restoreDevice(AudioDeviceID id, Entry& entry);
    void restoreAll();
    void restoreOrphaned();
    bool restoreDefault(AudioDeviceID id, const std::string& uid);
    bool restoreConfiguredDefault(AudioDeviceID id, const std::string& uid);

    AudioServer& server_;
    OutputGate* gate_;
    MainQueue* mainQueue_;
    SystemLog* log_;
    RaisedDevicesRecord record_;
    const std::function<void()> onRecord_;
    std::map<std::string, GuardedDevice> devices_; ///< by UID
    std::string active_;                           ///< UID of the device that the engine plays to
    bool isPending_ = false;                       ///< the active device waits to be raised
    bool isRestoring_ = false;
    std::uint64_t gateGeneration_ = 0;
    std::uint64_t pendingGeneration_ = 0;
    std::optional<AudioDeviceID> heardVirtualDevice_;
    const std::thread::id thread_ = std::this_thread::get_id();

    std::mutex writing_;                  ///< held around everything that could raise
    std::atomic<bool> isSilenced_{false}; ///< any thread
    Lifetime lifetime_;
};

} // namespace halvo
