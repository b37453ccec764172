#pragma once

#include "loudness/AudioServer.h"

#include <optional>

namespace halvo {

/// How loud the session is: the level of the virtual device. Main thread.
class VirtualLevel {
  public:
    explicit VirtualLevel(AudioServer& server) : server_(server) {}

    /// Nothing while the device is away.
    std::optional<DeviceLevel> get();
    /// All channels alike; the mute stays. False while the device is away.
    bool setVolume(float volume);
    /// Turns down what would be louder without its mute. True when it was.
    bool limitVolume(float limit);

  private:
    AudioServer& server_;
};

} // namespace halvo
