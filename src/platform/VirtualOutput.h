#pragma once

namespace halvo {

/// The virtual output device's identity in the sound system, shared by driver and application.
constexpr const char* kVirtualDeviceUID = "HalvoVirtualOutput_UID";
constexpr const char* kVirtualDeviceName = "Halvo Virtual Output";

} // namespace halvo
