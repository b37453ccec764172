#include "app/RealDevices.h"

#include "devices/DeviceManager.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <array>

namespace halvo {

namespace {

constexpr std::array kExcludedUIDs = {kVirtualDeviceUID, "ZRMOutputCapture"};
// Tested against name and UID. By design not the list that the device manager has for new devices.
constexpr std::array kExcludedParts = {"eqMac",     "Halvo",           "ZRM",
                                       "ZoomAudio", "Microsoft Teams", "Immersed"};

} // namespace

bool isRealDevice(const AudioOutputDevice& device) {
    if (std::ranges::find(kExcludedUIDs, device.uid) != kExcludedUIDs.end()) return false;
    return std::ranges::none_of(kExcludedParts, [&](const char* part) {
        return device.name.contains(part) || device.uid.contains(part);
    });
}

std::optional<std::string> findRealOutputDevice(const std::vector<AudioOutputDevice>& devices) {
    const auto found = std::ranges::find_if(devices, isRealDevice);
    return found == devices.end() ? std::nullopt : std::optional(found->uid);
}

} // namespace halvo
