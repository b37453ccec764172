#include "macos/CoreAudioHardware.h"

#include "macos/CoreAudioDevice.h"
#include "macos/CoreAudioLevel.h"
#include "macos/CoreAudioProcesses.h"
#include "macos/CoreAudioProperty.h"
#include "macos/ShortWait.h"
#include "platform/VirtualOutput.h"

#include <utility>

namespace halvo {

namespace {

using CoreAudio::globalAddress;
using CoreAudio::outputAddress;

constexpr AudioObjectID kSystem = kAudioObjectSystemObject;
constexpr auto kDevices = globalAddress(kAudioHardwarePropertyDevices);
constexpr auto kDefaultOutput = globalAddress(kAudioHardwarePropertyDefaultOutputDevice);
constexpr auto kDefaultSystemOutput =
    globalAddress(kAudioHardwarePropertyDefaultSystemOutputDevice);
constexpr auto kIsRunning = globalAddress(kAudioDevicePropertyDeviceIsRunningSomewhere);
constexpr auto kDataSource = outputAddress(kAudioDevicePropertyDataSource);
constexpr auto kMute = outputAddress(kAudioDevicePropertyMute);

constexpr std::chrono::milliseconds kLongestWrite{200};

constexpr CoreAudio::Address volumeAddress(VolumeElement element) {
    return outputAddress(kAudioDevicePropertyVolumeScalar,
                         static_cast<AudioObjectPropertyElement>(element));
}

} // namespace

CoreAudioHardware::~CoreAudioHardware() {
    listeners_.silence();
}

std::optional<std::vector<AudioDeviceID>> CoreAudioHardware::deviceIDs() {
    return CoreAudioDevice::all();
}

bool CoreAudioHardware::hasOutputStreams(AudioDeviceID device) {
    return CoreAudioDevice::hasOutputStreams(device);
}

std::optional<std::string> CoreAudioHardware::name(AudioDeviceID device) {
    return CoreAudioDevice::name(device);
}

std::optional<std::string> CoreAudioHardware::uid(AudioDeviceID device) {
    return CoreAudioDevice::uid(device);
}

std::optional<AudioDeviceID> CoreAudioHardware::deviceForUID(const std::string& uid) {
    return CoreAudioDevice::forUID(uid);
}

std::optional<AudioDeviceID> CoreAudioHardware::defaultOutput() {
    return CoreAudioDevice::defaultOutput();
}

bool CoreAudioHardware::setDefaultOutput(AudioDeviceID device) {
    const auto former = defaultOutput();
    if (!CoreAudio::write(kSystem, kDefaultOutput, device)) return false;
    const bool isShown =
        waitShortly([this, device] { return defaultOutput() == device; }, kLongestWrite);
    // Where the server cannot tell who plays, this is the moment to find out.
    const bool isMoved = isShown && former && *former != device;
    if (isMoved && !CoreAudioProcesses::playInto(*former)) own_.lookAgain(*former);
    return true; // a default that does not stick shows when the core looks at it
}

bool CoreAudioHardware::setDefaultSystemOutput(AudioDeviceID device) {
    return CoreAudio::write(kSystem, kDefaultSystemOutput, device);
}

bool CoreAudioHardware::releaseDefaultOutput() {
    if (const auto present = configuredDefault(); present && *present != kVirtualDeviceUID) {
        return true; // it is a person's choice, or the system's
    }
    const auto device = CoreAudioDevice::naturalOutput();
    return device && setDefaultOutput(*device);
}

std::optional<float> CoreAudioHardware::volume(AudioDeviceID device, VolumeElement element) {
    return CoreAudio::read<Float32>(device, volumeAddress(element));
}

bool CoreAudioHardware::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    return CoreAudio::write<Float32>(device, volumeAddress(element), volume);
}

std::optional<bool> CoreAudioHardware::mute(AudioDeviceID device) {
    const auto muted = CoreAudio::read<UInt32>(device, kMute);
    return muted ? std::optional(*muted != 0) : std::nullopt;
}

bool CoreAudioHardware::setMute(AudioDeviceID device, bool muted) {
    return CoreAudio::write<UInt32>(device, kMute, muted ? 1 : 0);
}

bool CoreAudioHardware::listenToDeviceList(Listener listener) {
    return listeners_.add(kSystem, kDevices, std::move(listener));
}

bool CoreAudioHardware::listenToDefaultOutput(Listener listener) {
    return listeners_.add(kSystem, kDefaultOutput, std::move(listener));
}

bool CoreAudioHardware::listenToVolume(AudioDeviceID device, VolumeElement element,
                                       Listener listener) {
    const auto first = volumeAddress(VolumeElement::left);
    const bool hasOnlyChannels =
        !CoreAudio::has(device, volumeAddress(element)) && CoreAudio::has(device, first);
    const auto address = hasOnlyChannels ? first : volumeAddress(element);
    return listeners_.add(device, address, std::move(listener));
}

bool CoreAudioHardware::listenToMute(AudioDeviceID device, Listener listener) {
    return listeners_.add(device, kMute, std::move(listener));
}

void CoreAudioHardware::silenceListeners() {
    listeners_.silence();
}

std::optional<DeviceLevel> CoreAudioHardware::level(AudioDeviceID device) {
    return levels_->read(device);
}

bool CoreAudioHardware::setLevel(AudioDeviceID device, const DeviceLevel& level,
                                 LevelPersistence /*persistence*/) {
    return levels_->write(device, level);
}

float CoreAudioHardware::volumeOfAmplitude(AudioDeviceID device, float amplitude) {
    return CoreAudioLevel::scalar(device, amplitude);
}

bool CoreAudioHardware::listenToPorts(Listener listener) {
    return watch(kDevices, {kDataSource}, listener);
}

bool CoreAudioHardware::hasForeignStreams(AudioDeviceID device) {
    if (const auto isPlayedInto = CoreAudioProcesses::playInto(device)) return *isPlayedInto;
    return own_.playsInto(device) ? own_.isShared() : isRunningSomewhere(device);
}

bool CoreAudioHardware::listenToStreams(Listener listener) {
    // Both: the second tells nothing of others while this process plays.
    const bool hears =
        watch(CoreAudioProcesses::list(), CoreAudioProcesses::properties(), listener);
    return watch(kDevices, {kIsRunning}, listener) || hears;
}

bool CoreAudioHardware::watch(const CoreAudio::Address& list,
                              std::vector<CoreAudio::Address> properties, const Listener& changed) {
    watches_.push_back(
        std::make_unique<CoreAudioListWatch>(listeners_, list, std::move(properties), changed));
    return watches_.back()->isListening();
}

std::optional<std::string> CoreAudioHardware::configuredDefault() {
    const auto device = defaultOutput();
    return device ? uid(*device) : std::nullopt;
}

bool CoreAudioHardware::setConfiguredDefault(const std::string& uid) {
    const auto device = deviceForUID(uid);
    return device && setDefaultOutput(*device); // what is away cannot be asked for
}

void CoreAudioHardware::protect(const std::string& uid, const DeviceLevel& level) {
    protection_.protect(uid, level);
}

void CoreAudioHardware::unprotect(const std::string& uid) {
    protection_.unprotect(uid);
}

} // namespace halvo
