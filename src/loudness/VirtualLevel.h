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
    /// Takes note of the present volume, for the case that the device goes and returns.
    void follow();
    void reduceFollowed(float factor) {
        followed_ = followed_.transform([factor](float volume) { return volume * factor; });
    }
    /// After it has returned: no louder than when it was last followed. True when it was.
    bool limitToFollowed();

  private:
    AudioServer& server_;
    std::optional<float> followed_;
};

} // namespace halvo
