#include "PlayerCommand.h"

#include "linux/mpris/PlayerSurvey.h"

#include <array>
#include <cstdlib>
#include <string>
#include <utility>

namespace halvo::helper {

std::optional<const char*> methodFor(std::string_view word) {
    constexpr std::array<std::pair<std::string_view, const char*>, 5> kMethods{{
        {"play", "Play"},
        {"pause", "Pause"},
        {"toggle_play_pause", "PlayPause"},
        {"next_track", "Next"},
        {"previous_track", "Previous"},
    }};
    for (const auto& [command, method] : kMethods) {
        if (word == command) return method;
    }
    return std::nullopt;
}

int sendCommand(const char* method) {
    auto survey = mpris::PlayerSurvey::connect();
    if (!survey) return EXIT_FAILURE;
    std::string player = survey->shownPlayer();
    if (player.empty()) {
        const auto players = survey->players();
        if (players.empty()) return EXIT_FAILURE;
        player = players.front().busName;
    }
    return survey->call(player, method) ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace halvo::helper
