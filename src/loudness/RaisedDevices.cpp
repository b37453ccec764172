#include "loudness/RaisedDevices.h"

#include "loudness/LevelScale.h"
#include "loudness/RaisedDevicesRecord.h"
#include "loudness/WriteAccess.h"
#include "platform/SystemLog.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace halvo {

using namespace std::chrono_literals;

namespace {

/// By then the streams that follow the default have moved, on a busy machine too; what still plays
/// was put there.
constexpr MainQueue::Duration kLongestWait = 5s;
/// By then the session manager has given a port its own level, on a busy machine too.
constexpr MainQueue::Duration kPortSettles = 500ms;

bool isUsable(const DeviceLevel& level) {
    return !level.channelVolumes.empty() &&
           std::ranges::all_of(level.channelVolumes,
                               [](float volume) { return std::isfinite(volume) && volume >= 0; });
}

} // namespace

RaisedDevices::RaisedDevices(AudioServer& server, RaisedDevicesRecord& record, WriteAccess& access,
                             LoudnessSession* session)
    : server_(server), record_(record), access_(access), session_(session), virtual_(server) {
    for (const auto& [uid, recorded] : record_.devices) {
        auto& device = devices_[uid];
        device.state = recorded.isMoved ? State::orphaned : State::own;
        device.found = recorded.found;
    }
    ports_ = presentPorts();
}

const DeviceLevel* RaisedDevices::ownLevel(const std::string& uid) const {
    const auto found = devices_.find(uid);
    const bool isMoved = found != devices_.end() && found->second.state != State::own;
    return isMoved ? &found->second.found : nullptr;
}

RaisedDevices::Entry* RaisedDevices::find(const std::string& uid) {
    const auto found = devices_.find(uid);
    return found == devices_.end() ? nullptr : &*found;
}

bool RaisedDevices::raise(AudioDeviceID id, const std::string& uid, Sound sound) {
    auto* entry = remember(id, uid);
    if (entry == nullptr) return false; // what cannot be restored is not raised
    auto& device = entry->second;
    if (uid != active_) {
        activate(*entry);
        if (unsettled_.contains(id)) session_->gate.closeFor(kPortSettles);
    }
    const bool wantsMore = sound == Sound::unmuted && device.sound != sound && device.found.muted;
    if (sound == Sound::unmuted) device.sound = sound;
    if (device.state == State::raised && !wantsMore) return true;
    const bool isNew = !std::exchange(isPending_, true);
    (void)save(); // an unwritable record is no reason to stay silent
    tryPending();
    if (isPending_ && isNew) waitForPending();
    return true;
}

RaisedDevices::Entry* RaisedDevices::remember(AudioDeviceID id, const std::string& uid) {
    if (ownLevel(uid) != nullptr) return find(uid); // what was found then still holds
    const auto level = server_.level(id);
    if (!level || !isUsable(*level)) return nullptr;
    devices_[uid].found = *level;
    return find(uid);
}

void RaisedDevices::activate(Entry& entry) {
    const auto now = virtual_.get();
    if (auto* former = find(active_); former != nullptr && now) {
        former->second.sessionVolume = loudestVolume(*now);
    }
    active_ = entry.first;
    isPending_ = false;
    auto& device = entry.second;
    device.port.clear();
    device.portVolumes.clear();
    device.wasGivenUp = false;
    device.sound = Sound::asFound;
    limitVirtualVolume(device.sessionVolume.value_or(loudestVolume(device.found)));
}

bool RaisedDevices::isHeldBack(AudioDeviceID id) {
    return unsettled_.contains(id) || server_.defaultOutput() == id ||
           server_.hasForeignStreams(id);
}

void RaisedDevices::retryRaise() {
    tryPending();
    if (isPending_) waitForPending();
}

void RaisedDevices::tryPending() {
    if (!isPending_) return;
    auto* entry = find(active_);
    const auto id = server_.deviceForUID(active_);
    if (entry == nullptr || !id) {
        isPending_ = false;
    } else if (!isHeldBack(*id)) {
        isPending_ = false;
        performRaise(*id, *entry);
    }
}

void RaisedDevices::performRaise(AudioDeviceID id, Entry& entry) {
    auto& [uid, device] = entry;
    const auto present = server_.level(id);
    if (!present || !isUsable(*present) || !access_.isRunning()) return;
    // While it waited, its level was its user's affair.
    if (device.state == State::own) device.found = *present;
    device.state = State::raised;
    device.id = id;
    (void)save(); // before the raise: a crash after it must find the record
    session_->gate.closeFor(LoudnessSession::kGateTime);
    // Heard so far: the device's level under the virtual one's. That is to stay.
    if (std::exchange(device.wasGivenUp, false)) {
        const auto now = virtual_.get();
        if (now) (void)virtual_.setVolume(loudestVolume(*now) * loudestVolume(*present));
    } else {
        takeVolumeOfPort(device, *present);
    }
    device.port = present->port;
    protectRaised();
    auto level = scaledTo(device.found, 1);
    if (device.sound == Sound::unmuted) level.muted = false;
    if (!access_.isRunning()) return; // another thread restores by the record
    if (!server_.setLevel(id, level, LevelPersistence::temporary)) device.state = State::orphaned;
}

void RaisedDevices::takeVolumeOfPort(GuardedDevice& device, const DeviceLevel& present) {
    if (present.port.empty() || present.port == device.port) return;
    const auto former = device.portVolumes.find(present.port);
    if (former != device.portVolumes.end()) {
        (void)virtual_.setVolume(former->second); // each port as loud as its user left it
    } else {
        // When the device was chosen, its own level may not have been known yet.
        (void)virtual_.limitVolume(device.sessionVolume.value_or(loudestVolume(present)));
    }
}

void RaisedDevices::waitForPending() {
    session_->mainQueue.after(kLongestWait,
                              [this, generation = ++pendingGeneration_, alive = lifetime_.watch()] {
                                  if (alive.expired() || generation != pendingGeneration_) return;
                                  const auto lock = access_.lock();
                                  if (access_.isRunning()) giveUpPending();
                              });
}

void RaisedDevices::giveUpPending() {
    tryPending();
    if (!isPending_) return;
    const auto id = server_.deviceForUID(active_);
    if (unsettled_.contains(*id)) return;      // from here its settling goes on, or
    if (server_.defaultOutput() == id) return; // the next change of the default
    isPending_ = false;
    find(active_)->second.wasGivenUp = true;
    session_->log.write("Halvo: Other programs play straight into " +
                        server_.name(*id).value_or(active_) + "; its volume stays as it is");
}

void RaisedDevices::lower(AudioDeviceID id, Entry& entry) {
    auto& [uid, device] = entry;
    const auto level = sessionLevel(entry);
    const auto present = server_.level(id);
    device.state = State::lowered;
    // The server's own thread has done it where the default moved here.
    if (!present || isLouder(*present, level)) {
        (void)server_.setLevel(id, level, LevelPersistence::temporary); // nothing else would help
    }
    server_.unprotect(uid);
    (void)save();
}

void RaisedDevices::lowerDefault() {
    const auto id = server_.defaultOutput();
    const auto uid = id ? server_.uid(*id) : std::nullopt;
    auto* entry = uid ? find(*uid) : nullptr;
    if (entry != nullptr && entry->second.state == State::raised) lower(*id, *entry);
}

void RaisedDevices::passLevel(AudioDeviceID real, const std::string& uid,
                              AudioDeviceID virtualDevice) {
    lowerDefault();
    auto* entry = find(uid);
    if (entry != nullptr && entry->second.state == State::orphaned) (void)restore(real, *entry);
    const auto level = server_.level(real);
    const auto now = server_.level(virtualDevice);
    if (!level || !now) return;
    if (!active_.empty() && active_ != uid) {
        // The engine plays elsewhere, where this device's level may be far too loud.
        limitVirtualVolume(loudestVolume(*level));
        return;
    }
    if (entry != nullptr) {
        entry->second.wasGivenUp = false;
        entry->second.port = level->port;
    }
    DeviceLevel passed{now->channelVolumes, level->muted};
    std::ranges::fill(passed.channelVolumes, loudestVolume(*level));
    (void)server_.setLevel(virtualDevice, passed, LevelPersistence::temporary); // good enough
    protectRaised();
}

void RaisedDevices::limitVirtualVolume(float limit) {
    if (virtual_.limitVolume(limit)) protectRaised();
}

DeviceLevel RaisedDevices::sessionLevel(const Entry& entry) {
    const auto& [uid, device] = entry;
    const auto now = virtual_.get();
    const float former = device.sessionVolume.value_or(loudestVolume(device.found));
    float volume = now ? loudestVolume(*now) : former;
    if (uid != active_) volume = std::min(volume, former);
    auto level = scaledTo(device.found, volume);
    level.muted = (now && now->muted) || (level.muted && device.sound == Sound::asFound);
    return level;
}

void RaisedDevices::protectRaised() {
    for (const auto& entry : devices_) {
        if (entry.second.state == State::raised) {
            server_.protect(entry.first, sessionLevel(entry));
        }
    }
}

void RaisedDevices::unprotectAll() {
    for (const auto& [uid, device] : devices_)
        server_.unprotect(uid);
}

bool RaisedDevices::restore(AudioDeviceID id, const std::string& uid) {
    auto* entry = find(uid);
    return entry == nullptr || restore(id, *entry);
}

bool RaisedDevices::restore(AudioDeviceID id, Entry& entry) {
    auto& [uid, device] = entry;
    if (uid == active_) isPending_ = false;
    // A level that is not ours may be another one than was found by now.
    if (device.state == State::own) return true;
    server_.unprotect(uid);
    // The level that was found is another port's, and that one gets it from the session manager.
    const bool isDone = playsThroughAnotherPort(id, entry) ||
                        server_.setLevel(id, device.found, LevelPersistence::saved);
    device.state = isDone ? State::own : State::orphaned;
    (void)save(); // the old record would repeat this, which does no harm
    return isDone;
}

void RaisedDevices::restoreAll() {
    isPending_ = false;
    for (auto& entry : devices_) {
        if (const auto id = server_.deviceForUID(entry.first)) (void)restore(*id, entry);
    }
    (void)save(); // what it still tells of is put right at the next start
}

void RaisedDevices::restoreOrphaned() {
    for (auto& entry : devices_) {
        if (entry.second.state != State::orphaned) continue;
        const auto id = server_.deviceForUID(entry.first);
        if (!id) continue;
        if (playsThroughAnotherPort(*id, entry)) {
            leavePort(entry);
            continue;
        }
        // Back as the default after it had vanished: streams play into it at the session's level.
        if (entry.second.id != 0 && server_.defaultOutput() == id) {
            entry.second.id = *id;
            lower(*id, entry);
        } else {
            (void)restore(*id, entry); // tried again when something changes
        }
    }
}

bool RaisedDevices::isAnyLeftToRestore() {
    return std::ranges::any_of(devices_, [this](const Entry& entry) {
        return entry.second.state != State::own && server_.deviceForUID(entry.first);
    });
}

void RaisedDevices::devicesChanged() {
    findNewPorts();
    for (auto& [uid, device] : devices_) {
        // One that vanished stays protected: it may come back as the default.
        const bool isInUse = device.state == State::raised || device.state == State::lowered;
        if (isInUse && server_.deviceForUID(uid) != device.id) device.state = State::orphaned;
    }
    restoreOrphaned();
    tryPending();
}

std::map<AudioDeviceID, std::string> RaisedDevices::presentPorts() {
    std::map<AudioDeviceID, std::string> ports;
    for (const auto id : server_.deviceIDs().value_or(std::vector<AudioDeviceID>{})) {
        const auto level = server_.level(id);
        if (level && !level->port.empty()) ports[id] = level->port;
    }
    return ports;
}

void RaisedDevices::findNewPorts() {
    const auto before = std::exchange(ports_, presentPorts());
    for (const auto& [id, port] : ports_) {
        const auto former = before.find(id);
        if (former != before.end() && former->second == port) continue;
        waitForOwnLevel(id);
        // It may appear at full scale, and with fewer channels that add up.
        const bool isNew = former == before.end();
        if (isNew && server_.uid(id) == active_) session_->gate.closeFor(kPortSettles);
    }
    std::erase_if(unsettled_, [this](const auto& entry) { return !ports_.contains(entry.first); });
}

void RaisedDevices::defaultChanged() {
    if (isPending_ && server_.defaultOutput() != server_.deviceForUID(active_)) retryRaise();
}

void RaisedDevices::streamsChanged() {
    tryPending();
    for (auto& entry : devices_) {
        const auto& [uid, device] = entry;
        if (device.state != State::raised || !server_.hasForeignStreams(device.id)) continue;
        // Somebody has begun to play straight into a device at full scale.
        lower(device.id, entry);
        if (uid != active_) continue;
        isPending_ = true;
        waitForPending();
    }
}

void RaisedDevices::portsChanged() {
    findNewPorts();
    for (auto& entry : devices_) {
        const auto id = server_.deviceForUID(entry.first);
        if (id && playsThroughAnotherPort(*id, entry)) leavePort(entry);
    }
}

bool RaisedDevices::playsThroughAnotherPort(AudioDeviceID id, const Entry& entry) {
    const auto& found = entry.second.found;
    const auto present = server_.level(id);
    return present && !found.port.empty() && present->port != found.port;
}

void RaisedDevices::leavePort(Entry& entry) {
    auto& [uid, device] = entry;
    device.sessionVolume.reset(); // was the former port's
    const bool isWaiting = uid == active_ && isPending_;
    if (device.state == State::own && !isWaiting) return;
    server_.unprotect(uid);
    device.state = State::own;
    device.sound = Sound::asFound; // a port that its user muted stays silent
    (void)save();
    if (uid != active_) return;
    const auto now = virtual_.get();
    if (now && !device.port.empty()) device.portVolumes[device.port] = loudestVolume(*now);
    isPending_ = true;
}

void RaisedDevices::waitForOwnLevel(AudioDeviceID id) {
    const auto generation = unsettled_[id] = ++settlingGeneration_;
    session_->mainQueue.after(kPortSettles, [this, id, generation, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        const auto lock = access_.lock();
        const auto found = unsettled_.find(id);
        if (found == unsettled_.end() || found->second != generation) return;
        unsettled_.erase(found);
        if (access_.isRunning()) retryRaise();
    });
}

bool RaisedDevices::save() {
    const auto phase = access_.phase();
    if (phase == WriteAccess::Phase::stopped) return false; // the file is somebody else's by now
    // At the end of a session there is nothing to tell of devices that are as they were.
    const bool isEnd = phase == WriteAccess::Phase::restoring && session_ != nullptr;
    const bool isLast = isEnd && !record_.origin;
    record_.devices.clear();
    for (const auto& [uid, device] : devices_) {
        const bool isMoved = device.state != State::own;
        if (isMoved || !isLast) record_.devices[uid] = {device.found, isMoved};
    }
    const bool isSaved = record_.save();
    if (session_ != nullptr && session_->onRecord && !record_.isEmpty()) session_->onRecord();
    return isSaved;
}

} // namespace halvo
