#include "app/AppDelegate.h"

#include "app/RealDevices.h"
#include "platform/AudioHardware.h"
#include "platform/MainQueue.h"
#include "platform/RingLayout.h"
#include "platform/SharedMemory.h"
#include "platform/VirtualOutput.h"

namespace halvo {

void AppDelegate::setupRecovery() {
    cancellables_.push_back(
        deviceManager_.outputDevices.didChange([this](const auto&) { scheduleRecovery(); }));
    cancellables_.push_back(
        platform_.sharedMemory.watch(kRingName, [this] { scheduleRecovery(); }));
}

void AppDelegate::scheduleRecovery() {
    // One turn later, so that whoever follows the same change has done so.
    if (std::exchange(recoveryScheduled_, true)) return;
    platform_.mainQueue.async([weak = weak_from_this()] {
        if (const auto delegate = weak.lock()) delegate->recover();
    });
}

void AppDelegate::recover() {
    recoveryScheduled_ = false;
    recoverEngine();
    recoverRouting();
}

void AppDelegate::recoverRouting() {
    const auto device = deviceManager_.audioDeviceID(kVirtualDeviceUID);
    if (!device || device == monitoredDevice_) return;
    // The virtual device is new, or back after the server was gone: nothing of before holds.
    if (!originalOutputUID_) {
        captureAndSwitchOutput();
    } else if (platform_.audioHardware.defaultOutput() != device) {
        attemptSwitchToVirtual(kSwitchRetries);
    }
    setupVolumeMonitoring();
    if (outputUID_.empty()) return;
    maxOutDeviceVolume(outputUID_);
    rebuildOutputUnit(outputUID_);
}

void AppDelegate::recoverEngine() {
    if (audioEngine_.isRingCurrent()) return;
    const auto uid = preferredOutputUID();
    if (!uid) return;
    audioEngine_.stop();
    if (!audioEngine_.ringBuffer().connect()) return; // still no ring: wait quietly
    startEngine(*uid);
    if (!originalOutputUID_) originalOutputUID_ = uid; // started without any output
    // The ring's rate may be another one now, and coefficients follow only when they are set.
    if (const auto preset = presetManager_.activePreset()) applyPreset(*preset);
}

std::optional<std::string> AppDelegate::preferredOutputUID() const {
    const auto& selected = deviceManager_.selectedDeviceID.get();
    const auto device = deviceManager_.listedDevice(selected);
    if (device && isRealDevice(*device)) return selected;
    if (originalOutputUID_ && deviceManager_.audioDeviceID(*originalOutputUID_)) {
        return originalOutputUID_;
    }
    return findRealOutputDevice(deviceManager_.outputDevices.get());
}

} // namespace halvo
