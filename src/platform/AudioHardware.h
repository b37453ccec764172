#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

using AudioDeviceID = std::uint32_t;

/// Which part of a device a volume belongs to: all channels together, or one of the first two.
enum class VolumeElement : std::uint8_t { main = 0, left = 1, right = 2 };

/// The audio server's devices and its routing. Main thread only, unless a back end says otherwise.
///
/// Reads return nothing, and writes false, when the server refuses or is not running. The next read
/// sees a write that returned true. Volumes go from 0 to 1: linear amplitudes, but for the real
/// devices of a server with another scale.
class AudioHardware {
  public:
    /// Called on the main thread, never inside one of the calls below.
    using Listener = std::function<void()>;

    virtual ~AudioHardware() = default;

    /// Every device, inputs included, in the server's order.
    virtual std::optional<std::vector<AudioDeviceID>> deviceIDs() = 0;
    virtual bool hasOutputStreams(AudioDeviceID device) = 0;
    virtual std::optional<std::string> name(AudioDeviceID device) = 0;
    /// The persistent identity of a device.
    virtual std::optional<std::string> uid(AudioDeviceID device) = 0;
    virtual std::optional<AudioDeviceID> deviceForUID(const std::string& uid) = 0;

    virtual std::optional<AudioDeviceID> defaultOutput() = 0;
    virtual bool setDefaultOutput(AudioDeviceID device) = 0;
    /// The device for alert sounds. On a server without one, setting it succeeds if the device
    /// exists.
    virtual bool setDefaultSystemOutput(AudioDeviceID device) = 0;
    /// Takes back what was asked for as the default output: the system chooses among the real
    /// devices. True when it has, or when there is none.
    virtual bool releaseDefaultOutput() = 0;

    virtual std::optional<float> volume(AudioDeviceID device, VolumeElement element) = 0;
    virtual bool setVolume(AudioDeviceID device, VolumeElement element, float volume) = 0;
    virtual std::optional<bool> mute(AudioDeviceID device) = 0;
    virtual bool setMute(AudioDeviceID device, bool muted) = 0;

    // Listeners stay until the process ends or `silenceListeners`.
    virtual bool listenToDeviceList(Listener listener) = 0;
    virtual bool listenToDefaultOutput(Listener listener) = 0;
    virtual bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) = 0;
    virtual bool listenToMute(AudioDeviceID device, Listener listener) = 0;

    /// Once this returns, no listener runs again. Called before the system's own routing is
    /// restored, so that nothing reacts to those changes. Any thread.
    virtual void silenceListeners() = 0;
};

} // namespace halvo
