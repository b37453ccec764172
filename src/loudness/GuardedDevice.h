#pragma once

#include "loudness/AudioServer.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace halvo {

/// What the loudness guard knows of a device that it was asked to raise.
struct GuardedDevice {
    enum class State : std::uint8_t {
        own,      ///< at a level that is not this program's
        raised,   ///< at full scale
        lowered,  ///< was raised; at the session's level because others play straight into it
        orphaned, ///< not at its own level, in nobody's use: an earlier process's, or it vanished
    };
    enum class Sound : std::uint8_t { asFound, unmuted };

    State state = State::own;
    DeviceLevel found;                  ///< own level; out of date while `own` and not in use
    DeviceLevel written;                ///< what this program set last
    AudioDeviceID id = 0;               ///< the appearance that was raised, 0: not by this process
    std::optional<float> sessionVolume; ///< the virtual device's when it was last in use
    Sound sound = Sound::asFound;       ///< whether a raise lifts its mute, too
    std::string port;                   ///< through which the session was last heard; may be empty
    std::map<std::string, float> portVolumes; ///< the virtual device's, by the port it was for
    bool wasGivenUp = false;                  ///< plays at its own level under the engine's gain
    bool isMutedByHand = false;               ///< while it is in use: no raise lifts the mute
    bool isInherited = false; ///< an earlier process's, which this one may still have to repeat
    bool isDoubtful = false;  ///< own, but the session manager may bring a louder level back
    bool isUnsure = false;    ///< given back, but the session manager may still keep another level
};

} // namespace halvo
