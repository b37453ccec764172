#pragma once

#include "platform/AudioHardware.h"

#include <optional>
#include <string>
#include <vector>

/// Facts about Core Audio's devices. Any thread.
namespace halvo::CoreAudioDevice {

std::optional<std::vector<AudioDeviceID>> all();
std::optional<AudioDeviceID> forUID(const std::string& uid);
std::optional<AudioDeviceID> defaultOutput();

bool hasOutputStreams(AudioDeviceID device);
std::optional<std::string> name(AudioDeviceID device);
std::optional<std::string> uid(AudioDeviceID device);

/// The data source that plays, by its code, such as "ispk"; empty for a device without sources.
std::string port(AudioDeviceID device);

/// The device itself, and all that play what is played into it.
std::vector<AudioDeviceID> withSubDevices(AudioDeviceID device);

/// Where output goes when nobody has chosen: a built-in device, else any hardware, else another
/// program's virtual one. Never the own virtual device.
std::optional<AudioDeviceID> naturalOutput();

} // namespace halvo::CoreAudioDevice
