#include "loudness/LoudnessGuard.h"

#include "loudness/LevelScale.h"
#include "loudness/OutputGate.h"
#include "platform/SystemLog.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace halvo {

using namespace std::chrono_literals;

namespace {

/// By then the streams that follow the default have moved, on a busy machine too; what still plays
/// was put there.
constexpr MainQueue::Duration kLongestWait = 5s;
/// By then the engine's own gain has followed the virtual device.
constexpr MainQueue::Duration kGateTime = 60ms;

bool isUsable(const DeviceLevel& level) {
    return !level.channelVolumes.empty() &&
           std::ranges::all_of(level.channelVolumes,
                               [](float volume) { return std::isfinite(volume) && volume >= 0; });
}

} // namespace

bool LoudnessGuard::raise(AudioDeviceID id, const std::string& uid, Sound sound) {
    auto* entry = remember(id, uid);
    if (entry == nullptr) return false; // what cannot be given back is not raised
    auto& device = entry->second;
    if (uid != active_) activate(*entry);
    const bool wantsMore = sound == Sound::unmuted && device.sound != sound && device.found.muted;
    if (sound == Sound::unmuted) device.sound = sound;
    if (device.state == State::raised && !wantsMore) return true;
    const bool isNew = !std::exchange(isPending_, true);
    (void)save(); // an unwritable record is no reason to stay silent
    tryPending();
    if (isPending_ && isNew) waitForPending();
    return true;
}

LoudnessGuard::Entry* LoudnessGuard::remember(AudioDeviceID id, const std::string& uid) {
    if (auto* entry = find(uid); entry != nullptr && entry->second.state != State::own) {
        return entry; // what was found then still holds
    }
    const auto level = server_.level(id);
    if (!level || !isUsable(*level)) return nullptr;
    auto& device = devices_[uid];
    device.found = *level;
    return find(uid);
}

void LoudnessGuard::activate(Entry& entry) {
    const auto now = virtualLevel();
    if (auto* former = find(active_); former != nullptr && now) {
        former->second.sessionVolume = loudestVolume(*now);
    }
    active_ = entry.first;
    isPending_ = false;
    auto& device = entry.second;
    device.wasGivenUp = false;
    device.sound = Sound::asFound;
    limitVirtualVolume(device.sessionVolume.value_or(loudestVolume(device.found)));
}

bool LoudnessGuard::isHeldBack(AudioDeviceID id) {
    return server_.defaultOutput() == id || server_.hasForeignStreams(id);
}

void LoudnessGuard::tryPending() {
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

void LoudnessGuard::performRaise(AudioDeviceID id, Entry& entry) {
    auto& [uid, device] = entry;
    const auto present = server_.level(id);
    if (!present || !isUsable(*present) || isSilenced_) return;
    // While it waited, its level was its user's affair.
    if (device.state == State::own) device.found = *present;
    device.state = State::raised;
    device.id = id;
    (void)save(); // before the raise: a crash after it must find the record
    closeGateFor(kGateTime);
    // Heard so far: the device's level under the virtual one's. That is to stay.
    if (std::exchange(device.wasGivenUp, false)) {
        const auto now = virtualLevel();
        if (now) setVirtualVolume(loudestVolume(*now) * loudestVolume(*present));
    }
    protectRaised();
    auto level = scaledTo(device.found, 1);
    if (device.sound == Sound::unmuted) level.muted = false;
    if (isSilenced_) return;
    if (!server_.setLevel(id, level, LevelPersistence::temporary)) device.state = State::left;
}

void LoudnessGuard::waitForPending() {
    mainQueue_->after(kLongestWait, [this, generation = ++pendingGeneration_,
                                     giveUp = whileAlive(&LoudnessGuard::giveUpPending),
                                     alive = lifetime_.watch()] {
        if (!alive.expired() && generation == pendingGeneration_) giveUp();
    });
}

void LoudnessGuard::giveUpPending() {
    tryPending();
    if (!isPending_) return;
    const auto id = server_.deviceForUID(active_);
    if (server_.defaultOutput() == id) return; // the next change of the default goes on from here
    isPending_ = false;
    find(active_)->second.wasGivenUp = true;
    log_->write("Halvo: Other programs play straight into " + server_.name(*id).value_or(active_) +
                "; its volume stays as it is");
}

void LoudnessGuard::lower(AudioDeviceID id, Entry& entry) {
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

void LoudnessGuard::lowerDefault() {
    const auto id = server_.defaultOutput();
    const auto uid = id ? server_.uid(*id) : std::nullopt;
    auto* entry = uid ? find(*uid) : nullptr;
    if (entry != nullptr && entry->second.state == State::raised) lower(*id, *entry);
}

bool LoudnessGuard::capture(AudioDeviceID virtualDevice) {
    const auto real = server_.defaultOutput();
    const auto uid = real && *real != virtualDevice ? server_.uid(*real) : std::nullopt;
    if (uid) {
        closeGateFor(kGateTime);
        takeOver(virtualDevice, *real, *uid);
        auto configured = server_.configuredDefault();
        // Our own request that did not take effect says nothing about the user.
        if (configured != kVirtualDeviceUID) record_.origin = {*uid, std::move(configured)};
        (void)save();
    }
    const bool isDone = server_.setDefaultOutput(virtualDevice);
    if (uid) closeGateFor(kGateTime); // the switch may have taken its time
    tryPending();
    if (isPending_) waitForPending();
    return isDone;
}

void LoudnessGuard::takeOver(AudioDeviceID virtualDevice, AudioDeviceID real,
                             const std::string& uid) {
    lowerDefault();
    auto* entry = find(uid);
    if (entry != nullptr && entry->second.state == State::left) (void)restoreDevice(real, *entry);
    const auto level = server_.level(real);
    const auto now = server_.level(virtualDevice);
    if (!level || !now) return;
    if (!active_.empty() && active_ != uid) {
        // The engine plays elsewhere, where this device's level may be far too loud.
        limitVirtualVolume(loudestVolume(*level));
        return;
    }
    if (entry != nullptr) entry->second.wasGivenUp = false;
    DeviceLevel taken{now->channelVolumes, level->muted};
    std::ranges::fill(taken.channelVolumes, loudestVolume(*level));
    (void)server_.setLevel(virtualDevice, taken, LevelPersistence::temporary); // as good as it gets
    protectRaised();
}

void LoudnessGuard::closeGateFor(MainQueue::Duration time) {
    gate_->close();
    mainQueue_->after(time, [this, generation = ++gateGeneration_, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        // After a long turn the news of the virtual device is still queued, and the core takes
        // one turn more to act on it.
        mainQueue_->async([this, generation, alive] {
            if (alive.expired()) return;
            mainQueue_->async([this, generation, alive] {
                if (!alive.expired() && generation == gateGeneration_) gate_->open();
            });
        });
    });
}

} // namespace halvo
