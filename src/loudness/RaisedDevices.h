#pragma once

#include "base/Lifetime.h"
#include "loudness/AudioServer.h"
#include "loudness/GuardedDevices.h"
#include "loudness/LevelRestorer.h"
#include "loudness/LoudnessSession.h"
#include "loudness/PendingRaise.h"
#include "loudness/SessionLevel.h"
#include "loudness/SettlingDevices.h"

#include <set>
#include <string>

namespace halvo {

class WriteAccess;

/// The real devices of a session: raises them to full scale when nothing plays straight into them
/// and lowers them to the session's level when something does. A level that somebody else sets
/// meanwhile is the device's own from then on. The caller holds the lock of `WriteAccess`. Main
/// thread.
class RaisedDevices {
  public:
    using Sound = GuardedDevice::Sound;

    /// What is passed in must outlive the object.
    RaisedDevices(AudioServer& server, WriteAccess& access, LoudnessSession& session,
                  GuardedDevices& devices, SettlingDevices& settling, LevelRestorer& restorer)
        : server_(server), access_(access), session_(session), devices_(devices),
          settling_(settling), restorer_(restorer), level_(server, session.gate, devices),
          pending_(server, access, session, devices, settling, level_) {}

    /// Raises the device now or when that is safe; the engine plays to it from here on. False when
    /// its level cannot be read and so could not be restored.
    bool raise(AudioDeviceID id, const std::string& uid, Sound sound);
    /// Tries the raise that waits, if any, and has it given up in the end.
    void retryRaise() { pending_.retry(); }

    /// Before the virtual device becomes the default: gives it level and mute of the present one.
    void passLevel(AudioDeviceID real, const std::string& uid, AudioDeviceID virtualDevice);
    /// Lowers a raised device that has become the default.
    void lowerDefault();

    // What has changed on the server.
    void virtualDeviceReturned() { level_.virtualDeviceReturned(); }
    void sessionLevelChanged() { level_.changed(); }
    void devicesChanged();
    void defaultChanged();
    void streamsChanged();
    void portsChanged();
    /// One of `SettlingDevices` has.
    void settled();
    /// Gives devices that are there, not at their own level and in nobody's use, that level back.
    void restoreOrphaned();

  private:
    using State = GuardedDevice::State;
    using Entry = GuardedDevices::Entry;

    Entry* remember(AudioDeviceID id, const std::string& uid);
    void activate(Entry& entry);
    void lower(AudioDeviceID id, Entry& entry);
    void leavePort(Entry& entry);
    void findNewcomers();
    void listenTo(AudioDeviceID id);
    void levelChanged(AudioDeviceID id);
    bool isProtection(AudioDeviceID id, const Entry& entry, const DeviceLevel& present);
    void takeOver(Entry& entry, const DeviceLevel& present);

    AudioServer& server_;
    WriteAccess& access_;
    LoudnessSession& session_;
    GuardedDevices& devices_;
    SettlingDevices& settling_;
    LevelRestorer& restorer_;
    SessionLevel level_;
    PendingRaise pending_;
    std::set<AudioDeviceID> heard_; ///< those whose level is listened to
    Lifetime lifetime_;
};

} // namespace halvo
