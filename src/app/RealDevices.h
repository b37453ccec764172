#pragma once

#include "devices/AudioOutputDevice.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// Whether a device is hardware to play on, not some program's virtual device.
bool isRealDevice(const AudioOutputDevice& device);

/// UID of the first real device of the list.
std::optional<std::string> findRealOutputDevice(const std::vector<AudioOutputDevice>& devices);

} // namespace halvo
