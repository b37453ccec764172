#pragma once

#include <string>

namespace halvo {

/// The name of the ring for this user: HALVO_RING_NAME where it is set and valid (one leading
/// slash, no other, at most 250 characters), else ownedRingName(kRingName). Driver and application
/// both use it, at each opening: another user's object may appear or go. Any thread.
std::string ringName();

/// `base`, or `base` with "_<user id>" where an object of that name belongs to another user.
std::string ownedRingName(const std::string& base);

} // namespace halvo
