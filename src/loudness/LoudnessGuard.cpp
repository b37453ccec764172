#include "loudness/LoudnessGuard.h"

#include "loudness/LevelScale.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <chrono>

namespace halvo {

namespace {

/// As long as the thread of a signal may wait for a raise that has begun.
constexpr std::chrono::milliseconds kLongestRaise{100};
constexpr std::chrono::milliseconds kPoll{1};

/// As `try_lock_for`, which the ThreadSanitizer of g++ 12 takes for no lock at all.
std::unique_lock<std::mutex> lockWithin(std::mutex& mutex, std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    std::unique_lock lock(mutex, std::try_to_lock);
    while (!lock && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPoll);
        (void)lock.try_lock(); // the loop looks
    }
    return lock;
}

std::optional<float> volumeOf(const DeviceLevel& level, VolumeElement element) {
    if (element == VolumeElement::main) return loudestVolume(level);
    const std::size_t channel = element == VolumeElement::left ? 0 : 1;
    if (channel >= level.channelVolumes.size()) return std::nullopt;
    return std::min(level.channelVolumes[channel], 1.0F);
}

} // namespace

LoudnessGuard::LoudnessGuard(AudioServer& server, OutputGate* gate, MainQueue* mainQueue,
                             SystemLog* log, RaisedDevicesRecord record,
                             std::function<void()> onRecord)
    : server_(server), gate_(gate), mainQueue_(mainQueue), log_(log), record_(std::move(record)),
      onRecord_(std::move(onRecord)) {
    for (const auto& [uid, recorded] : record_.devices) {
        auto& device = devices_[uid];
        device.state = recorded.isMoved ? State::left : State::own;
        device.found = recorded.found;
    }
}

LoudnessGuard::LoudnessGuard(AudioServer& server, OutputGate& gate, MainQueue& mainQueue,
                             SystemLog& log, RaisedDevicesRecord record,
                             std::function<void()> onRecord)
    : LoudnessGuard(server, &gate, &mainQueue, &log, std::move(record), std::move(onRecord)) {
    if (onRecord_ && !record_.isEmpty()) onRecord_();
    listen();
    restoreOrphaned();
}

std::unique_ptr<LoudnessGuard> LoudnessGuard::forRestore(AudioServer& server,
                                                         RaisedDevicesRecord record) {
    std::unique_ptr<LoudnessGuard> guard(
        new LoudnessGuard(server, nullptr, nullptr, nullptr, std::move(record), {}));
    guard->isSilenced_ = true;
    guard->isRestoring_ = true;
    guard->restoreAll();
    return guard;
}

LoudnessGuard::~LoudnessGuard() = default;

std::optional<std::vector<AudioDeviceID>> LoudnessGuard::deviceIDs() {
    return server_.deviceIDs();
}

bool LoudnessGuard::hasOutputStreams(AudioDeviceID device) {
    return server_.hasOutputStreams(device);
}

std::optional<std::string> LoudnessGuard::name(AudioDeviceID device) {
    return server_.name(device);
}

std::optional<std::string> LoudnessGuard::uid(AudioDeviceID device) {
    return server_.uid(device);
}

std::optional<AudioDeviceID> LoudnessGuard::deviceForUID(const std::string& uid) {
    return server_.deviceForUID(uid);
}

std::optional<AudioDeviceID> LoudnessGuard::defaultOutput() {
    return server_.defaultOutput();
}

bool LoudnessGuard::setDefaultOutput(AudioDeviceID device) {
    const std::scoped_lock lock(writing_);
    if (isStopped()) return false;
    const auto uid = server_.uid(device);
    if (!uid) return false;
    if (*uid != kVirtualDeviceUID) return restoreDefault(device, *uid);
    return !isRestoring_ && capture(device);
}

bool LoudnessGuard::setDefaultSystemOutput(AudioDeviceID device) {
    return server_.setDefaultSystemOutput(device);
}

std::optional<float> LoudnessGuard::volume(AudioDeviceID device, VolumeElement element) {
    const auto uid = server_.uid(device);
    const auto* entry = uid ? find(*uid) : nullptr;
    if (entry == nullptr || entry->second.state == State::own) {
        return server_.volume(device, element);
    }
    return volumeOf(entry->second.found, element);
}

bool LoudnessGuard::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    const auto uid = server_.uid(device);
    if (!uid || *uid == kVirtualDeviceUID) return server_.setVolume(device, element, volume);
    const std::scoped_lock lock(writing_);
    if (isStopped()) return false;
    if (volume >= 1 && !isRestoring_) return raise(device, *uid, Sound::asFound);
    // One number for all channels would flatten the balance that was found.
    if (auto* entry = find(*uid)) return restoreDevice(device, *entry);
    return server_.setVolume(device, element, volume);
}

std::optional<bool> LoudnessGuard::mute(AudioDeviceID device) {
    const auto uid = server_.uid(device);
    const auto* entry = uid ? find(*uid) : nullptr;
    if (entry == nullptr || entry->second.state == State::own) return server_.mute(device);
    return entry->second.found.muted;
}

bool LoudnessGuard::setMute(AudioDeviceID device, bool muted) {
    const auto uid = server_.uid(device);
    if (!uid || *uid == kVirtualDeviceUID) return server_.setMute(device, muted);
    const std::scoped_lock lock(writing_);
    if (isStopped()) return false;
    if (!muted && !isRestoring_) return raise(device, *uid, Sound::unmuted);
    if (auto* entry = isRestoring_ ? find(*uid) : nullptr) return restoreDevice(device, *entry);
    return server_.setMute(device, muted);
}

bool LoudnessGuard::listenToDeviceList(Listener listener) {
    return server_.listenToDeviceList(std::move(listener));
}

bool LoudnessGuard::listenToDefaultOutput(Listener listener) {
    return server_.listenToDefaultOutput(std::move(listener));
}

bool LoudnessGuard::listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) {
    return server_.listenToVolume(device, element, std::move(listener));
}

bool LoudnessGuard::listenToMute(AudioDeviceID device, Listener listener) {
    return server_.listenToMute(device, std::move(listener));
}

void LoudnessGuard::silenceListeners() {
    isSilenced_ = true;
    server_.silenceListeners();
    const auto lock = lockWithin(writing_, kLongestRaise);
    const bool isOwnThread = std::this_thread::get_id() == thread_;
    if (!lock && !isOwnThread) return; // the main thread hangs: the record has to do
    // A device that becomes the default from here on is given back, not lowered to the session.
    for (const auto& [uid, device] : devices_)
        server_.unprotect(uid);
    if (!isOwnThread) return;
    isRestoring_ = true;
    restoreAll();
}

void LoudnessGuard::listen() {
    // A server that is away takes these all the same; nothing could be done about a refusal.
    (void)server_.listenToDeviceList(whileAlive(&LoudnessGuard::devicesChanged));
    (void)server_.listenToDefaultOutput(whileAlive(&LoudnessGuard::defaultChanged));
    (void)server_.listenToStreams(whileAlive(&LoudnessGuard::streamsChanged));
    listenToVirtualDevice();
}

AudioServer::Listener LoudnessGuard::whileAlive(void (LoudnessGuard::*work)()) {
    return [this, alive = lifetime_.watch(), work] {
        if (alive.expired()) return;
        const std::scoped_lock lock(writing_);
        if (!isSilenced_) (this->*work)();
    };
}

LoudnessGuard::Entry* LoudnessGuard::find(const std::string& uid) {
    const auto found = devices_.find(uid);
    return found == devices_.end() ? nullptr : &*found;
}

bool LoudnessGuard::save() {
    if (isStopped()) return false; // the file is somebody else's by now
    // At the end of a session there is nothing to tell of devices that are as they were.
    const bool isLast = isRestoring_ && mainQueue_ != nullptr && !record_.origin;
    record_.devices.clear();
    for (const auto& [uid, device] : devices_) {
        const bool isMoved = device.state != State::own;
        if (isMoved || !isLast) record_.devices[uid] = {device.found, isMoved};
    }
    const bool isSaved = record_.save();
    if (onRecord_ && !record_.isEmpty()) onRecord_();
    return isSaved;
}

} // namespace halvo
