#pragma once

#include <pipewire/pipewire.h>

#include <cstdio>

namespace halvo {

/// The server's configuration file for clients whose data thread has real-time priority. It is one
/// with the others' since 1.3.81; the older name still works there, with a warning. Any thread.
inline const char* realtimeClientConfiguration() {
    int major = 0;
    int minor = 0;
    int micro = 0;
    (void)std::sscanf(pw_get_library_version(), "%d.%d.%d", &major, &minor, &micro);
    const int version = major * 1'000'000 + minor * 1'000 + micro; // 0 is an old one
    return version >= 1'003'081 ? "client.conf" : "client-rt.conf";
}

} // namespace halvo
