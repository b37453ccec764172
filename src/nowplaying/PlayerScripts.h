#pragma once

#include "nowplaying/MediaCommand.h"

#include <string>

namespace halvo {

/// The script that asks a player for its state, title, artist, album, duration in seconds and, of
/// Spotify, the artwork's address, in one text separated by "|||".
extern const std::string kSpotifyScript;
extern const std::string kMusicScript;

/// The script that sends a command to the first running player.
std::string commandScript(MediaCommand command);

/// The helper's word for a command.
std::string helperWord(MediaCommand command);

} // namespace halvo
