#pragma once

#include "loudness/AudioServer.h"

namespace halvo {

/// Whether it has channels, and only volumes that make sense. Any thread.
bool isUsable(const DeviceLevel& level);

/// The volume of the loudest channel, 0 without channels. More than 1 counts as 1. Any thread.
float loudestVolume(const DeviceLevel& level);

/// `balance` with its loudest channel at `loudest` and the others in proportion; where all are
/// silent, all at `loudest`. Keeps the mute. Any thread.
DeviceLevel scaledTo(const DeviceLevel& balance, float loudest);

/// Whether any channel would be heard louder at `level` than at `other`. Any thread.
bool isLouder(const DeviceLevel& level, const DeviceLevel& other);

/// Whether any channel's volume is higher, beneath a mute, too, or a mute is missing. Any thread.
bool isAbove(const DeviceLevel& level, const DeviceLevel& other);

/// `level`, in no channel above `other`, and muted if either is. Any thread.
DeviceLevel lowerOf(const DeviceLevel& level, const DeviceLevel& other);

/// Whether both are heard the same, but for what a device rounds. Any thread.
bool isAlike(const DeviceLevel& level, const DeviceLevel& other);

} // namespace halvo
