#pragma once

#include "loudness/AudioServer.h"

#include <optional>
#include <string>
#include <vector>

struct pw_device;
struct pw_node;
struct spa_pod;

namespace halvo {

/// The part of a device's level that a parameter reports or sets.
struct LevelUpdate {
    std::optional<std::vector<float>> channelVolumes;
    std::optional<bool> muted;
};

/// One output route of a sound card, from its "Route" parameter.
struct CardRoute {
    int index = 0;
    std::string name; ///< stable, unlike the index
    /// Equal to `card.profile.device` of the node that plays through this route.
    int profileDevice = 0;
    bool isOutput = false;
    LevelUpdate level;
};

LevelUpdate readProps(const spa_pod& props);
/// Nothing for an incomplete route.
std::optional<CardRoute> readRoute(const spa_pod& route);

/// Both need the connection's lock; false when the request cannot be sent.
bool writeProps(pw_node& node, const LevelUpdate& update);
bool writeRoute(pw_device& card, const CardRoute& route, const LevelUpdate& update,
                LevelPersistence persistence);

} // namespace halvo
