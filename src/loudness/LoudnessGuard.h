#pragma once

#include "base/Lifetime.h"
#include "loudness/AudioServer.h"
#include "loudness/DefaultSwitch.h"
#include "loudness/GuardedDevices.h"
#include "loudness/LevelRestorer.h"
#include "loudness/LoudnessSession.h"
#include "loudness/RaisedDevices.h"
#include "loudness/RaisedDevicesRecord.h"
#include "loudness/SettlingDevices.h"
#include "loudness/WriteAccess.h"
#include "platform/MainQueue.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace halvo {

class OutputGate;
class SystemLog;

/// The hardware as the core sees it, made safe for ears: devices are raised to full scale only when
/// nothing plays straight into them, and each gets its own level, balance and mute back at the end.
/// Plain calls go on to the server; `RaisedDevices`, `LevelRestorer` and `DefaultSwitch` do the
/// rest. Main thread, but for `silenceListeners`.
class LoudnessGuard final : public AudioHardware {
  public:
    /// `record` is what is raised; devices that an earlier process left in it are restored as
    /// soon as they are there. `onRecord` is called whenever it has been written with something in
    /// it, ahead of the change itself. What is passed in by reference must outlive the guard.
    LoudnessGuard(AudioServer& server, OutputGate& gate, MainQueue& mainQueue, SystemLog& log,
                  RaisedDevicesRecord record, std::function<void()> onRecord = {});
    ~LoudnessGuard() override;

    /// A guard that raises nothing and goes by the record on disk alone: it restores all devices
    /// at once, and the default when it is told to. It leaves the record to the next start, which
    /// repeats this. Any one thread, with a server connection of its own.
    static std::unique_ptr<LoudnessGuard> forRestore(AudioServer& server,
                                                     RaisedDevicesRecord record);
    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override;
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;

    std::optional<AudioDeviceID> defaultOutput() override;
    /// To the virtual device: it takes over level and mute of the present default first. To another
    /// one, or in its place to the one that was the default before the virtual device, if it is
    /// there: that device gets its own level back first, and a default that nobody had asked for
    /// is not pinned.
    bool setDefaultOutput(AudioDeviceID device) override;
    bool setDefaultSystemOutput(AudioDeviceID device) override;
    /// The last step of a restore: where nothing else has taken the default from the virtual
    /// device, it goes to the one before, or to nobody's choice. False: not done yet.
    bool releaseDefaultOutput() override;

    /// Of a raised device: its own volume, as it was found.
    std::optional<float> volume(AudioDeviceID device, VolumeElement element) override;
    /// Full scale on a real device raises it, now or when that is safe; true also when it is only
    /// noted. Anything else on a device that was raised restores all that was found.
    bool setVolume(AudioDeviceID device, VolumeElement element, float volume) override;
    std::optional<bool> mute(AudioDeviceID device) override;
    bool setMute(AudioDeviceID device, bool muted) override;

    bool listenToDeviceList(Listener listener) override;
    bool listenToDefaultOutput(Listener listener) override;
    bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) override;
    bool listenToMute(AudioDeviceID device, Listener listener) override;

    /// Begins the restore: nothing is raised from here on. On the guard's own thread every device
    /// gets its own level back; on another one the caller does that through `forRestore`.
    void silenceListeners() override;

  private:
    using Sound = GuardedDevice::Sound;

    LoudnessGuard(AudioServer& server, RaisedDevicesRecord record,
                  std::unique_ptr<LoudnessSession> session);

    bool setVirtualVolume(AudioDeviceID device, VolumeElement element, float volume);
    void listen();
    AudioServer::Listener whileRunning(std::function<void()> work);
    void devicesChanged();
    void defaultChanged();
    void settled();
    void listenToVirtualDevice();

    AudioServer& server_;
    RaisedDevicesRecord record_;
    const std::unique_ptr<LoudnessSession> session_; ///< null in a guard that only restores
    WriteAccess access_;
    GuardedDevices devices_;
    SettlingDevices settling_;
    LevelRestorer restorer_;
    std::optional<RaisedDevices> raised_; ///< of the session
    DefaultSwitch defaultSwitch_;
    std::optional<AudioDeviceID> heardVirtualDevice_;
    const std::thread::id thread_ = std::this_thread::get_id();
    Lifetime lifetime_;
};

} // namespace halvo
