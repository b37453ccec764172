#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>

namespace halvo::mpris {

enum class PlaybackStatus { stopped, paused, playing };

/// A track's metadata; texts are UTF-8 and of bounded length.
struct Metadata {
    std::string title;
    std::string artist;
    std::string album;
    std::string artURL;
    std::optional<std::int64_t> lengthMicros; ///< only when greater than 0

    bool operator==(const Metadata&) const = default;
};

/// The player properties in one message.
struct PlayerProperties {
    std::optional<PlaybackStatus> status;
    std::optional<Metadata> metadata;
    std::optional<std::string> desktopEntry;
};

/// Reads a dictionary of properties (a{sv}) and advances past it. Tolerates wrong types, because
/// players differ: a list counts as its first non-empty entry, any numeric type as a number;
/// unreadable values count as absent. False when there is no such dictionary.
bool readProperties(sd_bus_message* message, PlayerProperties& into);

} // namespace halvo::mpris
