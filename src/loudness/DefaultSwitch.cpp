#include "loudness/DefaultSwitch.h"

#include "loudness/GuardedDevices.h"
#include "loudness/LevelRestorer.h"
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

bool DefaultSwitch::takeDefault(AudioDeviceID virtualDevice, RaisedDevices& raised) {
    const auto real = server_.defaultOutput();
    const auto uid = real && *real != virtualDevice ? server_.uid(*real) : std::nullopt;
    if (uid) {
        session_->gate.closeFor(LoudnessSession::kGateTime);
        raised.passLevel(*real, *uid, virtualDevice);
        auto configured = server_.configuredDefault();
        // Our own request that did not take effect says nothing about the user.
        if (configured != kVirtualDeviceUID) record_.origin = {*uid, std::move(configured)};
    } else if (record_.origin && !server_.deviceForUID(record_.origin->output)) {
        // The virtual device has come back as the default without the one before it.
        if (!devices_.active.empty()) record_.origin->output = devices_.active;
    }
    isInherited_ = false;
    record_.isDefaultOpen = true;
    (void)devices_.save();
    const bool isDone = server_.setDefaultOutput(virtualDevice);
    // The switch may have taken its time.
    if (uid) session_->gate.closeFor(LoudnessSession::kGateTime);
    raised.retryRaise();
    return isDone;
}

bool DefaultSwitch::restoreDefault(AudioDeviceID id, const std::string& uid) {
    (void)restorer_.restore(id, uid); // the default all the same
    const auto& origin = record_.origin;
    // The default was never taken away: asking for it now would only pin it.
    if (!origin && server_.defaultOutput() == id) return true;
    // The last session has given the default back; it is its user's since then.
    if (isInherited_ && !isDefaultVirtual()) return true;
    // One that the engine never played to was somebody's for an instant.
    const bool isKept = origin && isDefaultVirtual() && devices_.isKnown(origin->output);
    const auto before = isKept ? server_.deviceForUID(origin->output) : std::nullopt;
    if (!before || before == id) return makeDefault(id, uid);
    const auto output = origin->output;
    (void)restorer_.restore(*before, output);
    return makeDefault(*before, output);
}

bool DefaultSwitch::makeDefault(AudioDeviceID id, const std::string& uid) {
    // A person has asked for it already, and it is theirs.
    const bool isAskedFor = server_.configuredDefault() == uid;
    if (!isAskedFor || server_.defaultOutput() != id) {
        if (!server_.setDefaultOutput(id)) return false;
        if (!isAskedFor && !restoreConfiguredDefault(id, uid)) return false;
    }
    if (session_ == nullptr) return true; // the next start repeats this and needs the record
    // Until the session manager has kept it, a new session may have to repeat this.
    if (record_.origin) record_.origin->output = uid;
    isInherited_ = true;
    devices_.active.clear(); // the engine plays to none any more
    (void)devices_.save();   // what it still tells of is put right at the next start
    return true;
}

bool DefaultSwitch::restoreConfiguredDefault(AudioDeviceID id, const std::string& uid) {
    const auto configured = record_.origin ? record_.origin->configured : std::nullopt;
    // Asking for the device has pinned it. Undone where the user had not asked for it, and only
    // for the device that is the default all by itself.
    if (configured == uid) return true;
    if (configured && server_.deviceForUID(*configured)) return true;
    const bool isUndone =
        configured ? server_.setConfiguredDefault(*configured) : server_.releaseDefaultOutput();
    return !isUndone || server_.defaultOutput() == id || server_.setDefaultOutput(id);
}

bool DefaultSwitch::leaveVirtualDevice() {
    // Streams follow the default: never to a device that is still loud.
    if (restorer_.isAnyLeft() || !server_.defaultOutput()) return false;
    if (server_.configuredDefault() != kVirtualDeviceUID) return true;
    const auto origin = record_.origin;
    const auto id = origin ? server_.deviceForUID(origin->output) : std::nullopt;
    if (id && makeDefault(*id, origin->output)) return true;
    const bool isAskedFor = origin && origin->configured;
    const bool isDone = (isAskedFor && server_.setConfiguredDefault(*origin->configured)) ||
                        server_.releaseDefaultOutput();
    if (!isDone || !isDefaultVirtual()) return isDone;
    // The session manager stays with it; asked for a real one once, it stays with that.
    const auto real = anyRealDevice();
    return !real || (server_.setDefaultOutput(*real) && server_.releaseDefaultOutput());
}

std::optional<AudioDeviceID> DefaultSwitch::anyRealDevice() {
    for (const auto id : server_.deviceIDs().value_or(std::vector<AudioDeviceID>{})) {
        if (server_.hasOutputStreams(id) && server_.uid(id) != kVirtualDeviceUID) return id;
    }
    return std::nullopt;
}

bool DefaultSwitch::isDefaultVirtual() {
    const auto id = server_.defaultOutput();
    return !id || server_.uid(*id) == kVirtualDeviceUID;
}

void DefaultSwitch::silenceWhileAway() {
    // The clients play straight into the new default, while the ring still holds a little of
    // theirs: together the two would be louder than either. Taking the default opens the gate.
    if (server_.defaultOutput() != server_.deviceForUID(kVirtualDeviceUID))
        session_->gate.closeFor(kLongestAbsence);
}

} // namespace halvo
