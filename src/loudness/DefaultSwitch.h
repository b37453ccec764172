#pragma once

#include "loudness/AudioServer.h"
#include "loudness/LoudnessSession.h"
#include "loudness/RaisedDevicesRecord.h"

#include <optional>
#include <string>

namespace halvo {

class GuardedDevices;
class LevelRestorer;
class RaisedDevices;

/// Takes the default output for the virtual device and restores it, so that nobody hears the switch
/// and no default is left pinned that nobody had asked for. The caller holds the lock of
/// `WriteAccess`. One thread.
class DefaultSwitch {
  public:
    /// `session` is null where nothing is taken any more. What is passed in must outlive the
    /// switch.
    DefaultSwitch(AudioServer& server, RaisedDevicesRecord& record, GuardedDevices& devices,
                  LevelRestorer& restorer, LoudnessSession* session)
        : server_(server), record_(record), devices_(devices), restorer_(restorer),
          session_(session), isInherited_(session != nullptr && record.origin) {}

    /// Makes the virtual device the default, once it is as loud as the present one. Needs the
    /// session.
    bool takeDefault(AudioDeviceID virtualDevice, RaisedDevices& raised);
    /// Ends the virtual device's time as the default: the one before it takes its place again, else
    /// `uid`, at its own level. Where another device is the default already, that is `uid`.
    bool restoreDefault(AudioDeviceID id, const std::string& uid);
    /// Where the virtual device is still asked for, restores the default before it, or nobody's
    /// choice. False: not done yet.
    bool leaveVirtualDevice();

    /// Keeps the engine silent while its clients play straight into another default. Needs the
    /// session.
    void silenceWhileAway();

  private:
    bool makeDefault(AudioDeviceID id, const std::string& uid);
    bool restoreConfiguredDefault(AudioDeviceID id, const std::string& uid);
    bool isDefaultVirtual();
    std::optional<AudioDeviceID> anyRealDevice();

    AudioServer& server_;
    RaisedDevicesRecord& record_;
    GuardedDevices& devices_;
    LevelRestorer& restorer_;
    LoudnessSession* session_;
    bool isInherited_; ///< the record's origin is an earlier process's
};

} // namespace halvo
