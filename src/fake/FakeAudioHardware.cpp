#include "fake/FakeAudioHardware.h"

#include "base/NumberText.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <utility>

namespace halvo {

namespace {

std::size_t index(VolumeElement element) {
    return static_cast<std::size_t>(element);
}

} // namespace

AudioDeviceID FakeAudioHardware::add(FakeDevice device) {
    const AudioDeviceID id = nextID_++;
    devices_[id] = std::move(device);
    order_.push_back(id);
    notify(listListeners_);
    return id;
}

AudioDeviceID FakeAudioHardware::add(const std::string& uid, const std::string& name) {
    FakeDevice device;
    device.uid = uid;
    device.name = name;
    return add(std::move(device));
}

void FakeAudioHardware::remove(AudioDeviceID device) {
    devices_.erase(device);
    std::erase(order_, device);
    if (default_ == device) default_.reset();
    notify(listListeners_);
}

void FakeAudioHardware::changeDefault(AudioDeviceID device) {
    default_ = device;
    notify(defaultListeners_);
}

void FakeAudioHardware::changeVolume(AudioDeviceID device, float volume) {
    for (auto& element : devices_.at(device).volumes) {
        if (element) element = volume;
    }
    notify(volumeListeners_[device]);
}

void FakeAudioHardware::changeMute(AudioDeviceID device, bool muted) {
    devices_.at(device).mute = muted;
    notify(muteListeners_[device]);
}

std::optional<std::vector<AudioDeviceID>> FakeAudioHardware::deviceIDs() {
    if (deviceListFails) return std::nullopt;
    return order_;
}

bool FakeAudioHardware::hasOutputStreams(AudioDeviceID device) {
    return devices_.contains(device) && devices_.at(device).hasOutputStreams;
}

std::optional<std::string> FakeAudioHardware::name(AudioDeviceID device) {
    if (!devices_.contains(device)) return std::nullopt;
    return devices_.at(device).name;
}

std::optional<std::string> FakeAudioHardware::uid(AudioDeviceID device) {
    if (!devices_.contains(device)) return std::nullopt;
    return devices_.at(device).uid;
}

std::optional<AudioDeviceID> FakeAudioHardware::deviceForUID(const std::string& uid) {
    const auto found = std::ranges::find_if(
        order_, [&](AudioDeviceID device) { return devices_.at(device).uid == uid; });
    if (found == order_.end()) return std::nullopt;
    return *found;
}

std::optional<AudioDeviceID> FakeAudioHardware::defaultOutput() {
    return default_;
}

bool FakeAudioHardware::setDefaultOutput(AudioDeviceID device) {
    log_.add("setDefaultOutput " + uid(device).value_or("?"));
    const bool isTaken = takeDefault(device);
    if (const auto change = std::exchange(afterNextDefault, nullptr)) change();
    return isTaken;
}

bool FakeAudioHardware::takeDefault(AudioDeviceID device) {
    if (!devices_.contains(device)) return false;
    if (refusedDefaults > 0) {
        --refusedDefaults;
        return false;
    }
    if (ignoredDefaults > 0) {
        --ignoredDefaults;
        return true;
    }
    if (default_ != device) changeDefault(device);
    return true;
}

bool FakeAudioHardware::setDefaultSystemOutput(AudioDeviceID device) {
    log_.add("setDefaultSystemOutput " + uid(device).value_or("?"));
    if (!devices_.contains(device)) return false;
    systemOutput_ = device;
    return true;
}

bool FakeAudioHardware::releaseDefaultOutput() {
    log_.add("releaseDefaultOutput");
    const auto real = std::ranges::find_if(order_, [this](AudioDeviceID device) {
        return hasOutputStreams(device) && uid(device) != kVirtualDeviceUID;
    });
    if (real != order_.end()) changeDefault(*real);
    return true;
}

std::optional<float> FakeAudioHardware::volume(AudioDeviceID device, VolumeElement element) {
    if (!devices_.contains(device)) return std::nullopt;
    return devices_.at(device).volumes[index(element)];
}

bool FakeAudioHardware::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    log_.add("setVolume " + uid(device).value_or("?") + " " + std::to_string(index(element)) + " " +
             numberText(volume));
    if (!devices_.contains(device)) return false;
    auto& stored = devices_.at(device).volumes[index(element)];
    if (!stored) return false;
    stored = volume;
    notify(volumeListeners_[device]);
    return true;
}

std::optional<bool> FakeAudioHardware::mute(AudioDeviceID device) {
    if (!devices_.contains(device)) return std::nullopt;
    return devices_.at(device).mute;
}

bool FakeAudioHardware::setMute(AudioDeviceID device, bool muted) {
    log_.add("setMute " + uid(device).value_or("?") + (muted ? " on" : " off"));
    if (!devices_.contains(device) || !devices_.at(device).mute) return false;
    devices_.at(device).mute = muted;
    notify(muteListeners_[device]);
    return true;
}

bool FakeAudioHardware::listenToDeviceList(Listener listener) {
    listListeners_.push_back(std::move(listener));
    return true;
}

bool FakeAudioHardware::listenToDefaultOutput(Listener listener) {
    defaultListeners_.push_back(std::move(listener));
    return true;
}

bool FakeAudioHardware::listenToVolume(AudioDeviceID device, VolumeElement element,
                                       Listener listener) {
    log_.add("listenToVolume " + uid(device).value_or("?") + " " + std::to_string(index(element)));
    if (!devices_.contains(device)) return false;
    if (element == VolumeElement::main && mainVolumeListenerFails) return false;
    volumeListeners_[device].push_back(std::move(listener));
    return true;
}

bool FakeAudioHardware::listenToMute(AudioDeviceID device, Listener listener) {
    if (!devices_.contains(device)) return false;
    muteListeners_[device].push_back(std::move(listener));
    return true;
}

void FakeAudioHardware::silenceListeners() {
    log_.add("silenceListeners");
    silenced_ = true;
}

void FakeAudioHardware::notify(const std::vector<Listener>& listeners) {
    for (const auto& listener : listeners) {
        queue_.async([this, listener] {
            if (!silenced_) listener();
        });
    }
}

} // namespace halvo
