#pragma once

#include "linux/mpris/BusHandles.h"
#include "linux/mpris/PlayerState.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo::mpris {

struct SurveyedPlayer {
    std::string busName;
    std::string name; ///< its part of the bus name
    PlaybackStatus status = PlaybackStatus::stopped;
    Metadata metadata = {};
};

/// Queries all players once, over its own connection. Blocks. One thread.
class PlayerSurvey {
  public:
    /// Nothing when there is no session bus.
    static std::optional<PlayerSurvey> connect();

    /// Those that answer within half a second; playing ones first, then paused ones, then by name.
    std::vector<SurveyedPlayer> players();

    /// The player that the running helper shows; empty without one or without a helper.
    std::string shownPlayer();

    /// Calls a method of the player; an error's description on failure. Blocks for at most a
    /// second.
    std::optional<std::string> call(const std::string& busName, const char* method);

  private:
    explicit PlayerSurvey(Bus bus) : bus_(std::move(bus)) {}

    std::vector<std::string> playerNames();

    Bus bus_;
};

} // namespace halvo::mpris
