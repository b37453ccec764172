#pragma once

#include <filesystem>
#include <optional>

namespace halvo {

// Where the user's files lie. Any thread.

/// ~/Library/Application Support; nothing when the system names no such place.
std::optional<std::filesystem::path> applicationSupportDirectory();

/// The record of raised devices: raised-devices.json beside the presets.
std::filesystem::path raisedDevicesPath();
/// Where it lies while that folder takes nothing: in the user's temporary directory.
std::filesystem::path spareRaisedDevicesPath();

/// The lock of who may change the devices: session.lock beside the presets.
std::filesystem::path sessionLockPath();

} // namespace halvo
