#pragma once

#include "loudness/AudioServer.h"

#include <optional>

/// A device's level through its volume and mute controls, whichever it has: a main volume, one for
/// each channel, or both in series. Amplitudes are relative to the device's full scale. Any thread.
namespace halvo::CoreAudioLevel {

/// One volume per channel that has a control of its own, else one for all; a device without any
/// plays at full scale. Nothing for a device that is no output or cannot be read.
std::optional<DeviceLevel> read(AudioDeviceID device);

/// Lowers first and raises last. Extra channels get the loudest one's. False when the device cannot
/// take all of it, or plays through another port than the level's.
bool write(AudioDeviceID device, const DeviceLevel& level);

/// An amplitude on the device's own scale from 0 to 1.
float scalar(AudioDeviceID device, float amplitude);

} // namespace halvo::CoreAudioLevel
