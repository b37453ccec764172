#pragma once

#include "fake/CallLog.h"
#include "platform/AudioHardware.h"
#include "platform/MainQueue.h"

#include <array>
#include <functional>
#include <map>

namespace halvo {

/// One device of the fake; an absent property cannot be read or set.
struct FakeDevice {
    std::optional<std::string> uid;
    std::optional<std::string> name;
    bool hasOutputStreams = true;
    std::array<std::optional<float>, 3> volumes{1.0F, 1.0F, 1.0F}; ///< by `VolumeElement`
    std::optional<bool> mute = false;
};

/// An audio server in memory. Changes made by the test (`add`, `remove`, `changeDefault`, …) act
/// like other programs: listeners are notified later on the queue.
class FakeAudioHardware final : public AudioHardware {
  public:
    FakeAudioHardware(MainQueue& queue, CallLog& log) : queue_(queue), log_(log) {}

    // Actions of the system and other programs.
    AudioDeviceID add(FakeDevice device);
    AudioDeviceID add(const std::string& uid, const std::string& name);
    void remove(AudioDeviceID device);
    void changeDefault(AudioDeviceID device);
    void changeVolume(AudioDeviceID device, float volume);
    void changeMute(AudioDeviceID device, bool muted);
    FakeDevice& device(AudioDeviceID device) { return devices_.at(device); }

    // How the server misbehaves.
    bool deviceListFails = false;
    int refusedDefaults = 0; ///< so many calls of `setDefaultOutput` fail
    int ignoredDefaults = 0; ///< so many succeed without effect
    bool mainVolumeListenerFails = false;
    std::function<void()> afterNextDefault; ///< the world's, once `setDefaultOutput` has returned

    std::optional<AudioDeviceID> systemOutput() const { return systemOutput_; }
    bool isSilenced() const { return silenced_; }

    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override;
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;
    std::optional<AudioDeviceID> defaultOutput() override;
    bool setDefaultOutput(AudioDeviceID device) override;
    bool setDefaultSystemOutput(AudioDeviceID device) override;
    /// To the first device that is not the virtual one.
    bool releaseDefaultOutput() override;
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
    bool takeDefault(AudioDeviceID device);
    void notify(const std::vector<Listener>& listeners);

    MainQueue& queue_;
    CallLog& log_;
    std::map<AudioDeviceID, FakeDevice> devices_;
    std::vector<AudioDeviceID> order_;
    AudioDeviceID nextID_ = 41;
    std::optional<AudioDeviceID> default_;
    std::optional<AudioDeviceID> systemOutput_;
    bool silenced_ = false;
    std::vector<Listener> listListeners_;
    std::vector<Listener> defaultListeners_;
    std::map<AudioDeviceID, std::vector<Listener>> volumeListeners_;
    std::map<AudioDeviceID, std::vector<Listener>> muteListeners_;
};

} // namespace halvo
