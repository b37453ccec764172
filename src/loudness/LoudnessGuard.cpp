#include "loudness/LoudnessGuard.h"

#include "loudness/LevelScale.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

namespace halvo {

namespace {

using Phase = WriteAccess::Phase;

/// As long as the thread of a signal may wait for a raise that has begun.
constexpr std::chrono::milliseconds kLongestRaise{100};

std::optional<float> volumeOf(const DeviceLevel& level, VolumeElement element) {
    if (element == VolumeElement::main) return loudestVolume(level);
    const std::size_t channel = element == VolumeElement::left ? 0 : 1;
    if (channel >= level.channelVolumes.size()) return std::nullopt;
    return std::min(level.channelVolumes[channel], 1.0F);
}

} // namespace

LoudnessGuard::LoudnessGuard(AudioServer& server, RaisedDevicesRecord record,
                             std::unique_ptr<LoudnessSession> session)
    : server_(server), record_(std::move(record)), session_(std::move(session)),
      devices_(record_, access_, session_.get()),
      settling_(server_, session_.get(), [this] { settled(); }),
      restorer_(server_, devices_, settling_),
      defaultSwitch_(server_, record_, devices_, restorer_, session_.get()) {}

LoudnessGuard::LoudnessGuard(AudioServer& server, OutputGate& gate, MainQueue& mainQueue,
                             SystemLog& log, RaisedDevicesRecord record,
                             std::function<void()> onRecord)
    : LoudnessGuard(server, std::move(record),
                    std::make_unique<LoudnessSession>(gate, mainQueue, log, std::move(onRecord))) {
    raised_.emplace(server_, access_, *session_, devices_, settling_, restorer_);
    if (session_->onRecord && !record_.isEmpty()) session_->onRecord();
    listen();
    raised_->restoreOrphaned();
}

std::unique_ptr<LoudnessGuard> LoudnessGuard::forRestore(AudioServer& server,
                                                         RaisedDevicesRecord record) {
    std::unique_ptr<LoudnessGuard> guard(new LoudnessGuard(server, std::move(record), nullptr));
    guard->access_.beginRestore();
    guard->restorer_.restoreAll();
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
    const auto lock = access_.lock();
    if (access_.phase() == Phase::stopped) return false;
    const auto uid = server_.uid(device);
    if (!uid) return false;
    if (*uid != kVirtualDeviceUID) return defaultSwitch_.restoreDefault(device, *uid);
    return access_.isRunning() && defaultSwitch_.takeDefault(device, *raised_);
}

bool LoudnessGuard::setDefaultSystemOutput(AudioDeviceID device) {
    return server_.setDefaultSystemOutput(device);
}

bool LoudnessGuard::releaseDefaultOutput() {
    const auto lock = access_.lock();
    return access_.phase() != Phase::stopped && defaultSwitch_.leaveVirtualDevice();
}

std::optional<float> LoudnessGuard::volume(AudioDeviceID device, VolumeElement element) {
    const auto uid = server_.uid(device);
    const auto* own = uid ? devices_.ownLevel(*uid) : nullptr;
    if (own == nullptr) return server_.volume(device, element);
    const auto amplitude = volumeOf(*own, element);
    return amplitude ? std::optional(server_.volumeOfAmplitude(device, *amplitude)) : std::nullopt;
}

bool LoudnessGuard::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    const auto uid = server_.uid(device);
    if (!uid) return false;
    if (*uid == kVirtualDeviceUID) return setVirtualVolume(device, element, volume);
    const auto lock = access_.lock();
    if (access_.phase() == Phase::stopped) return false;
    if (volume >= 1 && access_.isRunning()) return raised_->raise(device, *uid, Sound::asFound);
    // One number for all channels would flatten the balance that was found.
    if (devices_.isKnown(*uid)) return restorer_.restore(device, *uid);
    return server_.setVolume(device, element, volume);
}

bool LoudnessGuard::setVirtualVolume(AudioDeviceID device, VolumeElement element, float volume) {
    const auto level = server_.level(device);
    if (element != VolumeElement::main || !level) return server_.setVolume(device, element, volume);
    return server_.setLevel(device, scaledTo(*level, volume), LevelPersistence::temporary);
}

std::optional<bool> LoudnessGuard::mute(AudioDeviceID device) {
    const auto uid = server_.uid(device);
    const auto* own = uid ? devices_.ownLevel(*uid) : nullptr;
    return own != nullptr ? own->muted : server_.mute(device);
}

bool LoudnessGuard::setMute(AudioDeviceID device, bool muted) {
    const auto uid = server_.uid(device);
    if (!uid || *uid == kVirtualDeviceUID) return server_.setMute(device, muted);
    const auto lock = access_.lock();
    if (access_.phase() == Phase::stopped) return false;
    if (!muted && access_.isRunning()) return raised_->raise(device, *uid, Sound::unmuted);
    if (!access_.isRunning() && devices_.isKnown(*uid)) return restorer_.restore(device, *uid);
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
    access_.stop();
    server_.silenceListeners();
    const auto lock = access_.lockWithin(kLongestRaise);
    const bool isOwnThread = std::this_thread::get_id() == thread_;
    if (!lock && !isOwnThread) return; // the main thread hangs: the record has to do
    // A device that becomes the default from here on is restored, not lowered to the session.
    restorer_.unprotectAll();
    if (!isOwnThread) return;
    access_.beginRestore();
    restorer_.restoreAll();
}

void LoudnessGuard::listen() {
    // A server that is away takes these all the same; nothing could be done about a refusal.
    (void)server_.listenToDeviceList(whileRunning([this] { devicesChanged(); }));
    (void)server_.listenToDefaultOutput(whileRunning([this] { defaultChanged(); }));
    (void)server_.listenToStreams(whileRunning([this] { raised_->streamsChanged(); }));
    (void)server_.listenToPorts(whileRunning([this] { raised_->portsChanged(); }));
    listenToVirtualDevice();
}

AudioServer::Listener LoudnessGuard::whileRunning(std::function<void()> work) {
    return [this, alive = lifetime_.watch(), work = std::move(work)] {
        if (alive.expired()) return;
        const auto lock = access_.lock();
        if (access_.isRunning()) work();
    };
}

void LoudnessGuard::devicesChanged() {
    raised_->devicesChanged();
    listenToVirtualDevice();
}

void LoudnessGuard::defaultChanged() {
    raised_->lowerDefault();
    defaultSwitch_.silenceWhileAway();
    raised_->defaultChanged();
}

void LoudnessGuard::settled() {
    const auto lock = access_.lock();
    if (access_.isRunning()) raised_->settled();
}

void LoudnessGuard::listenToVirtualDevice() {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    if (!id || id == heardVirtualDevice_) return;
    heardVirtualDevice_ = id;
    raised_->virtualDeviceReturned();
    const auto changed = whileRunning([this] { raised_->sessionLevelChanged(); });
    (void)server_.listenToVolume(*id, VolumeElement::main, changed); // without it the last level
    (void)server_.listenToMute(*id, changed);                        // that was known protects
}

} // namespace halvo
