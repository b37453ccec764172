#include "linux/mpris/LinuxScriptRunner.h"

#include "linux/mpris/PlayerSurvey.h"

#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace halvo {

namespace {

using Result = std::expected<std::optional<std::string>, ScriptError>;
using mpris::PlaybackStatus;
using mpris::SurveyedPlayer;

constexpr std::string_view kSpotify = "Spotify";
constexpr std::string_view kMusic = "Music";

std::string tell(std::string_view application) {
    return "tell application \"" + std::string(application) + '"';
}

bool isFor(std::string_view application, const SurveyedPlayer& player) {
    return (player.name == "spotify") == (application == kSpotify);
}

/// The player for an application's name; the survey is sorted by preference.
const SurveyedPlayer* find(const std::vector<SurveyedPlayer>& players,
                           std::string_view application) {
    for (const auto& player : players) {
        if (isFor(application, player)) return &player;
    }
    return nullptr;
}

/// Seconds with a decimal point, in any locale.
std::string secondsText(std::int64_t micros) {
    const auto fraction = std::to_string(1'000'000 + micros % 1'000'000);
    return std::to_string(micros / 1'000'000) + '.' + fraction.substr(1);
}

std::string answer(const SurveyedPlayer* player, std::string_view application) {
    if (player == nullptr) return "NOT_RUNNING";
    if (player->status == PlaybackStatus::stopped) return "STOPPED";
    const auto& track = player->metadata;
    const auto length = track.lengthMicros.transform(secondsText).value_or("");
    std::string reply = player->status == PlaybackStatus::playing ? "playing" : "paused";
    for (const auto& part : {track.title, track.artist, track.album, length})
        reply += "|||" + part;
    if (application == kSpotify) reply += "|||" + track.artURL;
    return reply;
}

/// The scripts' verbs and their MPRIS methods.
const char* methodFor(std::string_view verb) {
    constexpr std::array<std::pair<std::string_view, const char*>, 5> kMethods{{
        {"play", "Play"},
        {"pause", "Pause"},
        {"playpause", "PlayPause"},
        {"next track", "Next"},
        {"previous track", "Previous"},
    }};
    for (const auto& [word, method] : kMethods) {
        if (verb == word) return method;
    }
    return nullptr;
}

/// The verb in a script's `tell` for an application; empty when there is none.
std::string_view verbFor(std::string_view source, std::string_view application) {
    const auto words = tell(application) + " to ";
    const auto start = source.find(words);
    if (start == std::string_view::npos) return {};
    const auto rest = source.substr(start + words.size());
    return rest.substr(0, rest.find('\n'));
}

Result ask(mpris::PlayerSurvey& survey, std::string_view application) {
    const auto players = survey.players();
    return answer(find(players, application), application);
}

Result command(mpris::PlayerSurvey& survey, const std::string& source) {
    const auto players = survey.players();
    for (const auto application : {kSpotify, kMusic}) {
        const auto* method = methodFor(verbFor(source, application));
        const auto* player = find(players, application);
        if (method == nullptr || player == nullptr) continue;
        if (const auto error = survey.call(player->busName, method)) {
            return std::unexpected(ScriptError{0, *error});
        }
        return "ok";
    }
    return "none";
}

} // namespace

Result LinuxScriptRunner::run(const std::string& source) {
    const bool isCommand = methodFor(verbFor(source, kSpotify)) != nullptr;
    const bool isQuestion = source.contains("player state as text");
    if (!isCommand && !isQuestion) return std::nullopt;
    auto survey = mpris::PlayerSurvey::connect();
    if (!survey) return isCommand ? "none" : "NOT_RUNNING"; // without a bus there are no players
    if (isCommand) return command(*survey, source);
    return ask(*survey, source.contains(tell(kSpotify)) ? kSpotify : kMusic);
}

} // namespace halvo
