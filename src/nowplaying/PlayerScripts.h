#pragma once

#include "nowplaying/MediaCommand.h"

#include <string>

namespace halvo {

/// The script that asks a player for its state, title, artist, album, duration in seconds and, of
/// Spotify, the artwork's address, in one text separated by "|||".
extern const std::string kSpotifyScript;
extern const std::string kMusicScript;

/// The script that hands a command to the first player that runs.
std::string commandScript(MediaCommand command);

/// The word by which the helper knows a command.
std::string helperWord(MediaCommand command);

} // namespace halvo
