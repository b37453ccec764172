#include "loudness/LevelScale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace halvo {

namespace {

constexpr float kInaudible = 1e-4F; // what a server may round away
constexpr float kRounded = 2e-3F;   // the same, in proportion: a sixtieth of a decibel

float loudestChannel(const DeviceLevel& level) {
    const auto& volumes = level.channelVolumes;
    return volumes.empty() ? 0.0F : *std::ranges::max_element(volumes);
}

} // namespace

bool isUsable(const DeviceLevel& level) {
    return !level.channelVolumes.empty() &&
           std::ranges::all_of(level.channelVolumes,
                               [](float volume) { return std::isfinite(volume) && volume >= 0; });
}

float loudestVolume(const DeviceLevel& level) {
    return std::clamp(loudestChannel(level), 0.0F, 1.0F);
}

DeviceLevel scaledTo(const DeviceLevel& balance, float loudest) {
    const float present = loudestChannel(balance);
    DeviceLevel scaled = balance;
    for (auto& volume : scaled.channelVolumes) {
        volume = present > 0 ? volume / present * loudest : loudest;
    }
    return scaled;
}

bool isLouder(const DeviceLevel& level, const DeviceLevel& other) {
    if (level.muted) return false;
    if (other.muted) return loudestChannel(level) > kInaudible;
    for (std::size_t channel = 0; channel < level.channelVolumes.size(); ++channel) {
        const float limit =
            channel < other.channelVolumes.size() ? other.channelVolumes[channel] : 0.0F;
        if (level.channelVolumes[channel] > limit + kInaudible) return true;
    }
    return false;
}

bool isAbove(const DeviceLevel& level, const DeviceLevel& other) {
    if (other.muted && !level.muted) return true;
    auto beneath = level;
    auto limit = other;
    beneath.muted = limit.muted = false;
    return isLouder(beneath, limit);
}

DeviceLevel lowerOf(const DeviceLevel& level, const DeviceLevel& other) {
    auto lower = level;
    lower.muted = level.muted || other.muted;
    const auto channels = std::min(lower.channelVolumes.size(), other.channelVolumes.size());
    for (std::size_t channel = 0; channel < channels; ++channel) {
        auto& volume = lower.channelVolumes[channel];
        volume = std::min(volume, other.channelVolumes[channel]);
    }
    return lower;
}

bool isAlike(const DeviceLevel& level, const DeviceLevel& other) {
    const auto isNear = [](float volume, float wanted) {
        return std::abs(volume - wanted) <= kInaudible + kRounded * std::abs(wanted);
    };
    return level.muted == other.muted &&
           std::ranges::equal(level.channelVolumes, other.channelVolumes, isNear);
}

} // namespace halvo
