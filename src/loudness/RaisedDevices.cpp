#include "loudness/RaisedDevices.h"

#include "loudness/LevelScale.h"
#include "loudness/WriteAccess.h"
#include "platform/SystemLog.h"

#include <algorithm>
#include <utility>

namespace halvo {

namespace {

bool isInDoubt(const GuardedDevice& device) {
    return device.state == GuardedDevice::State::own && device.isDoubtful;
}

} // namespace

bool RaisedDevices::raise(AudioDeviceID id, const std::string& uid, Sound sound) {
    auto* entry = remember(id, uid);
    if (entry == nullptr) return false; // what cannot be restored is not raised
    auto& device = entry->second;
    listenTo(id);
    if (uid != devices_.active) {
        activate(*entry);
        if (settling_.contains(id)) session_.gate.closeFor(SettlingDevices::kTime);
    }
    if (device.isMutedByHand) sound = Sound::asFound;
    const bool wantsMore = sound == Sound::unmuted && device.sound != sound && device.found.muted;
    if (sound == Sound::unmuted) device.sound = sound;
    if (device.state == State::raised && !wantsMore) return true;
    const bool isNew = !std::exchange(devices_.isRaiseWaiting, true);
    (void)devices_.save(); // what is raised is recorded once more, or stays as it is
    pending_.attempt();
    if (devices_.isRaiseWaiting && isNew) pending_.wait();
    return true;
}

RaisedDevices::Entry* RaisedDevices::remember(AudioDeviceID id, const std::string& uid) {
    auto* known = devices_.find(uid);
    if (known != nullptr && isInDoubt(known->second)) (void)restorer_.giveBack(id, *known);
    if (devices_.ownLevel(uid) != nullptr) return known; // what was found then still holds
    const auto level = server_.level(id);
    if (!level || !isUsable(*level)) return nullptr;
    auto& entry = devices_.at(uid);
    entry.second.found = *level;
    return &entry;
}

void RaisedDevices::activate(Entry& entry) {
    level_.leaveActive();
    devices_.active = entry.first;
    devices_.isRaiseWaiting = false;
    auto& device = entry.second;
    device.port.clear();
    device.portVolumes.clear();
    device.wasGivenUp = false;
    device.sound = Sound::asFound;
    device.isMutedByHand = false;
    // The last session's end has been repeated by now.
    for (auto& [uid, known] : devices_)
        known.isInherited = false;
    level_.limitSilently(device.sessionVolume.value_or(loudestVolume(device.found)));
}

void RaisedDevices::lower(AudioDeviceID id, Entry& entry) {
    auto& device = entry.second;
    const auto level = level_.at(entry);
    const auto present = server_.level(id);
    device.state = State::lowered;
    // The server's own thread has done it where the default moved here.
    const bool isDone = present && !isLouder(*present, level);
    device.written = isDone ? *present : level;
    if (!isDone) {
        (void)server_.setLevel(id, level, LevelPersistence::temporary); // nothing else would help
    }
    (void)devices_.save();
}

void RaisedDevices::lowerDefault() {
    const auto id = server_.defaultOutput();
    const auto uid = id ? server_.uid(*id) : std::nullopt;
    auto* entry = uid ? devices_.find(*uid) : nullptr;
    if (entry != nullptr && entry->second.state == State::raised) lower(*id, *entry);
}

void RaisedDevices::passLevel(AudioDeviceID real, const std::string& uid,
                              AudioDeviceID virtualDevice) {
    lowerDefault();
    auto* entry = devices_.find(uid);
    if (entry != nullptr && entry->second.state == State::orphaned)
        (void)restorer_.restore(real, uid);
    const auto level = server_.level(real);
    const auto now = server_.level(virtualDevice);
    if (!level || !now) return;
    if (!devices_.active.empty() && devices_.active != uid) {
        // The engine plays elsewhere, where this device's level may be far too loud.
        level_.limitSilently(loudestVolume(*level));
        return;
    }
    if (entry != nullptr) {
        entry->second.wasGivenUp = false;
        entry->second.port = level->port;
    }
    DeviceLevel passed{now->channelVolumes, level->muted};
    std::ranges::fill(passed.channelVolumes, loudestVolume(*level));
    (void)server_.setLevel(virtualDevice, passed, LevelPersistence::temporary); // good enough
    level_.protectRaised();
}

void RaisedDevices::restoreOrphaned() {
    for (auto& entry : devices_) {
        const bool isOrphaned = entry.second.state == State::orphaned;
        const auto id = server_.deviceForUID(entry.first);
        if (!id) continue;
        listenTo(*id);
        if (!isOrphaned && !isInDoubt(entry.second)) continue;
        if (restorer_.playsThroughAnotherPort(*id, entry)) {
            leavePort(entry);
            continue;
        }
        // Back as the default after it had vanished: streams play into it at the session's level.
        if (isOrphaned && entry.second.id != 0 && server_.defaultOutput() == id) {
            entry.second.id = *id;
            lower(*id, entry);
        } else {
            (void)restorer_.giveBack(*id, entry); // tried again when something changes
        }
    }
}

void RaisedDevices::devicesChanged() {
    findNewcomers();
    for (auto& [uid, device] : devices_) {
        // One that vanished stays protected: it may come back as the default.
        const bool isInUse = device.state == State::raised || device.state == State::lowered;
        if (isInUse && server_.deviceForUID(uid) != device.id) device.state = State::orphaned;
    }
    restoreOrphaned();
    pending_.attempt();
}

void RaisedDevices::findNewcomers() {
    for (const auto id : settling_.update()) {
        // It may appear at full scale, and with fewer channels that add up.
        if (server_.uid(id) == devices_.active) session_.gate.closeFor(SettlingDevices::kTime);
    }
}

void RaisedDevices::settled() {
    restoreOrphaned();
    pending_.retry();
}

void RaisedDevices::defaultChanged() {
    if (devices_.isRaiseWaiting && server_.defaultOutput() != server_.deviceForUID(devices_.active))
        pending_.retry();
}

void RaisedDevices::streamsChanged() {
    pending_.attempt();
    for (auto& entry : devices_) {
        const auto& [uid, device] = entry;
        if (device.state != State::raised || !server_.hasForeignStreams(device.id)) continue;
        // Somebody has begun to play straight into a device at full scale.
        lower(device.id, entry);
        if (uid != devices_.active) continue;
        devices_.isRaiseWaiting = true;
        pending_.wait();
    }
}

void RaisedDevices::portsChanged() {
    findNewcomers();
    for (auto& entry : devices_) {
        const auto id = server_.deviceForUID(entry.first);
        if (id && restorer_.playsThroughAnotherPort(*id, entry)) leavePort(entry);
    }
}

void RaisedDevices::leavePort(Entry& entry) {
    auto& [uid, device] = entry;
    device.sessionVolume.reset(); // was the former port's
    const bool isWaiting = uid == devices_.active && devices_.isRaiseWaiting;
    if (device.state == State::own && !isWaiting) return;
    server_.unprotect(uid);
    device.state = State::own;
    device.sound = Sound::asFound; // a port that its user muted stays silent
    (void)devices_.save();
    if (uid != devices_.active) return;
    const auto now = level_.get();
    if (now && !device.port.empty()) device.portVolumes[device.port] = loudestVolume(*now);
    devices_.isRaiseWaiting = true;
}

void RaisedDevices::listenTo(AudioDeviceID id) {
    if (!heard_.insert(id).second) return;
    const auto changed = [this, id, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        const auto lock = access_.lock();
        if (access_.isRunning()) levelChanged(id);
    };
    (void)server_.listenToVolume(id, VolumeElement::main, changed); // without it what was found
    (void)server_.listenToMute(id, changed);                        // is given back in any case
}

void RaisedDevices::levelChanged(AudioDeviceID id) {
    const auto uid = server_.uid(id);
    auto* entry = uid ? devices_.find(*uid) : nullptr;
    const auto present = server_.level(id);
    if (entry == nullptr || !present || !isUsable(*present)) return;
    auto& device = entry->second;
    // The session manager's affair.
    if (settling_.contains(id) || restorer_.playsThroughAnotherPort(id, *entry)) return;
    if (device.state == State::own) {
        device.found = *present;
        level_.protectRaised();
        (void)devices_.save(); // a later change repeats it
    } else if (device.state != State::orphaned && !isAlike(*present, device.written) &&
               !isProtection(id, *entry, *present)) {
        takeOver(*entry, *present);
    }
}

/// Whether the server's own thread has set that, because the device becomes the default.
bool RaisedDevices::isProtection(AudioDeviceID id, const Entry& entry, const DeviceLevel& present) {
    const bool isWanted =
        server_.configuredDefault() == entry.first || server_.defaultOutput() == id;
    return isWanted && isAlike(present, level_.at(entry));
}

void RaisedDevices::takeOver(Entry& entry, const DeviceLevel& present) {
    auto& [uid, device] = entry;
    // Some session managers set the level again that they have kept: nobody's wish.
    const bool isWish = !isAlike(present, device.found);
    if (isWish) device.isMutedByHand = present.muted;
    auto onlyMute = device.written;
    onlyMute.muted = present.muted;
    if (isWish && isAlike(present, onlyMute)) { // the volume beneath is still this program's
        device.written.muted = device.found.muted = present.muted;
        device.sound = Sound::asFound;
        level_.protectRaised();
        (void)devices_.save(); // a later change repeats it
        return;
    }
    server_.unprotect(uid);
    device.state = State::own;
    device.found = present;
    if (isWish) device.sound = Sound::asFound; // muted by hand, it stays muted
    if (uid == devices_.active) {
        device.wasGivenUp = isWish;
        level_.protectRaised();
        devices_.isRaiseWaiting = !isWish;
        if (devices_.isRaiseWaiting) pending_.wait();
    }
    (void)devices_.save();
    if (!isWish) return pending_.attempt();
    session_.log.write("Halvo: The volume of " + server_.name(device.id).value_or(uid) +
                       " was changed; it is the device's own now");
}

} // namespace halvo
