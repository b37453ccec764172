#pragma once

#include "loudness/AudioServer.h"
#include "loudness/GuardedDevices.h"

#include <optional>

namespace halvo {

class GateTimer;

/// How loud the session is: the level of the virtual device, and what it means for each real one.
/// The server's own thread keeps to it, too. The caller holds the lock of `WriteAccess`. Main
/// thread.
class SessionLevel {
  public:
    /// What is passed in must outlive the object.
    SessionLevel(AudioServer& server, GateTimer& gate, GuardedDevices& devices)
        : server_(server), gate_(gate), devices_(devices) {}

    /// The virtual device's; nothing while it is away.
    std::optional<DeviceLevel> get();
    /// All channels alike; the mute stays. False while the virtual device is away.
    bool setVolume(float volume);
    /// Turns down what would be louder without its mute. True when it was.
    bool limitVolume(float limit);
    /// The same with the engine silent until its own gain has followed.
    void limitSilently(float limit);

    /// What the device in use takes off the volume while it stays at its own level.
    float ownShare();
    /// Ahead of a switch: the device in use keeps its volume, and no other one is louder by it.
    void leaveActive();
    /// What the device has to be at for the session to be as loud as it is, played straight to it.
    DeviceLevel at(const GuardedDevices::Entry& entry);
    /// Has the server's own thread lower each raised device that somebody makes the default.
    void protectRaised();

    /// Takes note of the present volume, for the case that the virtual device goes and returns.
    void changed();
    /// No louder than before it went.
    void virtualDeviceReturned();

  private:
    void follow();

    AudioServer& server_;
    GateTimer& gate_;
    GuardedDevices& devices_;
    std::optional<float> followed_; ///< the volume of which note was taken
};

} // namespace halvo
