#pragma once

#include "nowplaying/NowPlayingTrack.h"

#include <optional>
#include <string>

namespace halvo {

class ScriptRunner;
class SystemLog;

/// A player's answer to its script.
struct PlayerAnswer {
    NowPlayingTrack track;
    bool isPlaying = false;
    std::optional<std::string> artworkURL;
};

/// Runs a script and returns its text. A player that does not run or has no track is not an error;
/// any other failure is logged. Blocks: background threads only, like the two below.
std::optional<std::string> runAppleScript(ScriptRunner& scripts, SystemLog& log,
                                          const std::string& source);

/// Nothing when the player does not run, is stopped or gave an unexpected answer.
std::optional<PlayerAnswer> querySpotify(ScriptRunner& scripts, SystemLog& log);
std::optional<PlayerAnswer> queryAppleMusic(ScriptRunner& scripts, SystemLog& log);

} // namespace halvo
