#pragma once

#include "loudness/AudioServer.h"

#include <optional>
#include <vector>

struct pw_device;
struct pw_node;
struct spa_pod;

namespace halvo {

/// The part of a device's loudness that a parameter states, or that is to be changed.
struct LevelUpdate {
    std::optional<std::vector<float>> channelVolumes;
    std::optional<bool> muted;
};

/// One way out of a sound card, as its "Route" parameter states it.
struct CardRoute {
    int index = 0;
    /// Equal to `card.profile.device` of the node that plays through this route.
    int profileDevice = 0;
    bool isOutput = false;
    LevelUpdate level;
};

LevelUpdate readProps(const spa_pod& props);
/// Nothing when it is not a complete route.
std::optional<CardRoute> readRoute(const spa_pod& route);

/// Both need the connection's lock; false when the server does not take the request.
bool writeProps(pw_node& node, const LevelUpdate& update);
bool writeRoute(pw_device& card, const CardRoute& route, const LevelUpdate& update,
                LevelPersistence persistence);

} // namespace halvo
