#pragma once

namespace halvo::mpris {

// How a helper that sends one command learns which player the resident one shows.
inline constexpr const char* kHelperName = "org.halvo.MediaHelper";
inline constexpr const char* kHelperPath = "/org/halvo/MediaHelper";
inline constexpr const char* kHelperInterface = "org.halvo.MediaHelper";
inline constexpr const char* kShownPlayer = "ShownPlayer"; ///< a bus name, or empty

} // namespace halvo::mpris
