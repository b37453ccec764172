#include "macos/CoreAudioHardware.h"

#include "macos/CoreFoundation.h"

#include <dispatch/dispatch.h>
#include <mutex>
#include <utility>

namespace halvo {

namespace {

using Address = AudioObjectPropertyAddress;

constexpr Address globalAddress(AudioObjectPropertySelector selector) {
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

constexpr Address outputAddress(AudioObjectPropertySelector selector,
                                VolumeElement element = VolumeElement::main) {
    return {selector, kAudioObjectPropertyScopeOutput,
            static_cast<AudioObjectPropertyElement>(element)};
}

constexpr Address kDevices = globalAddress(kAudioHardwarePropertyDevices);
constexpr Address kDefaultOutput = globalAddress(kAudioHardwarePropertyDefaultOutputDevice);
constexpr Address kDefaultSystemOutput =
    globalAddress(kAudioHardwarePropertyDefaultSystemOutputDevice);
constexpr Address kDeviceForUID = globalAddress(kAudioHardwarePropertyTranslateUIDToDevice);
constexpr Address kName = globalAddress(kAudioObjectPropertyName);
constexpr Address kUID = globalAddress(kAudioDevicePropertyDeviceUID);
constexpr Address kStreams = outputAddress(kAudioDevicePropertyStreams);
constexpr Address kMute = outputAddress(kAudioDevicePropertyMute);

constexpr Address volumeAddress(VolumeElement element) {
    return outputAddress(kAudioDevicePropertyVolumeScalar, element);
}

std::optional<UInt32> sizeOf(AudioObjectID object, const Address& address) {
    UInt32 size = 0;
    const auto status = AudioObjectGetPropertyDataSize(object, &address, 0, nullptr, &size);
    return status == kAudioHardwareNoError ? std::optional(size) : std::nullopt;
}

template <typename Value> std::optional<Value> read(AudioObjectID object, const Address& address) {
    Value value{};
    UInt32 size = sizeof(Value);
    const auto status = AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, &value);
    return status == kAudioHardwareNoError ? std::optional(value) : std::nullopt;
}

std::optional<std::string> readText(AudioObjectID object, const Address& address) {
    const CFHandle<CFStringRef> text(read<CFStringRef>(object, address).value_or(nullptr));
    return textOf(text.get());
}

template <typename Value>
bool write(AudioObjectID object, const Address& address, const Value& value) {
    return AudioObjectSetPropertyData(object, &address, 0, nullptr, sizeof(Value), &value) ==
           kAudioHardwareNoError;
}

} // namespace

struct CoreAudioHardware::Gate {
    std::recursive_mutex lock; ///< a listener may call `silenceListeners`
    bool open = true;
};

CoreAudioHardware::CoreAudioHardware() : gate_(std::make_shared<Gate>()) {}

CoreAudioHardware::~CoreAudioHardware() {
    const std::scoped_lock lock(gate_->lock);
    gate_->open = false;
}

std::optional<std::vector<AudioDeviceID>> CoreAudioHardware::deviceIDs() {
    const auto size = sizeOf(kAudioObjectSystemObject, kDevices);
    if (!size) return std::nullopt;
    std::vector<AudioDeviceID> devices(*size / sizeof(AudioDeviceID));
    auto taken = static_cast<UInt32>(devices.size() * sizeof(AudioDeviceID));
    if (AudioObjectGetPropertyData(kAudioObjectSystemObject, &kDevices, 0, nullptr, &taken,
                                   devices.data()) != kAudioHardwareNoError) {
        return std::nullopt;
    }
    devices.resize(taken / sizeof(AudioDeviceID)); // may be fewer than at the first call
    return devices;
}

bool CoreAudioHardware::hasOutputStreams(AudioDeviceID device) {
    return sizeOf(device, kStreams).value_or(0) > 0;
}

std::optional<std::string> CoreAudioHardware::name(AudioDeviceID device) {
    return readText(device, kName);
}

std::optional<std::string> CoreAudioHardware::uid(AudioDeviceID device) {
    return readText(device, kUID);
}

std::optional<AudioDeviceID> CoreAudioHardware::deviceForUID(const std::string& uid) {
    const auto text = makeCFString(uid);
    if (!text) return std::nullopt;
    CFStringRef const qualifier = text.get();
    AudioDeviceID device = kAudioObjectUnknown;
    UInt32 size = sizeof(device);
    const auto status = AudioObjectGetPropertyData(kAudioObjectSystemObject, &kDeviceForUID,
                                                   sizeof(qualifier), &qualifier, &size, &device);
    return status == kAudioHardwareNoError ? std::optional(device) : std::nullopt;
}

std::optional<AudioDeviceID> CoreAudioHardware::defaultOutput() {
    return read<AudioDeviceID>(kAudioObjectSystemObject, kDefaultOutput);
}

bool CoreAudioHardware::setDefaultOutput(AudioDeviceID device) {
    return write(kAudioObjectSystemObject, kDefaultOutput, device);
}

bool CoreAudioHardware::setDefaultSystemOutput(AudioDeviceID device) {
    return write(kAudioObjectSystemObject, kDefaultSystemOutput, device);
}

std::optional<float> CoreAudioHardware::volume(AudioDeviceID device, VolumeElement element) {
    return read<Float32>(device, volumeAddress(element));
}

bool CoreAudioHardware::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    return write<Float32>(device, volumeAddress(element), volume);
}

std::optional<bool> CoreAudioHardware::mute(AudioDeviceID device) {
    const auto muted = read<UInt32>(device, kMute);
    return muted ? std::optional(*muted != 0) : std::nullopt;
}

bool CoreAudioHardware::setMute(AudioDeviceID device, bool muted) {
    return write<UInt32>(device, kMute, muted ? 1 : 0);
}

bool CoreAudioHardware::listenToDeviceList(Listener listener) {
    return listen(kAudioObjectSystemObject, kDevices, std::move(listener));
}

bool CoreAudioHardware::listenToDefaultOutput(Listener listener) {
    return listen(kAudioObjectSystemObject, kDefaultOutput, std::move(listener));
}

bool CoreAudioHardware::listenToVolume(AudioDeviceID device, VolumeElement element,
                                       Listener listener) {
    return listen(device, volumeAddress(element), std::move(listener));
}

bool CoreAudioHardware::listenToMute(AudioDeviceID device, Listener listener) {
    return listen(device, kMute, std::move(listener));
}

bool CoreAudioHardware::listen(AudioObjectID object, const Address& address, Listener listener) {
    const auto gate = gate_;
    const auto notify = std::make_shared<const Listener>(std::move(listener));
    // The server copies the block and keeps it: listeners are never removed.
    const auto status = AudioObjectAddPropertyListenerBlock(
        object, &address, dispatch_get_main_queue(), ^(UInt32, const Address*) {
          const std::scoped_lock lock(gate->lock);
          if (gate->open) (*notify)();
        });
    return status == kAudioHardwareNoError;
}

void CoreAudioHardware::silenceListeners() {
    const std::scoped_lock lock(gate_->lock); // waits for one that runs
    gate_->open = false;
}

} // namespace halvo
