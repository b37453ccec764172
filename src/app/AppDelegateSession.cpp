#include "app/AppDelegate.h"

#include "base/NumberText.h"
#include "platform/AudioHardware.h"
#include "platform/UserDefaults.h"
#include "platform/VirtualOutput.h"

namespace halvo {

namespace {

/// A device may have only some of the elements, so failures are ignored by design.
void setVolumeOfAllElements(AudioHardware& hardware, AudioDeviceID device, float volume) {
    for (const auto element : {VolumeElement::main, VolumeElement::left, VolumeElement::right}) {
        (void)hardware.setVolume(device, element, volume);
    }
}

} // namespace

void AppDelegate::saveDirtySession(const std::string& uid, float volume) {
    SavedSession::save(platform_.userDefaults, {uid, volume});
}

void AppDelegate::clearDirtySession() {
    SavedSession::clear(platform_.userDefaults);
}

void AppDelegate::restoreDirtySession() {
    const auto session = SavedSession::load(platform_.userDefaults);
    if (!session) return;
    log_.write("Dirty session detected — restoring " + session->uid + " to volume " +
               numberText(session->volume));
    auto& hardware = platform_.audioHardware;
    if (const auto device = hardware.deviceForUID(session->uid)) {
        setVolumeOfAllElements(hardware, *device, session->volume);
    }
    makeDefault(hardware, session->uid);
    clearDirtySession();
}

void AppDelegate::restoreOutput() {
    auto& hardware = platform_.audioHardware;
    const auto original =
        originalOutputUID_ ? hardware.deviceForUID(*originalOutputUID_) : std::nullopt;
    if (original) {
        if (originalRealVolume_) setVolumeOfAllElements(hardware, *original, *originalRealVolume_);
        makeDefault(hardware, *originalOutputUID_);
    } else {
        makeDefault(hardware, outputUID_); // where the music has been
    }
    leaveVirtualDevice(hardware);
}

void AppDelegate::handleTermination(AudioHardware& hardware, const UserDefaults& defaults) {
    // The keys stay by design: the next start repeats the restore, which does no harm.
    if (const auto session = SavedSession::load(defaults)) {
        restoreVolumeStatic(hardware, session->uid, session->volume);
    }
    leaveVirtualDevice(hardware);
}

void AppDelegate::leaveVirtualDevice(AudioHardware& hardware) {
    const auto device = hardware.defaultOutput();
    if (device && hardware.uid(*device) == kVirtualDeviceUID) (void)hardware.releaseDefaultOutput();
}

void AppDelegate::restoreVolumeStatic(AudioHardware& hardware, const std::string& uid,
                                      float volume) {
    const auto device = hardware.deviceForUID(uid);
    if (!device) return;
    setVolumeOfAllElements(hardware, *device, volume);
    (void)hardware.setDefaultOutput(*device);
    (void)hardware.setDefaultSystemOutput(*device);
}

void AppDelegate::makeDefault(AudioHardware& hardware, const std::string& uid) {
    // Resolved before each step: the device may go in between.
    if (const auto device = hardware.deviceForUID(uid)) (void)hardware.setDefaultOutput(*device);
    if (const auto device = hardware.deviceForUID(uid)) {
        (void)hardware.setDefaultSystemOutput(*device);
    }
}

} // namespace halvo
