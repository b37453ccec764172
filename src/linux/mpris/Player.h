#pragma once

#include <string>
#include <string_view>

namespace halvo::mpris {

inline constexpr const char* kNamespace = "org.mpris.MediaPlayer2";
inline constexpr const char* kPath = "/org/mpris/MediaPlayer2";
inline constexpr const char* kRootInterface = "org.mpris.MediaPlayer2";
inline constexpr const char* kPlayerInterface = "org.mpris.MediaPlayer2.Player";
inline constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

/// Whether a bus name belongs to a player on this machine: not a proxy for other players, and not a
/// phone.
bool isPlayerName(std::string_view busName);

/// The player's part of its bus name, without an instance number.
std::string playerName(std::string_view busName);

} // namespace halvo::mpris
