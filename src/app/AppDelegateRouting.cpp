#include "app/AppDelegate.h"

#include "app/RealDevices.h"
#include "platform/AudioHardware.h"
#include "platform/MainQueue.h"
#include "platform/StandardOutput.h"
#include "platform/VirtualOutput.h"

#include <chrono>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr MainQueue::Duration kVerificationDelay = 300ms;
constexpr MainQueue::Duration kRetryDelay = 500ms;
constexpr MainQueue::Duration kReassertDelay = 500ms;

std::string retriesLeft(int retries) {
    return "(" + std::to_string(retries) + " left)";
}

} // namespace

void AppDelegate::captureAndSwitchOutput() {
    const auto device = deviceManager_.listedDevice(deviceManager_.defaultDeviceUID.get());
    if (device && isRealDevice(*device)) {
        originalOutputUID_ = device->uid;
    } else {
        originalOutputUID_ = findRealOutputDevice(deviceManager_.outputDevices.get());
    }
    log_.write("Will output to real device: " + originalOutputUID_.value_or("nil"));
    attemptSwitchToVirtual(kSwitchRetries);
}

void AppDelegate::attemptSwitchToVirtual(int retries) {
    if (!makeVirtualDeviceDefault()) {
        if (retries < 1) {
            platform_.standardOutput.print("Halvo: WARNING - Could not switch to Halvo Virtual "
                                           "Output. Is the driver installed?");
        } else {
            retrySwitchLater(retries);
        }
        return;
    }
    platform_.mainQueue.after(kVerificationDelay, [weak = weak_from_this(), retries] {
        if (const auto delegate = weak.lock()) delegate->verifySwitch(retries);
    });
}

bool AppDelegate::makeVirtualDeviceDefault() {
    auto& hardware = platform_.audioHardware;
    const auto device = deviceManager_.audioDeviceID(kVirtualDeviceUID);
    if (!device || !hardware.setDefaultOutput(*device)) return false;
    // The alert output is a courtesy: its result does not matter.
    if (const auto again = deviceManager_.audioDeviceID(kVirtualDeviceUID)) {
        (void)hardware.setDefaultSystemOutput(*again);
    }
    return true;
}

void AppDelegate::retrySwitchLater(int retries) {
    // The line is printed even if the delegate is gone by then; it counts the attempt that failed.
    platform_.mainQueue.after(kRetryDelay, [weak = weak_from_this(),
                                            &output = platform_.standardOutput, retries] {
        output.print("Halvo: setDefaultOutputDevice failed, retrying... " + retriesLeft(retries));
        if (const auto delegate = weak.lock()) delegate->attemptSwitchToVirtual(retries - 1);
    });
}

void AppDelegate::verifySwitch(int retries) {
    auto& output = platform_.standardOutput;
    deviceManager_.refreshDevices();
    if (deviceManager_.defaultDeviceUID.get() == kVirtualDeviceUID) {
        output.print("Halvo: Switched default + system output to Halvo Virtual Output");
    } else if (retries < 1) {
        output.print("Halvo: WARNING - Could not switch to Halvo Virtual Output after retries");
    } else {
        output.print("Halvo: Switch didn't stick, retrying... " + retriesLeft(retries));
        attemptSwitchToVirtual(retries - 1);
    }
}

void AppDelegate::setupAutoSwitch() {
    cancellables_.push_back(
        deviceManager_.defaultDeviceUID.pipe().removeDuplicates().dropFirst().subscribe(
            [weak = weak_from_this()](const std::string& uid) {
                if (const auto delegate = weak.lock()) delegate->followDefaultOutput(uid);
            }));
}

void AppDelegate::followDefaultOutput(const std::string& uid) {
    if (uid != kVirtualDeviceUID) {
        const auto device = deviceManager_.listedDevice(uid);
        if (device && isRealDevice(*device)) moveToRealDevice(*device);
        // By design every change has its own step, and the step keeps the delegate alive.
        platform_.mainQueue.after(kReassertDelay, [self = shared_from_this()] {
            makeDefault(self->platform_.audioHardware, kVirtualDeviceUID);
        });
    }
    applyDeviceBinding(uid);
}

void AppDelegate::moveToRealDevice(const AudioOutputDevice& device) {
    log_.write("Default changed to " + device.name + ", switching engine output");
    originalOutputUID_ = device.uid;
    maxOutDeviceVolume(device.uid);
    rebuildOutputUnit(device.uid);
    // Where this changes the selection, its own handler repeats the two steps above, by design.
    deviceManager_.selectedDeviceID.set(device.uid);
}

void AppDelegate::applyDeviceBinding(const std::string& uid) {
    if (autoGenreController().isEnabled.get()) return;
    if (const auto preset = presetManager_.presetForDevice(uid)) presetManager_.activate(*preset);
}

} // namespace halvo
