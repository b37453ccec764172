#pragma once

namespace halvo::mpris {

// Interface of the running helper, from which a helper that sends a command learns the shown
// player.
inline constexpr const char* kHelperName = "org.halvo.MediaHelper";
inline constexpr const char* kHelperPath = "/org/halvo/MediaHelper";
inline constexpr const char* kHelperInterface = "org.halvo.MediaHelper";
inline constexpr const char* kShownPlayer = "ShownPlayer"; ///< a bus name, or empty

} // namespace halvo::mpris
