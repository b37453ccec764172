#include "macos/CoreAudioProcesses.h"

#include "macos/CoreAudioDevice.h"
#include "macos/CoreAudioProperty.h"

#include <algorithm>
#include <unistd.h>

namespace halvo::CoreAudioProcesses {

namespace {

using CoreAudio::globalAddress;
using CoreAudio::outputAddress;

constexpr auto kProcesses = globalAddress(kAudioHardwarePropertyProcessObjectList);
constexpr auto kPID = globalAddress(kAudioProcessPropertyPID);
constexpr auto kPlays = globalAddress(kAudioProcessPropertyIsRunningOutput);
constexpr auto kOutputDevices = outputAddress(kAudioProcessPropertyDevices);
constexpr auto kDevices = globalAddress(kAudioProcessPropertyDevices);

std::vector<AudioDeviceID> devicesOf(AudioObjectID process) {
    const auto& address = CoreAudio::has(process, kOutputDevices) ? kOutputDevices : kDevices;
    return CoreAudio::readList<AudioDeviceID>(process, address)
        .value_or(std::vector<AudioDeviceID>{});
}

bool playsInto(AudioObjectID process, AudioDeviceID device) {
    if (CoreAudio::read<UInt32>(process, kPlays).value_or(0) == 0) return false;
    if (CoreAudio::read<pid_t>(process, kPID) == ::getpid()) return false;
    return std::ranges::any_of(devicesOf(process), [device](AudioDeviceID used) {
        const auto parts = CoreAudioDevice::withSubDevices(used);
        return std::ranges::find(parts, device) != parts.end();
    });
}

} // namespace

std::optional<bool> playInto(AudioDeviceID device) {
    if (!CoreAudio::has(kAudioObjectSystemObject, kProcesses)) return std::nullopt;
    const auto processes = CoreAudio::readList<AudioObjectID>(kAudioObjectSystemObject, kProcesses);
    if (!processes) return std::nullopt;
    return std::ranges::any_of(
        *processes, [device](AudioObjectID process) { return playsInto(process, device); });
}

CoreAudio::Address list() {
    return kProcesses;
}

std::vector<CoreAudio::Address> properties() {
    return {kPlays, kOutputDevices, kDevices};
}

} // namespace halvo::CoreAudioProcesses
