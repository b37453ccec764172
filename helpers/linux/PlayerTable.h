#pragma once

#include "linux/mpris/PlayerState.h"

#include <cstdint>
#include <map>
#include <string>

namespace halvo::helper {

/// What is known of one player.
struct Player {
    std::string busName;
    std::string identifier; ///< its desktop entry, else the last part of its bus name
    mpris::PlaybackStatus status = mpris::PlaybackStatus::stopped;
    mpris::Metadata metadata = {};
    std::uint64_t activity = 0; ///< grows with each change of any player
};

/// The players of the session, and which of them is shown: a playing one rather than a paused one,
/// then the one that changed last; never a stopped one.
class PlayerTable {
  public:
    void add(const std::string& busName);
    void remove(const std::string& busName) { players_.erase(busName); }
    void clear() { players_.clear(); }
    /// Stores the properties that a player sent; unknown ones are ignored.
    void apply(const std::string& busName, mpris::PlayerProperties properties);

    /// Null when no player plays or is paused.
    const Player* best() const;

  private:
    std::map<std::string, Player> players_;
    std::uint64_t activity_ = 0;
};

} // namespace halvo::helper
