#include "nowplaying/PlayerScripts.h"

#include <array>
#include <cstddef>

namespace halvo {

namespace {

struct Words {
    const char* helper;
    const char* verb;
};

/// In the order of the enumeration.
constexpr std::array<Words, 5> kWords = {{{"play", "play"},
                                          {"pause", "pause"},
                                          {"toggle_play_pause", "playpause"},
                                          {"next_track", "next track"},
                                          {"previous_track", "previous track"}}};

const Words& wordsOf(MediaCommand command) {
    return kWords.at(static_cast<std::size_t>(command));
}

} // namespace

const std::string kMusicScript = R"(tell application "System Events"
    if not (exists process "Music") then return "NOT_RUNNING"
end tell
tell application "Music"
    set ps to player state as text
    if ps is "stopped" then return "STOPPED"
    set t to name of current track
    set a to artist of current track
    set al to album of current track
    set d to duration of current track
    return ps & "|||" & t & "|||" & a & "|||" & al & "|||" & (d as text)
end tell)";

const std::string kSpotifyScript = R"(tell application "System Events"
    if not (exists process "Spotify") then return "NOT_RUNNING"
end tell
tell application "Spotify"
    set ps to player state as text
    if ps is "stopped" then return "STOPPED"
    set t to name of current track
    set a to artist of current track
    set al to album of current track
    set d to duration of current track
    set art to artwork url of current track
    return ps & "|||" & t & "|||" & a & "|||" & al & "|||" & (d / 1000 as text) & "|||" & art
end tell)";

std::string commandScript(MediaCommand command) {
    const std::string verb = wordsOf(command).verb;
    return R"(tell application "System Events"
    if exists process "Spotify" then
        tell application "Spotify" to )" +
           verb + R"(
        return "ok"
    end if
    if exists process "Music" then
        tell application "Music" to )" +
           verb + R"(
        return "ok"
    end if
end tell
return "none")";
}

std::string helperWord(MediaCommand command) {
    return wordsOf(command).helper;
}

} // namespace halvo
