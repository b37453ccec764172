#include "loudness/SessionLevel.h"

#include "loudness/LevelScale.h"
#include "loudness/LoudnessSession.h"
#include "platform/VirtualOutput.h"

#include <algorithm>

namespace halvo {

std::optional<DeviceLevel> SessionLevel::get() {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    return id ? server_.level(*id) : std::nullopt;
}

bool SessionLevel::setVolume(float volume) {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    auto level = id ? server_.level(*id) : std::nullopt;
    if (!level) return false;
    std::ranges::fill(level->channelVolumes, volume);
    (void)server_.setLevel(*id, *level, LevelPersistence::temporary); // as good as it gets
    return true;
}

bool SessionLevel::limitVolume(float limit) {
    auto unmuted = get();
    if (!unmuted) return false;
    unmuted->muted = false;
    DeviceLevel limited = *unmuted;
    const float volume = std::min(loudestVolume(*unmuted), limit);
    std::ranges::fill(limited.channelVolumes, volume);
    return isLouder(*unmuted, limited) && setVolume(volume);
}

void SessionLevel::limitSilently(float limit) {
    if (!limitVolume(limit)) return;
    gate_.closeAtLeastFor(LoudnessSession::kGateTime);
    protectRaised();
}

float SessionLevel::ownShare() {
    const auto* entry = devices_.find(devices_.active);
    return entry != nullptr && entry->second.wasGivenUp ? loudestVolume(entry->second.found) : 1;
}

void SessionLevel::leaveActive() {
    const auto now = get();
    if (auto* former = devices_.find(devices_.active); former != nullptr && now) {
        const float heard = loudestVolume(*now) * ownShare();
        former->second.sessionVolume = heard;
        limitSilently(heard); // two volumes in a row are one from here on
    } else if (followed_) {
        *followed_ *= ownShare();
    }
}

DeviceLevel SessionLevel::at(const GuardedDevices::Entry& entry) {
    const auto& [uid, device] = entry;
    const auto now = get();
    const float former = device.sessionVolume.value_or(loudestVolume(device.found));
    float volume = now ? loudestVolume(*now) : former;
    if (uid != devices_.active) volume = std::min(volume * ownShare(), former);
    auto level = scaledTo(device.found, volume);
    level.muted =
        (now && now->muted) || (level.muted && device.sound == GuardedDevice::Sound::asFound);
    return level;
}

void SessionLevel::protectRaised() {
    using State = GuardedDevice::State;
    for (const auto& entry : devices_) {
        if (entry.second.state == State::raised || entry.second.state == State::lowered) {
            server_.protect(entry.first, at(entry));
        }
    }
}

void SessionLevel::follow() {
    if (const auto now = get()) followed_ = loudestVolume(*now);
}

void SessionLevel::changed() {
    follow();
    protectRaised();
}

void SessionLevel::virtualDeviceReturned() {
    if (followed_) limitSilently(*followed_);
    follow();
}

} // namespace halvo
