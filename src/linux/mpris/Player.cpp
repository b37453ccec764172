#include "linux/mpris/Player.h"

#include <algorithm>

namespace halvo::mpris {

namespace {

constexpr std::string_view kPrefix = "org.mpris.MediaPlayer2.";
constexpr std::string_view kInstance = ".instance";
constexpr std::string_view kForeign[] = {"playerctld", "kdeconnect", "gsconnect"};

} // namespace

bool isPlayerName(std::string_view busName) {
    if (!busName.starts_with(kPrefix) || busName.size() == kPrefix.size()) return false;
    const auto name = busName.substr(kPrefix.size());
    const auto first = name.substr(0, name.find('.'));
    return std::ranges::none_of(kForeign, [&](std::string_view foreign) {
        // Phones have one bus name per device.
        return first.substr(0, foreign.size()) == foreign;
    });
}

std::string playerName(std::string_view busName) {
    if (busName.starts_with(kPrefix)) busName.remove_prefix(kPrefix.size());
    return std::string(busName.substr(0, busName.find(kInstance)));
}

} // namespace halvo::mpris
