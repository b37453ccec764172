#pragma once

#include "macos/CoreAudioListWatch.h"
#include "platform/AudioHardware.h"

#include <optional>

/// The processes that play, as the server lists them since macOS 14.2. Any thread.
namespace halvo::CoreAudioProcesses {

/// Whether a process other than this one plays into the device, itself or as a part of another;
/// nothing where the server does not tell.
std::optional<bool> playInto(AudioDeviceID device);

/// The list of processes, and what tells of each whether and where it plays.
CoreAudio::Address list();
std::vector<CoreAudio::Address> properties();

} // namespace halvo::CoreAudioProcesses
