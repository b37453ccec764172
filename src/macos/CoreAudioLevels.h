#pragma once

#include "loudness/AudioServer.h"

#include <map>
#include <mutex>
#include <optional>

namespace halvo {

/// The levels of all devices as they were written: a device rounds to its own steps, and what it
/// shows after a write stands for what was asked of it until somebody changes it. Any thread.
class CoreAudioLevels {
  public:
    std::optional<DeviceLevel> read(AudioDeviceID device);
    /// Waits until the device shows the change, at most 0.1 s.
    bool write(AudioDeviceID device, const DeviceLevel& level);

  private:
    struct Written {
        DeviceLevel asked;
        DeviceLevel shown;
    };

    std::mutex lock_;
    std::map<AudioDeviceID, Written> written_;
};

} // namespace halvo
