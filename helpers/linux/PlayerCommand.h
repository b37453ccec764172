#pragma once

#include <optional>
#include <string_view>

namespace halvo::helper {

/// The MPRIS method for a command word; nothing for any other word.
std::optional<const char*> methodFor(std::string_view word);

/// Sends a command to the player that the resident helper shows, else to the best one. Returns the
/// exit status: 0 when the player has accepted it. Waits at most two seconds.
int sendCommand(const char* method);

} // namespace halvo::helper
