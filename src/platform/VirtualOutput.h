#pragma once

namespace halvo {

/// How the virtual output device is known to the sound system, whoever makes it or looks for it.
constexpr const char* kVirtualDeviceUID = "HalvoVirtualOutput_UID";
constexpr const char* kVirtualDeviceName = "Halvo Virtual Output";

} // namespace halvo
