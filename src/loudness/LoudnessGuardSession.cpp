#include "loudness/LoudnessGuard.h"

#include "loudness/LevelScale.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <chrono>

namespace halvo {

using namespace std::chrono_literals;

namespace {

/// By then a default that another program changed has been taken back, if it ever is.
constexpr MainQueue::Duration kCaptureTime = 1s;

} // namespace

std::optional<DeviceLevel> LoudnessGuard::virtualLevel() {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    return id ? server_.level(*id) : std::nullopt;
}

void LoudnessGuard::setVirtualVolume(float volume) {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    auto level = id ? server_.level(*id) : std::nullopt;
    if (!level) return;
    std::ranges::fill(level->channelVolumes, volume);
    (void)server_.setLevel(*id, *level, LevelPersistence::temporary); // as good as it gets
    protectRaised();
}

void LoudnessGuard::limitVirtualVolume(float limit) {
    const auto now = virtualLevel();
    if (!now) return;
    DeviceLevel limited = *now;
    std::ranges::fill(limited.channelVolumes, std::min(loudestVolume(*now), limit));
    limited.muted = false;
    DeviceLevel unmuted = *now;
    unmuted.muted = false;
    if (isLouder(unmuted, limited)) setVirtualVolume(limited.channelVolumes.front());
}

DeviceLevel LoudnessGuard::sessionLevel(const Entry& entry) {
    const auto& [uid, device] = entry;
    const auto now = virtualLevel();
    const float former = device.sessionVolume.value_or(loudestVolume(device.found));
    float volume = now ? loudestVolume(*now) : former;
    if (uid != active_) volume = std::min(volume, former);
    auto level = scaledTo(device.found, volume);
    level.muted = (now && now->muted) || (level.muted && device.sound == Sound::asFound);
    return level;
}

void LoudnessGuard::protectRaised() {
    for (const auto& entry : devices_) {
        if (entry.second.state == State::raised) {
            server_.protect(entry.first, sessionLevel(entry));
        }
    }
}

void LoudnessGuard::listenToVirtualDevice() {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    if (!id || id == heardVirtualDevice_) return;
    heardVirtualDevice_ = id;
    const auto changed = whileAlive(&LoudnessGuard::protectRaised);
    (void)server_.listenToVolume(*id, VolumeElement::main, changed); // without it the last level
    (void)server_.listenToMute(*id, changed);                        // that was known protects
}

void LoudnessGuard::devicesChanged() {
    for (auto& [uid, device] : devices_) {
        // One that vanished stays protected: it may come back as the default.
        const bool isInUse = device.state == State::raised || device.state == State::lowered;
        if (isInUse && server_.deviceForUID(uid) != device.id) device.state = State::left;
    }
    restoreOrphaned();
    listenToVirtualDevice();
    tryPending();
}

void LoudnessGuard::defaultChanged() {
    lowerDefault();
    // The clients play straight into the new default, while the ring still holds a little of
    // theirs: together the two would be louder than either. The capture that follows opens the
    // gate.
    if (server_.defaultOutput() != server_.deviceForUID(kVirtualDeviceUID))
        closeGateFor(kCaptureTime);
    if (!isPending_ || server_.defaultOutput() == server_.deviceForUID(active_)) return;
    tryPending();
    if (isPending_) waitForPending();
}

void LoudnessGuard::streamsChanged() {
    tryPending();
    for (auto& entry : devices_) {
        const auto& [uid, device] = entry;
        if (device.state != State::raised || !server_.hasForeignStreams(device.id)) continue;
        // Somebody has begun to play straight into a device at full scale.
        lower(device.id, entry);
        if (uid != active_) continue;
        isPending_ = true;
        waitForPending();
    }
}

} // namespace halvo
