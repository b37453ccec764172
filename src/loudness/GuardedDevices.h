#pragma once

#include "loudness/GuardedDevice.h"

#include <map>
#include <string>
#include <utility>

namespace halvo {

class RaisedDevicesRecord;
class WriteAccess;

/// What the loudness guard knows of the devices that it was asked to raise, by UID, and the record
/// of it on disk. The caller holds the lock of `WriteAccess`, but for the reads. One thread.
class GuardedDevices {
  public:
    using State = GuardedDevice::State;
    using Entry = std::pair<const std::string, GuardedDevice>;

    /// Whose record it is: of a running application, or of an earlier one that is put right.
    enum class Owner : std::uint8_t { session, restore };

    /// Begins with what the record tells. What is passed in must outlive the object.
    GuardedDevices(RaisedDevicesRecord& record, WriteAccess& access, Owner owner);

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

    /// Brings the record up to date. False when it cannot be written, or is somebody else's.
    bool save();

  private:
    RaisedDevicesRecord& record_;
    WriteAccess& access_;
    Owner owner_;
    std::map<std::string, GuardedDevice> devices_;
};

} // namespace halvo
