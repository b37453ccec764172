#pragma once

#include <string>

namespace halvo {

/// The name of the ring for this user: HALVO_RING_NAME where it is set and valid (one leading
/// slash, no other, at most 250 characters), else ownedRingName(kRingName). Both sides of the ring
/// ask here. Ask again at each opening: another user's object may have come or gone. Any thread.
std::string ringName();

/// `base`, or `base` with "_<user id>" where an object of that name belongs to somebody else.
std::string ownedRingName(const std::string& base);

} // namespace halvo
