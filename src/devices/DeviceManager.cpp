#include "devices/DeviceManager.h"

#include "platform/MainQueue.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <array>
#include <set>

namespace halvo {

namespace {

// Other programs' virtual devices never count as newly connected. By design not the same list as
// for real devices (app/RealDevices.cpp).
constexpr std::array kIgnoredNames = {"eqMac", "Halvo", "ZoomAudio", "Microsoft Teams", "Immersed"};

bool isIgnored(const std::string& name) {
    return std::ranges::any_of(kIgnoredNames,
                               [&](const char* part) { return name.contains(part); });
}

std::set<std::string> uidsOf(const std::vector<AudioOutputDevice>& devices) {
    std::set<std::string> uids;
    for (const auto& device : devices)
        uids.insert(device.uid);
    return uids;
}

} // namespace

void DeviceManager::refreshDevices() {
    const auto ids = hardware_.deviceIDs();
    if (!ids) return;
    std::vector<AudioOutputDevice> devices;
    for (const auto id : *ids) {
        if (!hardware_.hasOutputStreams(id)) continue;
        // A device without a UID is listed under its number.
        devices.push_back({hardware_.uid(id).value_or(std::to_string(id)),
                           hardware_.name(id).value_or("Unknown")});
    }
    outputDevices.set(std::move(devices));
    updateDefaultDevice();
}

void DeviceManager::updateDefaultDevice() {
    const auto device = hardware_.defaultOutput();
    if (!device) return;
    const auto uid = deviceUID(*device);
    if (!uid) return;
    defaultDeviceUID.set(*uid);
    if (selectedDeviceID.get().empty()) selectedDeviceID.set(*uid);
}

void DeviceManager::installDefaultDeviceListener() {
    // Without this notification, the default is taken as fixed.
    (void)hardware_.listenToDefaultOutput([this, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        queue_.async([this, alive] {
            if (!alive.expired()) updateDefaultDevice();
        });
    });
}

void DeviceManager::installDeviceListListener() {
    (void)hardware_.listenToDeviceList([this, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        queue_.async([this, alive] {
            if (!alive.expired()) handleDeviceListChange();
        });
    });
}

void DeviceManager::handleDeviceListChange() {
    const auto before = uidsOf(outputDevices.get());
    refreshDevices();
    for (const auto& uid : uidsOf(outputDevices.get())) {
        if (before.contains(uid) || uid == kVirtualDeviceUID) continue;
        const auto device = listedDevice(uid);
        if (!device || isIgnored(device->name)) continue;
        newlyConnectedDeviceUID.set(uid);
        selectedDeviceID.set(uid);
        return;
    }
}

std::optional<AudioDeviceID> DeviceManager::audioDeviceID(const std::string& uid) const {
    return hardware_.deviceForUID(uid);
}

std::optional<AudioOutputDevice> DeviceManager::listedDevice(const std::string& uid) const {
    const auto& devices = outputDevices.get();
    const auto found = std::ranges::find(devices, uid, &AudioOutputDevice::uid);
    return found == devices.end() ? std::nullopt : std::optional(*found);
}

std::optional<std::string> DeviceManager::deviceUID(AudioDeviceID device) const {
    return hardware_.uid(device);
}

} // namespace halvo
