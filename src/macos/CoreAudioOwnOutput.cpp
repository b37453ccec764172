#include "macos/CoreAudioOwnOutput.h"

#include "macos/CoreAudioProperty.h"
#include "macos/ShortWait.h"

namespace halvo {

namespace {

constexpr auto kIsRunning = CoreAudio::globalAddress(kAudioDevicePropertyDeviceIsRunningSomewhere);
/// Programs that follow the default have moved by then.
constexpr std::chrono::milliseconds kLongestMove{300};

AudioDeviceID deviceOf(AudioUnit unit) {
    AudioDeviceID device = kAudioObjectUnknown;
    UInt32 size = sizeof(device);
    (void)AudioUnitGetProperty(unit, kAudioOutputUnitProperty_CurrentDevice, kAudioUnitScope_Global,
                               0, &device, &size); // stays unknown, and then plays into none
    return device;
}

} // namespace

bool isRunningSomewhere(AudioDeviceID device) {
    return CoreAudio::read<UInt32>(device, kIsRunning).value_or(0) != 0;
}

void CoreAudioOwnOutput::willStart(AudioUnit unit) {
    if (unit == unit_) return; // plays already, and would find itself
    unit_ = unit;
    device_ = deviceOf(unit);
    isShared_ = isRunningSomewhere(device_);
}

void CoreAudioOwnOutput::didStop(AudioUnit unit) {
    if (unit == unit_) unit_ = nullptr;
}

void CoreAudioOwnOutput::lookAgain(AudioDeviceID device) {
    const auto isIdle = [device] { return !isRunningSomewhere(device); };
    if (!playsInto(device)) {
        (void)waitShortly(isIdle, kLongestMove); // what plays on was put there
        return;
    }
    if (!isShared_) return;
    (void)AudioOutputUnitStop(unit_); // where it cannot, the device stays shared
    isShared_ = !waitShortly(isIdle, kLongestMove);
    (void)AudioOutputUnitStart(unit_); // ran a moment ago
}

} // namespace halvo
