#pragma once

#include "loudness/AudioServer.h"
#include "macos/CoreAudioLevels.h"
#include "macos/CoreAudioListWatch.h"
#include "macos/CoreAudioListeners.h"
#include "macos/CoreAudioOwnOutput.h"
#include "macos/CoreAudioProtection.h"

#include <memory>
#include <vector>

namespace halvo {

/// Core Audio's devices. Listeners run on the main queue, and all else on the main thread or any
/// one thread in its place. `volume` is on the device's own scale, while levels are amplitudes.
class CoreAudioHardware final : public AudioServer {
  public:
    /// `own` is what this process plays; it must outlive this.
    explicit CoreAudioHardware(CoreAudioOwnOutput& own) : own_(own) {}
    ~CoreAudioHardware() override;
    CoreAudioHardware(const CoreAudioHardware&) = delete;
    CoreAudioHardware& operator=(const CoreAudioHardware&) = delete;

    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override;
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    /// Nothing where the server translates an unknown UID to device 0.
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;

    std::optional<AudioDeviceID> defaultOutput() override;
    /// Waits until it is the default, at most 0.2 s; before macOS 14.2 also until the former one is
    /// idle, at most 0.3 s.
    bool setDefaultOutput(AudioDeviceID device) override;
    bool setDefaultSystemOutput(AudioDeviceID device) override;
    /// The system makes no choice by itself while the virtual device is there: to the built-in
    /// output, else another real one.
    bool releaseDefaultOutput() override;

    std::optional<float> volume(AudioDeviceID device, VolumeElement element) override;
    bool setVolume(AudioDeviceID device, VolumeElement element, float volume) override;
    std::optional<bool> mute(AudioDeviceID device) override;
    bool setMute(AudioDeviceID device, bool muted) override;

    bool listenToDeviceList(Listener listener) override;
    bool listenToDefaultOutput(Listener listener) override;
    /// `main` of a device that has none stands for its first channel.
    bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) override;
    bool listenToMute(AudioDeviceID device, Listener listener) override;
    void silenceListeners() override;

    std::optional<DeviceLevel> level(AudioDeviceID device) override;
    /// The system keeps every level for the device's next appearance.
    bool setLevel(AudioDeviceID device, const DeviceLevel& level,
                  LevelPersistence persistence) override;
    float volumeOfAmplitude(AudioDeviceID device, float amplitude) override;
    bool listenToPorts(Listener listener) override;

    bool hasForeignStreams(AudioDeviceID device) override;
    bool listenToStreams(Listener listener) override;

    /// There is one notion only: the present default.
    std::optional<std::string> configuredDefault() override;
    /// A device that is away cannot be asked for: then as `releaseDefaultOutput`.
    bool setConfiguredDefault(const std::string& uid) override;

    void protect(const std::string& uid, const DeviceLevel& level) override;
    void unprotect(const std::string& uid) override;

  private:
    bool watch(const CoreAudio::Address& list, std::vector<CoreAudio::Address> properties,
               const Listener& changed);

    CoreAudioOwnOutput& own_;
    const std::shared_ptr<CoreAudioLevels> levels_ = std::make_shared<CoreAudioLevels>();
    CoreAudioProtection protection_{levels_};
    CoreAudioListeners listeners_;
    std::vector<std::unique_ptr<CoreAudioListWatch>> watches_;
};

} // namespace halvo
