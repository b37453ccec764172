#pragma once

#include <optional>
#include <string_view>

namespace halvo::helper {

/// The players' name for a command word; nothing for any other word.
std::optional<const char*> methodFor(std::string_view word);

/// Sends a command to the player that the resident helper shows, else to the best one. The exit
/// status: 0 when the player has taken it. Waits at most two seconds.
int sendCommand(const char* method);

} // namespace halvo::helper
