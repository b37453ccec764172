#pragma once

#include "platform/AudioHardware.h"

#include <AudioToolbox/AudioToolbox.h>

namespace halvo {

/// The device that this process plays into, and whether others did so when it began: while it
/// plays, a system without process objects (before macOS 14.2) cannot tell others' sound from its
/// own. Main thread.
class CoreAudioOwnOutput {
  public:
    /// Call ahead of the unit's start.
    void willStart(AudioUnit unit);
    /// Call when it has stopped; for any other unit nothing happens.
    void didStop(AudioUnit unit);

    bool playsInto(AudioDeviceID device) const { return unit_ != nullptr && device == device_; }
    /// Whether others may still play into the device; meant for one that this process plays into.
    bool isShared() const { return isShared_; }

    /// After the default has moved away from the device: waits until nobody else plays into it, at
    /// most 0.3 s, with the own unit paused.
    void lookAgain(AudioDeviceID device);

  private:
    AudioUnit unit_ = nullptr; ///< null: plays into none
    AudioDeviceID device_ = 0;
    bool isShared_ = false;
};

/// Whether any process plays into the device or records from it.
bool isRunningSomewhere(AudioDeviceID device);

} // namespace halvo
