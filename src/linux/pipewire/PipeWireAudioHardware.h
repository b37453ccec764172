#pragma once

#include "linux/pipewire/PipeWireListeners.h"
#include "linux/pipewire/PipeWireObserver.h"
#include "linux/pipewire/PipeWireParams.h"
#include "loudness/AudioServer.h"
#include "platform/MainQueue.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class PipeWireConnection;
class PipeWireNode;

/// The sinks of a PipeWire server as devices. A device's ID is its serial number, its UID the name
/// of its node, so a device that is removed and added again has a new ID and the same UID.
///
/// Main thread, or any one thread in its place. A write waits for its effect, at most 0.2 s
/// (default) or 0.6 s (levels).
class PipeWireAudioHardware final : public AudioServer, private PipeWireObserver {
  public:
    /// Both must outlive this object.
    PipeWireAudioHardware(PipeWireConnection& connection, MainQueue& mainQueue);
    ~PipeWireAudioHardware() override;

    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override;
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;

    std::optional<AudioDeviceID> defaultOutput() override;
    bool setDefaultOutput(AudioDeviceID device) override;
    /// PipeWire has none: true when the device exists.
    bool setDefaultSystemOutput(AudioDeviceID device) override;
    bool releaseDefaultOutput() override;

    /// `main` is the loudest channel; more than 1 is read as 1. A mono device has no `right`.
    std::optional<float> volume(AudioDeviceID device, VolumeElement element) override;
    /// `main` sets every channel. The session manager does not save it.
    bool setVolume(AudioDeviceID device, VolumeElement element, float volume) override;
    std::optional<bool> mute(AudioDeviceID device) override;
    bool setMute(AudioDeviceID device, bool muted) override;

    bool listenToDeviceList(Listener listener) override;
    bool listenToDefaultOutput(Listener listener) override;
    bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) override;
    bool listenToMute(AudioDeviceID device, Listener listener) override;
    /// Waits for a running listener, 0.7 s at most.
    void silenceListeners() override;

    std::optional<DeviceLevel> level(AudioDeviceID device) override;
    bool setLevel(AudioDeviceID device, const DeviceLevel& level,
                  LevelPersistence persistence) override;

    bool hasForeignStreams(AudioDeviceID device) override;
    bool listenToPorts(Listener listener) override;
    bool listenToStreams(Listener listener) override;

    std::optional<std::string> configuredDefault() override;
    bool setConfiguredDefault(const std::string& uid) override;

    void protect(const std::string& uid, const DeviceLevel& level) override;
    void unprotect(const std::string& uid) override;

  private:
    void serverConnected() override;
    void serverDisconnected() override;
    void devicesChanged() override;
    void defaultsChanged() override;
    void volumeChanged(AudioDeviceID device) override;
    void muteChanged(AudioDeviceID device) override;
    void portChanged() override;
    void streamsChanged() override;

    bool configureDefault(const std::optional<std::string>& uid);
    /// Null while disconnected. With the connection's lock.
    const PipeWireNode* device(AudioDeviceID device) const;
    bool writeLevel(AudioDeviceID device, LevelUpdate update, LevelPersistence persistence,
                    const std::string& port = {});
    void applyProtection(const std::string& uid);

    PipeWireConnection& connection_;
    PipeWireListeners listeners_;
    // With the connection's lock.
    std::map<std::string, DeviceLevel> protectedLevels_;
    std::optional<std::string> seenCurrent_;
    std::optional<std::string> seenConfigured_;
    std::vector<AudioDeviceID> seenDevices_;
};

} // namespace halvo
