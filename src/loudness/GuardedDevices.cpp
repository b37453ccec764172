#include "loudness/GuardedDevices.h"

#include "loudness/LoudnessSession.h"
#include "loudness/RaisedDevicesRecord.h"
#include "loudness/WriteAccess.h"

namespace halvo {

GuardedDevices::GuardedDevices(RaisedDevicesRecord& record, WriteAccess& access,
                               const LoudnessSession* session)
    : record_(record), access_(access), session_(session) {
    for (const auto& [uid, recorded] : record_.devices) {
        auto& device = devices_[uid];
        device.state = recorded.isMoved ? State::orphaned : State::own;
        device.found = recorded.found;
        device.isInherited = true;
        device.isDoubtful = device.isUnsure = recorded.isUnsure;
    }
}

GuardedDevices::Entry* GuardedDevices::find(const std::string& uid) {
    const auto found = devices_.find(uid);
    return found == devices_.end() ? nullptr : &*found;
}

const DeviceLevel* GuardedDevices::ownLevel(const std::string& uid) const {
    const auto found = devices_.find(uid);
    const bool isMoved = found != devices_.end() && found->second.state != State::own;
    return isMoved ? &found->second.found : nullptr;
}

bool GuardedDevices::save() {
    const bool isSaved = write();
    if (isInSession() && session_->onRecord && !record_.isEmpty()) session_->onRecord();
    return isSaved;
}

bool GuardedDevices::write() {
    const auto phase = access_.phase();
    if (phase == WriteAccess::Phase::stopped) return false; // the file is somebody else's by now
    // At the end of a session there is little to tell of devices that are as they were.
    const bool isLast = phase == WriteAccess::Phase::restoring && isInSession();
    record_.devices.clear();
    for (const auto& [uid, device] : devices_) {
        const bool isMoved = device.state != State::own;
        const bool isUnsure = !isMoved && device.isUnsure;
        // The saved session or the default before may be about it.
        const bool isBefore = record_.origin && record_.origin->output == uid;
        const bool isKept = !isInSession() || device.isInherited || uid == active || isBefore;
        if (isMoved || isUnsure || (isKept && !isLast)) {
            record_.devices[uid] = {device.found, isMoved, isUnsure};
        }
    }
    return record_.save();
}

} // namespace halvo
