#pragma once

#include "platform/AudioHardware.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// A device's own loudness: linear amplitude per channel, and mute.
struct DeviceLevel {
    std::vector<float> channelVolumes;
    bool muted = false;
    /// The port that the level belongs to, such as a card's speakers or its headphones, of which
    /// one plays at a time; empty: the device's only one, or any.
    std::string port = {};

    bool operator==(const DeviceLevel&) const = default;
};

/// Whether the session manager is to keep a level for the device's next appearance.
enum class LevelPersistence { temporary, saved };

/// What a sound server can do beyond `AudioHardware`, for those who keep loudness safe.
/// Main thread, unless said otherwise.
class AudioServer : public AudioHardware {
  public:
    virtual std::optional<DeviceLevel> level(AudioDeviceID device) = 0;
    /// False also for the level of a port that does not play now.
    virtual bool setLevel(AudioDeviceID device, const DeviceLevel& level,
                          LevelPersistence persistence) = 0;

    /// A channel's amplitude on the scale of `volume`, where a server has one of its own.
    virtual float volumeOfAmplitude(AudioDeviceID /*device*/, float amplitude) { return amplitude; }

    /// Called on the main thread when any device plays through another port. The session manager
    /// gives that port its own level, at once or a little later.
    virtual bool listenToPorts(Listener listener) = 0;

    /// Whether programs other than this one play straight into the device.
    virtual bool hasForeignStreams(AudioDeviceID device) = 0;
    /// Called on the main thread when a stream was connected or disconnected anywhere.
    virtual bool listenToStreams(Listener listener) = 0;

    /// The default that a person or program asked for, by UID; nothing when nobody did.
    virtual std::optional<std::string> configuredDefault() = 0;
    /// Asks for a default by UID, for a device that is away, too.
    virtual bool setConfiguredDefault(const std::string& uid) = 0;

    /// Registers a level that the server's own thread gives to the device at once when somebody
    /// makes it the default, before a stream can move there; replaces an earlier registration.
    virtual void protect(const std::string& uid, const DeviceLevel& level) = 0;
    /// Ends that. Any thread.
    virtual void unprotect(const std::string& uid) = 0;
};

} // namespace halvo
