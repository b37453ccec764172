#pragma once

#include "platform/AudioHardware.h"

namespace halvo {

/// The events of a `PipeWireConnection`. Every function runs on the connection's own thread with
/// its lock held and must not block.
class PipeWireObserver {
  public:
    virtual ~PipeWireObserver() = default;

    /// Connected; devices and default are known.
    virtual void serverConnected() {}
    /// Disconnected; everything created from the core must be destroyed before this returns.
    virtual void serverDisconnected() {}
    /// A device was added, removed or renamed.
    virtual void devicesChanged() {}
    /// The default or the configured default changed, or can no longer be read.
    virtual void defaultsChanged() {}
    virtual void volumeChanged(AudioDeviceID) {}
    virtual void muteChanged(AudioDeviceID) {}
    /// A device plays through another port of its card.
    virtual void portChanged() {}
    /// A stream was connected or disconnected anywhere.
    virtual void streamsChanged() {}
};

} // namespace halvo
