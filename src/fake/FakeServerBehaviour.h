#pragma once

#include <chrono>
#include <cstdint>

namespace halvo {

/// Where kinds of sound servers differ so that ears notice. As it stands: one that knows everything
/// and keeps exactly what it is told to keep.
struct FakeServerBehaviour {
    /// Whose streams it can tell.
    enum class Streams : std::uint8_t {
        known,         ///< each one, and where it plays
        runsSomewhere, ///< whether a device runs, unless this program plays there, too
        unknown,       ///< none
    };
    /// Which levels a device returns with.
    enum class Keeps : std::uint8_t {
        meant,                ///< those that were meant to be kept
        allOfPortlessDevices, ///< these, and whatever a device without ports was set to
        all,                  ///< whatever a device was set to
    };

    Streams streams = Streams::known;
    Keeps keeps = Keeps::meant;
    /// A default that was asked for is remembered while its device is away. Else there is just the
    /// present one.
    bool remembersRequests = true;
    /// Setting the default returns when the streams have moved: a back end that cannot tell them
    /// waits for it.
    bool awaitsMoves = false;
    /// From a change until it outlives the server.
    std::chrono::milliseconds storeDelay{0};

    /// With its session manager.
    static FakeServerBehaviour pipeWire() {
        return {.keeps = Keeps::allOfPortlessDevices, .storeDelay = std::chrono::seconds(1)};
    }
    static FakeServerBehaviour coreAudio(Streams streams) {
        return {.streams = streams,
                .keeps = Keeps::all,
                .remembersRequests = false,
                .awaitsMoves = streams != Streams::known};
    }
};

} // namespace halvo
