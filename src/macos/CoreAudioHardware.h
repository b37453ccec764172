#pragma once

#include "platform/AudioHardware.h"

#include <CoreAudio/CoreAudio.h>

#include <memory>

namespace halvo {

/// Core Audio's devices. Reads and writes from any thread, because SIGTERM's handler makes them
/// too; listeners run on the main queue. For an unknown UID the server may return device 0.
class CoreAudioHardware final : public AudioHardware {
  public:
    CoreAudioHardware();
    /// The server keeps its listeners, but they have no effect any more.
    ~CoreAudioHardware() override;
    CoreAudioHardware(const CoreAudioHardware&) = delete;
    CoreAudioHardware& operator=(const CoreAudioHardware&) = delete;

    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override;
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;

    std::optional<AudioDeviceID> defaultOutput() override;
    bool setDefaultOutput(AudioDeviceID device) override;
    bool setDefaultSystemOutput(AudioDeviceID device) override;

    std::optional<float> volume(AudioDeviceID device, VolumeElement element) override;
    bool setVolume(AudioDeviceID device, VolumeElement element, float volume) override;
    std::optional<bool> mute(AudioDeviceID device) override;
    bool setMute(AudioDeviceID device, bool muted) override;

    bool listenToDeviceList(Listener listener) override;
    bool listenToDefaultOutput(Listener listener) override;
    bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) override;
    bool listenToMute(AudioDeviceID device, Listener listener) override;

    void silenceListeners() override;

  private:
    struct Gate;

    bool listen(AudioObjectID object, const AudioObjectPropertyAddress& address, Listener listener);

    std::shared_ptr<Gate> gate_; ///< shared with the server's blocks, which outlive this
};

} // namespace halvo
