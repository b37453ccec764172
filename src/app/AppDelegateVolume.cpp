#include "app/AppDelegate.h"

#include "base/NumberText.h"
#include "platform/AudioHardware.h"
#include "platform/MainQueue.h"
#include "platform/StandardOutput.h"
#include "platform/VirtualOutput.h"

namespace halvo {

namespace {

std::optional<float> readVolume(AudioHardware& hardware, AudioDeviceID device) {
    const auto volume = hardware.volume(device, VolumeElement::main);
    return volume ? volume : hardware.volume(device, VolumeElement::left);
}

} // namespace

void AppDelegate::maxOutDeviceVolume(const std::string& uid) {
    const auto device = deviceManager_.audioDeviceID(uid);
    if (!device) return;
    auto& hardware = platform_.audioHardware;
    const auto found = readVolume(hardware, *device);
    if (found) originalRealVolume_ = found;
    const float volume = found.value_or(1.0F);
    // The record first: a crash after the raise must find it.
    saveDirtySession(uid, volume);
    for (const auto element : {VolumeElement::main, VolumeElement::left, VolumeElement::right}) {
        (void)hardware.setVolume(*device, element, 1.0F); // it may have only some of them
    }
    (void)hardware.setMute(*device, false);
    platform_.standardOutput.print("Halvo: Saved real device volume " + numberText(volume) +
                                   ", set to max");
}

void AppDelegate::setupVolumeMonitoring() {
    const auto device = deviceManager_.audioDeviceID(kVirtualDeviceUID);
    if (!device) {
        platform_.standardOutput.print("Halvo: Can't find virtual device for volume monitoring");
        return;
    }
    monitoredDevice_ = device;
    readAndApplyVolume(*device);
    const auto listener = [weak = weak_from_this(), &queue = platform_.mainQueue,
                           device = *device] {
        queue.async([weak, device] {
            if (const auto delegate = weak.lock()) delegate->readAndApplyVolume(device);
        });
    };
    auto& hardware = platform_.audioHardware;
    if (!hardware.listenToVolume(*device, VolumeElement::main, listener)) {
        (void)hardware.listenToVolume(*device, VolumeElement::left, listener);
    }
    (void)hardware.listenToMute(*device, listener); // without mute there is just the volume
}

void AppDelegate::readAndApplyVolume(AudioDeviceID device) {
    auto& hardware = platform_.audioHardware;
    auto volume = readVolume(hardware, device);
    if (!volume) return;
    if (hardware.mute(device).value_or(false)) volume = 0.0F;
    // Never back to the device: a mute, which reads as 0, would overwrite the level beneath it.
    isApplyingVolume_ = true;
    presetManager_.setOutputVolume(*volume);
    isApplyingVolume_ = false;
    audioEngine_.setOutputVolume(*volume);
}

void AppDelegate::followOwnVolume() {
    cancellables_.push_back(presetManager_.outputVolume.didChange([this](float volume) {
        if (!isApplyingVolume_) writeVolume(volume);
    }));
}

void AppDelegate::writeVolume(float volume) {
    auto& hardware = platform_.audioHardware;
    const auto device = deviceManager_.audioDeviceID(kVirtualDeviceUID);
    if (!device) return; // a device that comes later brings its own
    if (!hardware.setVolume(*device, VolumeElement::main, volume)) {
        (void)hardware.setVolume(*device, VolumeElement::left, volume);
        (void)hardware.setVolume(*device, VolumeElement::right, volume);
    }
    if (volume > 0 && hardware.mute(*device).value_or(false)) {
        (void)hardware.setMute(*device, false);
    }
}

} // namespace halvo
