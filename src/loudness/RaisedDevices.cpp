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

bool isInDoubt(const GuardedDevice& device) {
    return device.state == GuardedDevice::State::own && device.isDoubtful;
}

bool isUsable(const DeviceLevel& level) {
    return !level.channelVolumes.empty() &&
           std::ranges::all_of(level.channelVolumes,
                               [](float volume) { return std::isfinite(volume) && volume >= 0; });
}

} // namespace

RaisedDevices::RaisedDevices(AudioServer& server, RaisedDevicesRecord& record, WriteAccess& access,
                             LoudnessSession* session)
    : server_(server), record_(record), access_(access), session_(session), virtual_(server),
      devices_(record, access,
               session != nullptr ? GuardedDevices::Owner::session
                                  : GuardedDevices::Owner::restore),
      settling_(server, session, [this] { settled(); }) {}

bool RaisedDevices::raise(AudioDeviceID id, const std::string& uid, Sound sound) {
    auto* entry = remember(id, uid);
    if (entry == nullptr) return false; // what cannot be restored is not raised
    auto& device = entry->second;
    listenTo(id);
    if (uid != devices_.active) {
        activate(*entry);
        if (settling_.contains(id)) session_->gate.closeFor(SettlingDevices::kTime);
    }
    if (device.isMutedByHand) sound = Sound::asFound;
    const bool wantsMore = sound == Sound::unmuted && device.sound != sound && device.found.muted;
    if (sound == Sound::unmuted) device.sound = sound;
    if (device.state == State::raised && !wantsMore) return true;
    const bool isNew = !std::exchange(isPending_, true);
    (void)save(); // what is raised is recorded once more, or stays as it is
    tryPending();
    if (isPending_ && isNew) waitForPending();
    return true;
}

RaisedDevices::Entry* RaisedDevices::remember(AudioDeviceID id, const std::string& uid) {
    auto* known = devices_.find(uid);
    if (known != nullptr && isInDoubt(known->second)) (void)giveBack(id, *known);
    if (ownLevel(uid) != nullptr) return known; // what was found then still holds
    const auto level = server_.level(id);
    if (!level || !isUsable(*level)) return nullptr;
    auto& entry = devices_.at(uid);
    entry.second.found = *level;
    return &entry;
}

void RaisedDevices::activate(Entry& entry) {
    const auto now = virtual_.get();
    if (auto* former = devices_.find(devices_.active); former != nullptr && now) {
        const float heard = loudestVolume(*now) * ownShare();
        former->second.sessionVolume = heard;
        limitVirtualVolume(heard); // two volumes in a row are one from here on
    } else {
        virtual_.reduceFollowed(ownShare());
    }
    devices_.active = entry.first;
    isPending_ = false;
    auto& device = entry.second;
    device.port.clear();
    device.portVolumes.clear();
    device.wasGivenUp = false;
    device.sound = Sound::asFound;
    device.isMutedByHand = false;
    // The last session's end has been repeated by now.
    for (auto& [uid, known] : devices_)
        known.isInherited = false;
    limitVirtualVolume(device.sessionVolume.value_or(loudestVolume(device.found)));
}

bool RaisedDevices::isHeldBack(AudioDeviceID id) {
    return settling_.contains(id) || server_.defaultOutput() == id || server_.hasForeignStreams(id);
}

void RaisedDevices::retryRaise() {
    tryPending();
    if (isPending_) waitForPending();
}

void RaisedDevices::tryPending() {
    if (!isPending_) return;
    auto* entry = devices_.find(devices_.active);
    const auto id = server_.deviceForUID(devices_.active);
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
    const auto before = std::exchange(device.state, State::raised);
    device.id = id;
    if (!save()) { // before the raise: a crash after it must find the record
        device.state = before;
        device.wasGivenUp = true;
        session_->log.write("Halvo: No record of raised devices can be written; the volume of " +
                            server_.name(id).value_or(uid) + " stays as it is");
        return;
    }
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
    device.written = scaledTo(device.found, 1);
    if (device.sound == Sound::unmuted) device.written.muted = false;
    if (!access_.isRunning()) return; // another thread restores by the record
    if (!server_.setLevel(id, device.written, LevelPersistence::temporary)) {
        device.state = State::orphaned;
    }
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
    const auto id = server_.deviceForUID(devices_.active);
    if (settling_.contains(*id)) return;       // from here its settling goes on, or
    if (server_.defaultOutput() == id) return; // the next change of the default
    isPending_ = false;
    devices_.find(devices_.active)->second.wasGivenUp = true;
    protectRaised();
    session_->log.write("Halvo: Other programs play straight into " +
                        server_.name(*id).value_or(devices_.active) +
                        "; its volume stays as it is");
}

void RaisedDevices::lower(AudioDeviceID id, Entry& entry) {
    auto& device = entry.second;
    const auto level = sessionLevel(entry);
    const auto present = server_.level(id);
    device.state = State::lowered;
    // The server's own thread has done it where the default moved here.
    const bool isDone = present && !isLouder(*present, level);
    device.written = isDone ? *present : level;
    if (!isDone) {
        (void)server_.setLevel(id, level, LevelPersistence::temporary); // nothing else would help
    }
    (void)save();
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
    if (entry != nullptr && entry->second.state == State::orphaned) (void)restore(real, *entry);
    const auto level = server_.level(real);
    const auto now = server_.level(virtualDevice);
    if (!level || !now) return;
    if (!devices_.active.empty() && devices_.active != uid) {
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
    if (!virtual_.limitVolume(limit)) return;
    session_->gate.closeAtLeastFor(LoudnessSession::kGateTime);
    protectRaised();
}

float RaisedDevices::ownShare() {
    const auto* entry = devices_.find(devices_.active);
    return entry != nullptr && entry->second.wasGivenUp ? loudestVolume(entry->second.found) : 1;
}

DeviceLevel RaisedDevices::sessionLevel(const Entry& entry) {
    const auto& [uid, device] = entry;
    const auto now = virtual_.get();
    const float former = device.sessionVolume.value_or(loudestVolume(device.found));
    float volume = now ? loudestVolume(*now) : former;
    if (uid != devices_.active) volume = std::min(volume * ownShare(), former);
    auto level = scaledTo(device.found, volume);
    level.muted = (now && now->muted) || (level.muted && device.sound == Sound::asFound);
    return level;
}

void RaisedDevices::virtualDeviceReturned() {
    if (!virtual_.limitToFollowed()) return;
    session_->gate.closeAtLeastFor(LoudnessSession::kGateTime);
    protectRaised();
}

void RaisedDevices::sessionLevelChanged() {
    virtual_.follow();
    protectRaised();
}

void RaisedDevices::protectRaised() {
    for (const auto& entry : devices_) {
        if (entry.second.state == State::raised || entry.second.state == State::lowered) {
            server_.protect(entry.first, sessionLevel(entry));
        }
    }
}

void RaisedDevices::unprotectAll() {
    for (const auto& [uid, device] : devices_)
        server_.unprotect(uid);
}

bool RaisedDevices::restore(AudioDeviceID id, const std::string& uid) {
    auto* entry = devices_.find(uid);
    return entry == nullptr || restore(id, *entry);
}

bool RaisedDevices::restore(AudioDeviceID id, Entry& entry) {
    if (entry.first == devices_.active) isPending_ = false;
    // A start repeats what the last end did, whatever the record says.
    if (std::exchange(entry.second.isInherited, false)) entry.second.isDoubtful = true;
    return giveBack(id, entry);
}

bool RaisedDevices::giveBack(AudioDeviceID id, Entry& entry) {
    auto& [uid, device] = entry;
    const bool isDoubtful = std::exchange(device.isDoubtful, settling_.contains(id));
    if (device.state == State::own) {
        // A session manager may have brought back what it had kept while the device was raised.
        // What is not above is its user's wish by now.
        const auto present = isDoubtful ? server_.level(id) : std::nullopt;
        if (!present) return true;
        // Nobody was there between two sessions.
        const bool isExact = session_ == nullptr && device.isUnsure;
        if (isExact ? isAlike(*present, device.found) : !isAbove(*present, device.found)) {
            return true;
        }
        if (!isExact) device.found = lowerOf(device.found, *present);
    }
    server_.unprotect(uid);
    // The level that was found is another port's, and that one gets it from the session manager.
    const bool isDone = playsThroughAnotherPort(id, entry) ||
                        server_.setLevel(id, device.found, LevelPersistence::saved);
    device.state = isDone ? State::own : State::orphaned;
    device.isUnsure = isDone;
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
        const bool isOrphaned = entry.second.state == State::orphaned;
        const auto id = server_.deviceForUID(entry.first);
        if (!id) continue;
        listenTo(*id);
        if (!isOrphaned && !isInDoubt(entry.second)) continue;
        if (playsThroughAnotherPort(*id, entry)) {
            leavePort(entry);
            continue;
        }
        // Back as the default after it had vanished: streams play into it at the session's level.
        if (isOrphaned && entry.second.id != 0 && server_.defaultOutput() == id) {
            entry.second.id = *id;
            lower(*id, entry);
        } else {
            (void)giveBack(*id, entry); // tried again when something changes
        }
    }
}

bool RaisedDevices::isAnyLeftToRestore() {
    return std::ranges::any_of(devices_, [this](const Entry& entry) {
        return entry.second.state != State::own && server_.deviceForUID(entry.first);
    });
}

void RaisedDevices::devicesChanged() {
    findNewcomers();
    for (auto& [uid, device] : devices_) {
        // One that vanished stays protected: it may come back as the default.
        const bool isInUse = device.state == State::raised || device.state == State::lowered;
        if (isInUse && server_.deviceForUID(uid) != device.id) device.state = State::orphaned;
    }
    restoreOrphaned();
    tryPending();
}

void RaisedDevices::findNewcomers() {
    for (const auto id : settling_.update()) {
        // It may appear at full scale, and with fewer channels that add up.
        if (server_.uid(id) == devices_.active) session_->gate.closeFor(SettlingDevices::kTime);
    }
}

void RaisedDevices::settled() {
    const auto lock = access_.lock();
    if (!access_.isRunning()) return;
    restoreOrphaned();
    retryRaise();
}

void RaisedDevices::defaultChanged() {
    if (isPending_ && server_.defaultOutput() != server_.deviceForUID(devices_.active))
        retryRaise();
}

void RaisedDevices::streamsChanged() {
    tryPending();
    for (auto& entry : devices_) {
        const auto& [uid, device] = entry;
        if (device.state != State::raised || !server_.hasForeignStreams(device.id)) continue;
        // Somebody has begun to play straight into a device at full scale.
        lower(device.id, entry);
        if (uid != devices_.active) continue;
        isPending_ = true;
        waitForPending();
    }
}

void RaisedDevices::portsChanged() {
    findNewcomers();
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
    const bool isWaiting = uid == devices_.active && isPending_;
    if (device.state == State::own && !isWaiting) return;
    server_.unprotect(uid);
    device.state = State::own;
    device.sound = Sound::asFound; // a port that its user muted stays silent
    (void)save();
    if (uid != devices_.active) return;
    const auto now = virtual_.get();
    if (now && !device.port.empty()) device.portVolumes[device.port] = loudestVolume(*now);
    isPending_ = true;
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
    if (settling_.contains(id) || playsThroughAnotherPort(id, *entry)) return;
    if (device.state == State::own) {
        device.found = *present;
        protectRaised();
        (void)save(); // a later change repeats it
    } else if (device.state != State::orphaned && !isAlike(*present, device.written) &&
               !isProtection(id, *entry, *present)) {
        takeOver(*entry, *present);
    }
}

/// Whether the server's own thread has set that, because the device becomes the default.
bool RaisedDevices::isProtection(AudioDeviceID id, const Entry& entry, const DeviceLevel& present) {
    const bool isWanted =
        server_.configuredDefault() == entry.first || server_.defaultOutput() == id;
    return isWanted && isAlike(present, sessionLevel(entry));
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
        protectRaised();
        (void)save(); // a later change repeats it
        return;
    }
    server_.unprotect(uid);
    device.state = State::own;
    device.found = present;
    if (isWish) device.sound = Sound::asFound; // muted by hand, it stays muted
    if (uid == devices_.active) {
        device.wasGivenUp = isWish;
        protectRaised();
        isPending_ = !isWish;
        if (isPending_) waitForPending();
    }
    (void)save();
    if (!isWish) return tryPending();
    session_->log.write("Halvo: The volume of " + server_.name(device.id).value_or(uid) +
                        " was changed; it is the device's own now");
}

bool RaisedDevices::save() {
    const bool isSaved = devices_.save();
    if (session_ != nullptr && session_->onRecord && !record_.isEmpty()) session_->onRecord();
    return isSaved;
}

} // namespace halvo
