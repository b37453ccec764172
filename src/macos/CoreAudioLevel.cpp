#include "macos/CoreAudioLevel.h"

#include "loudness/LevelScale.h"
#include "macos/CoreAudioDevice.h"
#include "macos/CoreAudioProperty.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace halvo::CoreAudioLevel {

namespace {

using CoreAudio::outputAddress;
using Element = AudioObjectPropertyElement;

constexpr Element kMain = kAudioObjectPropertyElementMain;
constexpr Element kMostChannels = 64;
constexpr float kSame = 1e-5F; ///< far below a control's steps

bool hasVolume(AudioDeviceID device, Element element) {
    return CoreAudio::has(device, outputAddress(kAudioDevicePropertyVolumeScalar, element));
}

bool hasMute(AudioDeviceID device, Element element) {
    return CoreAudio::has(device, outputAddress(kAudioDevicePropertyMute, element));
}

/// The preferred stereo pair, where both have volumes; else all channels that have one.
std::vector<Element> channelsWithVolume(AudioDeviceID device) {
    const auto pair = CoreAudio::read<std::array<UInt32, 2>>(
        device, outputAddress(kAudioDevicePropertyPreferredChannelsForStereo));
    if (pair && (*pair)[0] != kMain && (*pair)[1] != kMain && (*pair)[0] != (*pair)[1] &&
        hasVolume(device, (*pair)[0]) && hasVolume(device, (*pair)[1])) {
        return {(*pair)[0], (*pair)[1]};
    }
    std::vector<Element> channels;
    for (Element element = 1; element <= kMostChannels; ++element) {
        if (hasVolume(device, element)) channels.push_back(element);
    }
    return channels;
}

/// A device's controls may follow any curve; the virtual one's scale is the amplitude itself.
class Curve {
  public:
    explicit Curve(AudioDeviceID device)
        : device_(device), isLinear_(CoreAudioDevice::uid(device) == kVirtualDeviceUID) {}

    float amplitude(Element element, float scalar) const {
        if (scalar <= 0) return 0;
        const auto lowered = decibels(element, scalar);
        const auto full = decibels(element, 1);
        if (scalar >= 1 || !lowered || !full) return std::min(scalar, 1.0F);
        return std::clamp(std::pow(10.0F, (*lowered - *full) / 20), 0.0F, 1.0F);
    }

    float scalar(Element element, float amplitude) const {
        const auto full = decibels(element, 1);
        if (!full || amplitude <= 0 || amplitude >= 1) return std::clamp(amplitude, 0.0F, 1.0F);
        const auto found = converted(kAudioDevicePropertyVolumeDecibelsToScalar, element,
                                     *full + 20 * std::log10(amplitude));
        return std::clamp(found.value_or(amplitude), 0.0F, 1.0F);
    }

  private:
    std::optional<float> decibels(Element element, float scalar) const {
        return converted(kAudioDevicePropertyVolumeScalarToDecibels, element, scalar);
    }
    std::optional<float> converted(AudioObjectPropertySelector selector, Element element,
                                   float value) const {
        if (isLinear_) return std::nullopt;
        const auto found =
            CoreAudio::read<Float32>(device_, outputAddress(selector, element), value);
        return found && std::isfinite(*found) ? found : std::nullopt;
    }

    AudioDeviceID device_;
    bool isLinear_;
};

struct Volume {
    Element element = kMain;
    float amplitude = 1;
};

/// What a device has to set its volume by.
struct Controls {
    std::optional<Volume> main;
    std::vector<Volume> channels;
};

/// Nothing when one of them cannot be read.
std::optional<Controls> controlsOf(AudioDeviceID device, const Curve& curve) {
    const auto volume = [&](Element element) -> std::optional<Volume> {
        const auto scalar = CoreAudio::read<Float32>(
            device, outputAddress(kAudioDevicePropertyVolumeScalar, element));
        if (!scalar || !std::isfinite(*scalar)) return std::nullopt;
        return Volume{element, curve.amplitude(element, *scalar)};
    };
    Controls controls;
    if (hasVolume(device, kMain)) {
        controls.main = volume(kMain);
        if (!controls.main) return std::nullopt;
    }
    for (const auto element : channelsWithVolume(device)) {
        const auto found = volume(element);
        if (!found) return std::nullopt;
        controls.channels.push_back(*found);
    }
    return controls;
}

/// The main element's mute, or those of the channels where it has none.
std::vector<Element> muteElements(AudioDeviceID device) {
    if (hasMute(device, kMain)) return {kMain};
    std::vector<Element> elements;
    for (Element element = 1; element <= kMostChannels; ++element) {
        if (hasMute(device, element)) elements.push_back(element);
    }
    return elements;
}

bool isMuted(AudioDeviceID device, const std::vector<Element>& elements) {
    return !elements.empty() && std::ranges::all_of(elements, [device](Element element) {
        const auto address = outputAddress(kAudioDevicePropertyMute, element);
        return CoreAudio::read<UInt32>(device, address).value_or(0) != 0;
    });
}

bool mute(AudioDeviceID device, const std::vector<Element>& elements, bool muted) {
    bool isDone = true;
    for (const auto element : elements) {
        const auto address = outputAddress(kAudioDevicePropertyMute, element);
        const UInt32 wanted = muted ? 1 : 0;
        if (CoreAudio::read<UInt32>(device, address) == wanted) continue;
        isDone = CoreAudio::write<UInt32>(device, address, wanted) && isDone;
    }
    return isDone;
}

struct Change {
    Volume now;
    float amplitude = 0;

    bool lowers() const { return amplitude < now.amplitude; }
    bool isNone() const { return std::abs(amplitude - now.amplitude) < kSame; }
};

/// With both kinds of controls the main one carries the loudest channel and the others the balance.
std::vector<Change> changesTo(const std::vector<float>& volumes, const Controls& now) {
    const float loudest = std::clamp(std::ranges::max(volumes), 0.0F, 1.0F);
    std::vector<Change> changes;
    if (now.main) changes.push_back({*now.main, loudest});
    const float shared = now.main ? loudest : 1;
    for (std::size_t i = 0; i < now.channels.size() && shared > 0; ++i) {
        const float wanted = i < volumes.size() ? volumes[i] : loudest;
        changes.push_back({now.channels[i], std::clamp(wanted / shared, 0.0F, 1.0F)});
    }
    std::ranges::stable_partition(changes, &Change::lowers);
    return changes;
}

bool setVolumes(AudioDeviceID device, const std::vector<float>& volumes) {
    const Curve curve(device);
    const auto now = controlsOf(device, curve);
    if (!now) return false;
    const auto changes = changesTo(volumes, *now);
    if (changes.empty()) return std::ranges::max(volumes) > 1 - kSame; // always at full scale
    bool isDone = true;
    for (const auto& change : changes) {
        if (change.isNone()) continue;
        const auto element = change.now.element;
        const auto address = outputAddress(kAudioDevicePropertyVolumeScalar, element);
        const auto scalar = curve.scalar(element, change.amplitude);
        isDone = CoreAudio::write<Float32>(device, address, scalar) && isDone;
    }
    return isDone;
}

} // namespace

std::optional<DeviceLevel> read(AudioDeviceID device) {
    if (!CoreAudioDevice::hasOutputStreams(device)) return std::nullopt;
    const auto controls = controlsOf(device, Curve(device));
    if (!controls) return std::nullopt;
    DeviceLevel level{{}, isMuted(device, muteElements(device)), CoreAudioDevice::port(device)};
    const float main = controls->main.value_or(Volume{}).amplitude;
    for (const auto& channel : controls->channels)
        level.channelVolumes.push_back(main * channel.amplitude);
    if (level.channelVolumes.empty()) level.channelVolumes.push_back(main);
    return level;
}

bool write(AudioDeviceID device, const DeviceLevel& level) {
    const bool isValid =
        !level.channelVolumes.empty() &&
        std::ranges::all_of(level.channelVolumes, [](float v) { return std::isfinite(v); });
    if (!isValid || !CoreAudioDevice::hasOutputStreams(device)) return false;
    if (!level.port.empty() && level.port != CoreAudioDevice::port(device)) return false;
    const auto mutes = muteElements(device);
    auto volumes = level.channelVolumes;
    const bool isMutable = !mutes.empty() && (!level.muted || mute(device, mutes, true));
    if (level.muted && !isMutable) std::ranges::fill(volumes, 0.0F); // no other way to be silent
    return setVolumes(device, volumes) && (level.muted || mute(device, mutes, false));
}

float scalar(AudioDeviceID device, float amplitude) {
    const auto element = hasVolume(device, kMain) ? kMain : 1;
    return Curve(device).scalar(element, amplitude);
}

} // namespace halvo::CoreAudioLevel
