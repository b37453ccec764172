#include "loudness/PendingRaise.h"

#include "loudness/LevelScale.h"
#include "loudness/WriteAccess.h"
#include "platform/SystemLog.h"

#include <chrono>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

namespace {

/// By then the streams that follow the default have moved, on a busy machine too; what still plays
/// was put there.
constexpr MainQueue::Duration kLongestWait = 5s;

} // namespace

void PendingRaise::attempt() {
    if (!devices_.isRaiseWaiting) return;
    auto* entry = devices_.find(devices_.active);
    const auto id = server_.deviceForUID(devices_.active);
    if (entry == nullptr || !id) {
        devices_.isRaiseWaiting = false;
    } else if (!isHeldBack(*id)) {
        devices_.isRaiseWaiting = false;
        perform(*id, *entry);
    }
}

bool PendingRaise::isHeldBack(AudioDeviceID id) {
    return settling_.contains(id) || server_.defaultOutput() == id || server_.hasForeignStreams(id);
}

void PendingRaise::retry() {
    attempt();
    if (devices_.isRaiseWaiting) wait();
}

void PendingRaise::wait() {
    session_.mainQueue.after(kLongestWait,
                             [this, generation = ++generation_, alive = lifetime_.watch()] {
                                 if (alive.expired() || generation != generation_) return;
                                 const auto lock = access_.lock();
                                 if (access_.isRunning()) giveUp();
                             });
}

void PendingRaise::giveUp() {
    attempt();
    if (!devices_.isRaiseWaiting) return;
    const auto id = server_.deviceForUID(devices_.active);
    if (settling_.contains(*id)) return;       // from here its settling goes on, or
    if (server_.defaultOutput() == id) return; // the next change of the default
    devices_.isRaiseWaiting = false;
    devices_.find(devices_.active)->second.wasGivenUp = true;
    level_.protectRaised();
    session_.log.write("Halvo: Other programs play straight into " +
                       server_.name(*id).value_or(devices_.active) + "; its volume stays as it is");
}

void PendingRaise::perform(AudioDeviceID id, GuardedDevices::Entry& entry) {
    auto& [uid, device] = entry;
    const auto present = server_.level(id);
    if (!present || !isUsable(*present) || !access_.isRunning()) return;
    // While it waited, its level was its user's affair.
    if (device.state == State::own) device.found = *present;
    const auto before = std::exchange(device.state, State::raised);
    device.id = id;
    if (!devices_.save()) { // before the raise: a crash after it must find the record
        device.state = before;
        device.wasGivenUp = true;
        session_.log.write("Halvo: No record of raised devices can be written; the volume of " +
                           server_.name(id).value_or(uid) + " stays as it is");
        return;
    }
    session_.gate.closeFor(LoudnessSession::kGateTime);
    // Heard so far: the device's level under the virtual one's. That is to stay.
    if (std::exchange(device.wasGivenUp, false)) {
        const auto now = level_.get();
        if (now) (void)level_.setVolume(loudestVolume(*now) * loudestVolume(*present));
    } else {
        takeVolumeOfPort(device, *present);
    }
    device.port = present->port;
    level_.protectRaised();
    device.written = scaledTo(device.found, 1);
    if (device.sound == GuardedDevice::Sound::unmuted) device.written.muted = false;
    if (!access_.isRunning()) return; // another thread restores by the record
    if (server_.setLevel(id, device.written, LevelPersistence::temporary)) return;
    // Where it is at a third level by now, a person was faster: that change is still to be
    // followed.
    const auto now = server_.level(id);
    if (!now || isAlike(*now, *present)) device.state = State::orphaned;
}

void PendingRaise::takeVolumeOfPort(GuardedDevice& device, const DeviceLevel& present) {
    if (present.port.empty() || present.port == device.port) return;
    const auto former = device.portVolumes.find(present.port);
    if (former != device.portVolumes.end()) {
        (void)level_.setVolume(former->second); // each port as loud as its user left it
    } else {
        // When the device was chosen, its own level may not have been known yet.
        (void)level_.limitVolume(device.sessionVolume.value_or(loudestVolume(present)));
    }
}

} // namespace halvo
