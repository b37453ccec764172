#pragma once

#include "loudness/GuardedDevices.h"
#include "loudness/SettlingDevices.h"

#include <string>

namespace halvo {

/// Gives devices their own level back, in a session and where only an earlier one is put right. The
/// caller holds the lock of `WriteAccess`. One thread, but for `unprotectAll`.
class LevelRestorer {
  public:
    /// What is passed in must outlive the object.
    LevelRestorer(AudioServer& server, GuardedDevices& devices, const SettlingDevices& settling)
        : server_(server), devices_(devices), settling_(settling) {}

    /// Gives the device its own level back, where it may not be at it. True also for an unknown
    /// one. A raise of it that waits is off.
    bool restore(AudioDeviceID id, const std::string& uid);
    /// The same for each device that is there.
    void restoreAll();
    /// The same for one that the engine may go on to play to.
    bool giveBack(AudioDeviceID id, GuardedDevices::Entry& entry);
    /// Whether a device that is there is still not at its own level.
    bool isAnyLeft();
    /// Whether the level that was found is that of a port which the device has left.
    bool playsThroughAnotherPort(AudioDeviceID id, const GuardedDevices::Entry& entry);

    /// A device that becomes the default is not lowered any more. Any thread that holds the lock.
    void unprotectAll();

  private:
    using State = GuardedDevice::State;

    bool restore(AudioDeviceID id, GuardedDevices::Entry& entry);

    AudioServer& server_;
    GuardedDevices& devices_;
    const SettlingDevices& settling_;
};

} // namespace halvo
