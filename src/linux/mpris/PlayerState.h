#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>

namespace halvo::mpris {

enum class PlaybackStatus { stopped, paused, playing };

/// What a player tells about its track; texts are UTF-8 and of bounded length.
struct Metadata {
    std::string title;
    std::string artist;
    std::string album;
    std::string artURL;
    std::optional<std::int64_t> lengthMicros; ///< only when greater than 0

    bool operator==(const Metadata&) const = default;
};

/// What of a player was read from one message.
struct PlayerProperties {
    std::optional<PlaybackStatus> status;
    std::optional<Metadata> metadata;
    std::optional<std::string> desktopEntry;
};

/// Reads a dictionary of properties (a{sv}) at the message's position and goes past it. Players
/// disagree about types: a list counts as its first entry, every kind of number as a number; what
/// cannot be read counts as absent. False when it is no such dictionary.
bool readProperties(sd_bus_message* message, PlayerProperties& into);

} // namespace halvo::mpris
