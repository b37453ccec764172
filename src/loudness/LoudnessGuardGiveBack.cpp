#include "loudness/LoudnessGuard.h"
#include "platform/VirtualOutput.h"

#include <algorithm>

namespace halvo {

bool LoudnessGuard::restoreDevice(AudioDeviceID id, Entry& entry) {
    auto& [uid, device] = entry;
    if (uid == active_) isPending_ = false;
    // A level that is not ours may be another one than was found by now.
    if (device.state == State::own) return true;
    server_.unprotect(uid);
    const bool isDone = server_.setLevel(id, device.found, LevelPersistence::saved);
    device.state = isDone ? State::own : State::left;
    (void)save(); // the old record would repeat this, which does no harm
    return isDone;
}

void LoudnessGuard::restoreAll() {
    isPending_ = false;
    for (auto& entry : devices_) {
        if (const auto id = server_.deviceForUID(entry.first)) (void)restoreDevice(*id, entry);
    }
    (void)save(); // what it still tells of is put right at the next start
}

void LoudnessGuard::restoreOrphaned() {
    for (auto& entry : devices_) {
        if (entry.second.state != State::left) continue;
        const auto id = server_.deviceForUID(entry.first);
        if (!id) continue;
        // Back as the default after it had vanished: streams play into it at the session's level.
        if (entry.second.id != 0 && server_.defaultOutput() == id) {
            entry.second.id = *id;
            lower(*id, entry);
        } else {
            (void)restoreDevice(*id, entry); // tried again when something changes
        }
    }
}

bool LoudnessGuard::leaveVirtualDevice() {
    const std::scoped_lock lock(writing_);
    const auto isMissed = [this](const Entry& entry) {
        return entry.second.state != State::own && server_.deviceForUID(entry.first);
    };
    // Streams follow the default: never to a device that is still loud.
    if (std::ranges::any_of(devices_, isMissed) || !server_.defaultOutput()) return false;
    if (server_.configuredDefault() != kVirtualDeviceUID) return true;
    const auto& origin = record_.origin;
    const auto id = origin ? server_.deviceForUID(origin->output) : std::nullopt;
    if (id && restoreDefault(*id, origin->output)) return true;
    return server_.setConfiguredDefault(origin ? origin->configured : std::nullopt);
}

bool LoudnessGuard::restoreDefault(AudioDeviceID id, const std::string& uid) {
    if (auto* entry = find(uid)) (void)restoreDevice(id, *entry); // the default all the same
    // The default was never taken away: asking for it now would only pin it.
    if (!record_.origin && server_.defaultOutput() == id) return true;
    if (!server_.setDefaultOutput(id)) return false;
    if (!restoreConfiguredDefault(id, uid)) return false;
    if (mainQueue_ == nullptr) return true; // the next start repeats this and needs the record
    record_.origin.reset();
    active_.clear();
    (void)save(); // what it still tells of is put right at the next start
    return true;
}

bool LoudnessGuard::restoreConfiguredDefault(AudioDeviceID id, const std::string& uid) {
    const auto& origin = record_.origin;
    // Asking for the device has pinned it. Undone where the user had not asked for it, and only
    // for the device that was the default all by itself.
    if (!origin || origin->output != uid || origin->configured == uid) return true;
    const bool isElsewhere = origin->configured && server_.deviceForUID(*origin->configured);
    if (isElsewhere || !server_.setConfiguredDefault(origin->configured)) return true;
    return server_.defaultOutput() == id || server_.setDefaultOutput(id);
}

} // namespace halvo
