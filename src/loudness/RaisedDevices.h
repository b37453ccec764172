#pragma once

#include "base/Lifetime.h"
#include "loudness/AudioServer.h"
#include "loudness/GuardedDevices.h"
#include "loudness/LoudnessSession.h"
#include "loudness/SettlingDevices.h"
#include "loudness/VirtualLevel.h"

#include <cstdint>
#include <set>
#include <string>

namespace halvo {

class RaisedDevicesRecord;
class WriteAccess;

/// Raises real devices to full scale when nothing plays straight into them, lowers them to the
/// session's level when something does, and restores the level that was found on each. A level that
/// somebody else sets meanwhile is the device's own from then on. The caller holds the lock of
/// `WriteAccess`, but for the reads. One thread, but for `unprotectAll`.
class RaisedDevices {
  public:
    using Sound = GuardedDevice::Sound;

    /// Begins with what the record tells. `session` is null where nothing is raised and the record
    /// is left to the next start. What is passed in must outlive the object.
    RaisedDevices(AudioServer& server, RaisedDevicesRecord& record, WriteAccess& access,
                  LoudnessSession* session);

    bool isKnown(const std::string& uid) const { return devices_.isKnown(uid); }
    /// The own level of a device that is not at it now; null for any other one.
    const DeviceLevel* ownLevel(const std::string& uid) const { return devices_.ownLevel(uid); }

    /// Raises the device now or when that is safe; the engine plays to it from here on. False when
    /// its level cannot be read and so could not be restored. Needs the session.
    bool raise(AudioDeviceID id, const std::string& uid, Sound sound);
    /// Tries the raise that waits, if any, and has it given up in the end.
    void retryRaise();
    /// Gives the device its own level back, where it may not be at it. True also for an unknown
    /// one.
    bool restore(AudioDeviceID id, const std::string& uid);
    void restoreAll();
    /// Whether a device that is there is still not at its own level.
    bool isAnyLeftToRestore();
    /// UID of the device that the engine plays to; empty: none.
    const std::string& active() const { return devices_.active; }
    /// The engine plays to none of the devices any more.
    void deactivate() { devices_.active.clear(); }

    /// Before the virtual device becomes the default: gives it level and mute of the present one.
    void passLevel(AudioDeviceID real, const std::string& uid, AudioDeviceID virtualDevice);
    /// Lowers a raised device that has become the default.
    void lowerDefault();

    /// Has the server's own thread lower each raised device that somebody makes the default.
    void protectRaised();
    /// Any thread that holds the lock.
    void unprotectAll();

    // What has changed on the server. These need the session.
    void virtualDeviceReturned();
    void sessionLevelChanged();
    void devicesChanged();
    void defaultChanged();
    void streamsChanged();
    void portsChanged();
    /// Gives devices that are there, not at their own level and in nobody's use, that level back.
    void restoreOrphaned();

    /// Brings the record up to date, with what it tells of the default.
    bool save();

  private:
    using State = GuardedDevice::State;
    using Entry = GuardedDevices::Entry;

    Entry* remember(AudioDeviceID id, const std::string& uid);
    void activate(Entry& entry);
    bool playsThroughAnotherPort(AudioDeviceID id, const Entry& entry);
    void leavePort(Entry& entry);
    void findNewcomers();
    void settled();
    void listenTo(AudioDeviceID id);
    void levelChanged(AudioDeviceID id);
    bool isProtection(AudioDeviceID id, const Entry& entry, const DeviceLevel& present);
    void takeOver(Entry& entry, const DeviceLevel& present);
    void takeVolumeOfPort(GuardedDevice& device, const DeviceLevel& present);
    bool isHeldBack(AudioDeviceID id);
    void tryPending();
    void waitForPending();
    void giveUpPending();
    void performRaise(AudioDeviceID id, Entry& entry);
    void lower(AudioDeviceID id, Entry& entry);
    bool restore(AudioDeviceID id, Entry& entry);
    bool giveBack(AudioDeviceID id, Entry& entry);
    void limitVirtualVolume(float limit);
    /// What the device in use takes off the session's volume while it stays at its own level.
    float ownShare();
    DeviceLevel sessionLevel(const Entry& entry);

    AudioServer& server_;
    RaisedDevicesRecord& record_;
    WriteAccess& access_;
    LoudnessSession* session_;
    VirtualLevel virtual_;
    GuardedDevices devices_;
    bool isPending_ = false; ///< the active device waits to be raised
    std::uint64_t pendingGeneration_ = 0;
    SettlingDevices settling_;
    std::set<AudioDeviceID> heard_; ///< those whose level is listened to
    Lifetime lifetime_;
};

} // namespace halvo
