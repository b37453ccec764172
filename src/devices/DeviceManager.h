#pragma once

#include "base/Lifetime.h"
#include "base/Published.h"
#include "devices/AudioOutputDevice.h"
#include "platform/AudioHardware.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo {

class MainQueue;

/// The output devices: the list, the system's default, the selected one and the one that was
/// connected last. Main thread only.
class DeviceManager {
  public:
    DeviceManager(AudioHardware& hardware, MainQueue& queue) : hardware_(hardware), queue_(queue) {}

    /// Every device with output streams, in the server's order, virtual ones included.
    Published<std::vector<AudioOutputDevice>> outputDevices;
    /// UID of the device to play on; empty until one is selected.
    Published<std::string> selectedDeviceID;
    /// UID of the system's default output.
    Published<std::string> defaultDeviceUID;
    /// UID of the device that appeared last; assigned each time, even if it is the same one.
    Published<std::optional<std::string>> newlyConnectedDeviceUID;

    /// Reads the list and then the default. If the list cannot be read, nothing changes.
    void refreshDevices();
    /// Reads the default; it also becomes the selection if there is none yet.
    void updateDefaultDevice();
    void installDefaultDeviceListener();
    void installDeviceListListener();

    std::optional<AudioDeviceID> audioDeviceID(const std::string& uid) const;
    /// The listed device of that UID.
    std::optional<AudioOutputDevice> listedDevice(const std::string& uid) const;

  private:
    std::optional<std::string> deviceUID(AudioDeviceID device) const;
    void handleDeviceListChange();

    AudioHardware& hardware_;
    MainQueue& queue_;
    Lifetime lifetime_;
};

} // namespace halvo
