#include "macos/CoreAudioLevels.h"

#include "loudness/LevelScale.h"
#include "macos/CoreAudioLevel.h"
#include "macos/ShortWait.h"

#include <chrono>

namespace halvo {

namespace {

constexpr std::chrono::milliseconds kLongestWrite{100};
constexpr std::chrono::milliseconds kNoWait{0};

} // namespace

std::optional<DeviceLevel> CoreAudioLevels::read(AudioDeviceID device) {
    const std::scoped_lock lock(lock_);
    auto found = CoreAudioLevel::read(device);
    const auto written = written_.find(device);
    if (!found || written == written_.end() || *found != written->second.shown) return found;
    found->channelVolumes = written->second.asked.channelVolumes;
    return found;
}

bool CoreAudioLevels::write(AudioDeviceID device, const DeviceLevel& level) {
    const std::scoped_lock lock(lock_);
    const auto before = CoreAudioLevel::read(device);
    written_.erase(device); // numbers are given a second time
    if (!before || !CoreAudioLevel::write(device, level)) return false;
    std::optional<DeviceLevel> after;
    const auto isChanged = [&] { return (after = CoreAudioLevel::read(device)) != before; };
    // What rounds to the same step changes nothing, and is waited for in vain.
    (void)waitShortly(isChanged, isAlike(*before, level) ? kNoWait : kLongestWrite);
    // Only a level of the same shape can stand for the other.
    if (after && after->muted == level.muted &&
        after->channelVolumes.size() == level.channelVolumes.size()) {
        written_[device] = {level, *after};
    }
    return true;
}

} // namespace halvo
