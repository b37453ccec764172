#include "nowplaying/PlayerQuery.h"

#include "nowplaying/PlayerScripts.h"
#include "platform/ScriptRunner.h"
#include "platform/SystemLog.h"

#include <locale>
#include <sstream>
#include <vector>

namespace halvo {

namespace {

constexpr int kNoSuchObject = -1728; ///< the player has no current track
constexpr int kNotRunning = -600;

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (auto end = text.find(separator); end != std::string::npos;
         end = text.find(separator, start)) {
        parts.push_back(text.substr(start, end - start));
        start = end + separator.size();
    }
    parts.push_back(text.substr(start));
    return parts;
}

/// Parses the whole text as a number with a decimal point, in any locale.
std::optional<double> numberOf(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double number = 0;
    if (!(stream >> std::noskipws >> number)) return std::nullopt;
    return stream.peek() == std::istringstream::traits_type::eof() ? std::optional(number)
                                                                   : std::nullopt;
}

std::optional<PlayerAnswer> answerOf(const std::optional<std::string>& reply,
                                     const std::string& bundleID) {
    if (!reply || *reply == "NOT_RUNNING" || *reply == "STOPPED") return std::nullopt;
    const auto parts = split(*reply, "|||");
    if (parts.size() < 3) return std::nullopt;
    PlayerAnswer answer;
    answer.isPlaying = parts[0] == "playing";
    answer.track.title = parts[1];
    answer.track.artist = parts[2];
    if (parts.size() > 3) answer.track.album = parts[3];
    if (parts.size() > 4) answer.track.duration = numberOf(parts[4]);
    if (parts.size() > 5) answer.artworkURL = parts[5];
    answer.track.bundleID = bundleID;
    return answer;
}

} // namespace

std::optional<std::string> runAppleScript(ScriptRunner& scripts, SystemLog& log,
                                          const std::string& source) {
    const auto result = scripts.run(source);
    if (result) return *result;
    const auto& error = result.error();
    if (error.number != kNoSuchObject && error.number != kNotRunning) {
        log.write("Halvo: AppleScript error (code " + std::to_string(error.number) +
                  "): " + error.description);
    }
    return std::nullopt;
}

std::optional<PlayerAnswer> querySpotify(ScriptRunner& scripts, SystemLog& log) {
    return answerOf(runAppleScript(scripts, log, kSpotifyScript), "com.spotify.client");
}

std::optional<PlayerAnswer> queryAppleMusic(ScriptRunner& scripts, SystemLog& log) {
    auto answer = answerOf(runAppleScript(scripts, log, kMusicScript), "com.apple.Music");
    if (answer) answer->artworkURL.reset(); // only Spotify's script returns it
    return answer;
}

} // namespace halvo
