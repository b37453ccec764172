#pragma once

#include "platform/AudioHardware.h"

namespace halvo {

/// What somebody who watches the sound server hears from a `PipeWireConnection`. Every function
/// runs on the connection's own thread with its lock held and must not wait.
class PipeWireObserver {
  public:
    virtual ~PipeWireObserver() = default;

    /// The server is there, its devices and its default are known.
    virtual void serverConnected() {}
    /// The server is gone; everything made from its core must be destroyed before this returns.
    virtual void serverDisconnected() {}
    /// A device came, went or got another name.
    virtual void devicesChanged() {}
    /// The default or the request for one changed, or could not be read any more.
    virtual void defaultsChanged() {}
    virtual void volumeChanged(AudioDeviceID) {}
    virtual void muteChanged(AudioDeviceID) {}
    /// A stream was connected or disconnected anywhere.
    virtual void streamsChanged() {}
};

} // namespace halvo
