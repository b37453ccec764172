#include "loudness/VirtualLevel.h"

#include "loudness/LevelScale.h"
#include "platform/VirtualOutput.h"

#include <algorithm>

namespace halvo {

std::optional<DeviceLevel> VirtualLevel::get() {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    return id ? server_.level(*id) : std::nullopt;
}

bool VirtualLevel::setVolume(float volume) {
    const auto id = server_.deviceForUID(kVirtualDeviceUID);
    auto level = id ? server_.level(*id) : std::nullopt;
    if (!level) return false;
    std::ranges::fill(level->channelVolumes, volume);
    (void)server_.setLevel(*id, *level, LevelPersistence::temporary); // as good as it gets
    return true;
}

bool VirtualLevel::limitVolume(float limit) {
    auto unmuted = get();
    if (!unmuted) return false;
    unmuted->muted = false;
    DeviceLevel limited = *unmuted;
    const float volume = std::min(loudestVolume(*unmuted), limit);
    std::ranges::fill(limited.channelVolumes, volume);
    return isLouder(*unmuted, limited) && setVolume(volume);
}

void VirtualLevel::follow() {
    if (const auto now = get()) followed_ = loudestVolume(*now);
}

bool VirtualLevel::limitToFollowed() {
    const bool isLimited = followed_ && limitVolume(*followed_);
    follow();
    return isLimited;
}

} // namespace halvo
