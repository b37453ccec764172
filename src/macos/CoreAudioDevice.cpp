#include "macos/CoreAudioDevice.h"

#include "app/RealDevices.h"
#include "macos/CoreAudioProperty.h"
#include "macos/CoreFoundation.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <cctype>

namespace halvo::CoreAudioDevice {

namespace {

using CoreAudio::globalAddress;
using CoreAudio::outputAddress;

constexpr auto kDevices = globalAddress(kAudioHardwarePropertyDevices);
constexpr auto kDefaultOutput = globalAddress(kAudioHardwarePropertyDefaultOutputDevice);
constexpr auto kDeviceForUID = globalAddress(kAudioHardwarePropertyTranslateUIDToDevice);
constexpr auto kName = globalAddress(kAudioObjectPropertyName);
constexpr auto kUID = globalAddress(kAudioDevicePropertyDeviceUID);
constexpr auto kTransport = globalAddress(kAudioDevicePropertyTransportType);
constexpr auto kSubDevices = globalAddress(kAudioAggregateDevicePropertyActiveSubDeviceList);
constexpr auto kStreams = outputAddress(kAudioDevicePropertyStreams);
constexpr auto kDataSource = outputAddress(kAudioDevicePropertyDataSource);
constexpr auto kCanBeDefault = outputAddress(kAudioDevicePropertyDeviceCanBeDefaultDevice);

std::optional<AudioDeviceID> known(std::optional<AudioDeviceID> device) {
    return device == kAudioObjectUnknown ? std::nullopt : device;
}

std::string textOfCode(UInt32 code) {
    std::string text;
    for (const int shift : {24, 16, 8, 0})
        text.push_back(static_cast<char>(code >> shift & 0xFFU));
    const bool isPrintable = std::ranges::all_of(
        text, [](char c) { return std::isprint(static_cast<unsigned char>(c)) != 0; });
    return isPrintable ? text : std::to_string(code);
}

/// How far down the list of candidates a device stands; nothing for one that is none.
std::optional<int> rank(AudioDeviceID device) {
    const auto uid = CoreAudioDevice::uid(device);
    if (!uid || *uid == kVirtualDeviceUID || !hasOutputStreams(device)) return std::nullopt;
    if (CoreAudio::read<UInt32>(device, kCanBeDefault) == UInt32{0}) return std::nullopt;
    if (!isRealDevice({*uid, name(device).value_or("")})) return 3;
    switch (
        CoreAudio::read<UInt32>(device, kTransport).value_or(kAudioDeviceTransportTypeUnknown)) {
    case kAudioDeviceTransportTypeBuiltIn:
        return 0;
    case kAudioDeviceTransportTypeVirtual:
    case kAudioDeviceTransportTypeAggregate:
    case kAudioDeviceTransportTypeAutoAggregate:
        return 2;
    default:
        return 1;
    }
}

} // namespace

std::optional<std::vector<AudioDeviceID>> all() {
    return CoreAudio::readList<AudioDeviceID>(kAudioObjectSystemObject, kDevices);
}

std::optional<AudioDeviceID> forUID(const std::string& uid) {
    const auto text = makeCFString(uid);
    if (!text) return std::nullopt;
    AudioDeviceID device = kAudioObjectUnknown;
    const auto taken = CoreAudio::readBytes(kAudioObjectSystemObject, kDeviceForUID, &device,
                                            sizeof(device), text.get());
    return taken ? known(device) : std::nullopt;
}

std::optional<AudioDeviceID> defaultOutput() {
    return known(CoreAudio::read<AudioDeviceID>(kAudioObjectSystemObject, kDefaultOutput));
}

bool hasOutputStreams(AudioDeviceID device) {
    return CoreAudio::sizeOf(device, kStreams).value_or(0) > 0;
}

std::optional<std::string> name(AudioDeviceID device) {
    return CoreAudio::readText(device, kName);
}

std::optional<std::string> uid(AudioDeviceID device) {
    return CoreAudio::readText(device, kUID);
}

std::string port(AudioDeviceID device) {
    if (!CoreAudio::has(device, kDataSource)) return {};
    const auto source = CoreAudio::read<UInt32>(device, kDataSource);
    return source ? textOfCode(*source) : std::string();
}

std::vector<AudioDeviceID> withSubDevices(AudioDeviceID device) {
    std::vector<AudioDeviceID> devices{device};
    if (!CoreAudio::has(device, kSubDevices)) return devices;
    const auto parts = CoreAudio::readList<AudioDeviceID>(device, kSubDevices);
    if (parts) devices.insert(devices.end(), parts->begin(), parts->end());
    return devices;
}

std::optional<AudioDeviceID> naturalOutput() {
    std::optional<AudioDeviceID> best;
    std::optional<int> bestRank;
    for (const auto device : all().value_or(std::vector<AudioDeviceID>{})) {
        const auto found = rank(device);
        if (!found || (bestRank && *bestRank <= *found)) continue;
        best = device;
        bestRank = found;
    }
    return best;
}

} // namespace halvo::CoreAudioDevice
