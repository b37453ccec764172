#include "loudness/DefaultSwitch.h"

#include "loudness/RaisedDevices.h"
#include "loudness/RaisedDevicesRecord.h"
#include "platform/VirtualOutput.h"

#include <chrono>
#include <optional>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

namespace {

/// By then a default that another program changed has been taken again, if it ever is.
constexpr MainQueue::Duration kLongestAbsence = 1s;

} // namespace

bool DefaultSwitch::takeDefault(AudioDeviceID virtualDevice) {
    const auto real = server_.defaultOutput();
    const auto uid = real && *real != virtualDevice ? server_.uid(*real) : std::nullopt;
    if (uid) {
        session_->gate.closeFor(LoudnessSession::kGateTime);
        devices_.passLevel(*real, *uid, virtualDevice);
        auto configured = server_.configuredDefault();
        // Our own request that did not take effect says nothing about the user.
        if (configured != kVirtualDeviceUID) record_.origin = {*uid, std::move(configured)};
        (void)devices_.save();
    }
    const bool isDone = server_.setDefaultOutput(virtualDevice);
    // The switch may have taken its time.
    if (uid) session_->gate.closeFor(LoudnessSession::kGateTime);
    devices_.retryRaise();
    return isDone;
}

bool DefaultSwitch::restoreDefault(AudioDeviceID id, const std::string& uid) {
    (void)devices_.restore(id, uid); // the default all the same
    // The default was never taken away: asking for it now would only pin it.
    if (!record_.origin && server_.defaultOutput() == id) return true;
    if (!server_.setDefaultOutput(id)) return false;
    if (!restoreConfiguredDefault(id, uid)) return false;
    if (session_ == nullptr) return true; // the next start repeats this and needs the record
    record_.origin.reset();
    devices_.deactivate();
    (void)devices_.save(); // what it still tells of is put right at the next start
    return true;
}

bool DefaultSwitch::restoreConfiguredDefault(AudioDeviceID id, const std::string& uid) {
    const auto& origin = record_.origin;
    // Asking for the device has pinned it. Undone where the user had not asked for it, and only
    // for the device that was the default all by itself.
    if (!origin || origin->output != uid || origin->configured == uid) return true;
    const bool isElsewhere = origin->configured && server_.deviceForUID(*origin->configured);
    if (isElsewhere || !server_.setConfiguredDefault(origin->configured)) return true;
    return server_.defaultOutput() == id || server_.setDefaultOutput(id);
}

bool DefaultSwitch::leaveVirtualDevice() {
    // Streams follow the default: never to a device that is still loud.
    if (devices_.isAnyLeftToRestore() || !server_.defaultOutput()) return false;
    if (server_.configuredDefault() != kVirtualDeviceUID) return true;
    const auto& origin = record_.origin;
    const auto id = origin ? server_.deviceForUID(origin->output) : std::nullopt;
    if (id && restoreDefault(*id, origin->output)) return true;
    return server_.setConfiguredDefault(origin ? origin->configured : std::nullopt);
}

void DefaultSwitch::silenceWhileAway() {
    // The clients play straight into the new default, while the ring still holds a little of
    // theirs: together the two would be louder than either. Taking the default opens the gate.
    if (server_.defaultOutput() != server_.deviceForUID(kVirtualDeviceUID))
        session_->gate.closeFor(kLongestAbsence);
}

} // namespace halvo
