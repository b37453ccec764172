#include "loudness/LevelRestorer.h"

#include "loudness/LevelScale.h"

#include <algorithm>
#include <utility>

namespace halvo {

bool LevelRestorer::restore(AudioDeviceID id, const std::string& uid) {
    auto* entry = devices_.find(uid);
    return entry == nullptr || restore(id, *entry);
}

bool LevelRestorer::restore(AudioDeviceID id, GuardedDevices::Entry& entry) {
    if (entry.first == devices_.active) devices_.isRaiseWaiting = false;
    // A start repeats what the last end did, whatever the record says.
    if (std::exchange(entry.second.isInherited, false)) entry.second.isDoubtful = true;
    return giveBack(id, entry);
}

bool LevelRestorer::giveBack(AudioDeviceID id, GuardedDevices::Entry& entry) {
    auto& [uid, device] = entry;
    const bool isDoubtful = std::exchange(device.isDoubtful, settling_.contains(id));
    if (device.state == State::own) {
        // A session manager may have brought back what it had kept while the device was raised.
        // What is not above is its user's wish by now.
        const auto present = isDoubtful ? server_.level(id) : std::nullopt;
        if (!present) return true;
        // Nobody was there between two sessions.
        const bool isExact = !devices_.isInSession() && device.isUnsure;
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
    (void)devices_.save(); // the old record would repeat this, which does no harm
    return isDone;
}

void LevelRestorer::restoreAll() {
    devices_.isRaiseWaiting = false;
    for (auto& entry : devices_) {
        if (const auto id = server_.deviceForUID(entry.first)) (void)restore(*id, entry);
    }
    (void)devices_.save(); // what it still tells of is put right at the next start
}

bool LevelRestorer::isAnyLeft() {
    return std::ranges::any_of(devices_, [this](const auto& entry) {
        return entry.second.state != State::own && server_.deviceForUID(entry.first);
    });
}

bool LevelRestorer::playsThroughAnotherPort(AudioDeviceID id, const GuardedDevices::Entry& entry) {
    const auto& found = entry.second.found;
    const auto present = server_.level(id);
    return present && !found.port.empty() && present->port != found.port;
}

void LevelRestorer::unprotectAll() {
    for (const auto& [uid, device] : devices_)
        server_.unprotect(uid);
}

} // namespace halvo
