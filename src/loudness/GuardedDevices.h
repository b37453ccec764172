#pragma once

#include "loudness/GuardedDevice.h"

#include <map>
#include <string>
#include <utility>

namespace halvo {

class RaisedDevicesRecord;
class WriteAccess;
struct LoudnessSession;

/// What the loudness guard knows of the devices that it was asked to raise, by UID, and the record
/// of it on disk. The caller holds the lock of `WriteAccess`, but for the reads. One thread.
class GuardedDevices {
  public:
    using State = GuardedDevice::State;
    using Entry = std::pair<const std::string, GuardedDevice>;

    /// Begins with what the record tells. `session` is null where an earlier process's record is
    /// put right and left to the next start. What is passed in must outlive the object.
    GuardedDevices(RaisedDevicesRecord& record, WriteAccess& access,
                   const LoudnessSession* session);

    bool isInSession() const { return session_ != nullptr; }

    Entry* find(const std::string& uid);
    /// Finds it or begins with nothing known.
    Entry& at(const std::string& uid) { return *devices_.try_emplace(uid).first; }
    bool isKnown(const std::string& uid) const { return devices_.contains(uid); }
    /// The own level of a device that is not at it now; null for any other one.
    const DeviceLevel* ownLevel(const std::string& uid) const;

    auto begin() { return devices_.begin(); }
    auto end() { return devices_.end(); }

    /// UID of the device that the engine plays to; empty: none.
    std::string active;
    bool isRaiseWaiting = false; ///< of the active device

    /// Brings the record up to date, with what it tells of the default. False when it cannot be
    /// written, or is somebody else's.
    bool save();

  private:
    bool write();

    RaisedDevicesRecord& record_;
    WriteAccess& access_;
    const LoudnessSession* session_;
    std::map<std::string, GuardedDevice> devices_;
};

} // namespace halvo
