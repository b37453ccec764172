#include "PlayerTable.h"

#include "linux/mpris/Player.h"

#include <tuple>
#include <utility>

namespace halvo::helper {

void PlayerTable::add(const std::string& busName) {
    players_.insert_or_assign(busName,
                              Player{.busName = busName, .identifier = mpris::playerName(busName)});
}

void PlayerTable::apply(const std::string& busName, mpris::PlayerProperties properties) {
    const auto found = players_.find(busName);
    if (found == players_.end()) return;
    Player& player = found->second;
    if (properties.desktopEntry && !properties.desktopEntry->empty()) {
        player.identifier = std::move(*properties.desktopEntry);
    }
    const auto status = properties.status.value_or(player.status);
    const bool changes =
        status != player.status || (properties.metadata && *properties.metadata != player.metadata);
    if (!changes) return;
    player.status = status;
    if (properties.metadata) player.metadata = std::move(*properties.metadata);
    player.activity = ++activity_;
}

const Player* PlayerTable::best() const {
    const auto rank = [](const Player& player) {
        return std::tuple(player.status, player.activity);
    };
    const Player* best = nullptr;
    for (const auto& [name, player] : players_) {
        if (player.status == mpris::PlaybackStatus::stopped) continue;
        if (best == nullptr || rank(*best) < rank(player)) best = &player;
    }
    return best;
}

} // namespace halvo::helper
