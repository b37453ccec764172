#pragma once

#include "linux/mpris/PlayerState.h"

#include <cstdint>
#include <map>
#include <string>

namespace halvo::helper {

/// What is known of one player.
struct Player {
    std::string busName;
    std::string identifier; ///< its desktop entry, else its own part of the bus name
    mpris::PlaybackStatus status = mpris::PlaybackStatus::stopped;
    mpris::Metadata metadata = {};
    std::uint64_t activity = 0; ///< greater for what did something later
};

/// The players of the session and which of them counts: one that plays before one that is paused,
/// then the one that did something last. Stopped players do not count.
class PlayerTable {
  public:
    void add(const std::string& busName);
    void remove(const std::string& busName) { players_.erase(busName); }
    void clear() { players_.clear(); }
    /// Takes over what a player told; unknown names are ignored.
    void apply(const std::string& busName, mpris::PlayerProperties properties);

    /// Null when nobody plays or is paused.
    const Player* best() const;

  private:
    std::map<std::string, Player> players_;
    std::uint64_t activity_ = 0;
};

} // namespace halvo::helper
