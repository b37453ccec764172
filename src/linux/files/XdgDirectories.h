#pragma once

#include <filesystem>

namespace halvo {

// The user's XDG base directories. By their definition, a variable that is unset, empty or relative
// does not count. Any thread, while the environment does not change.

/// $XDG_CONFIG_HOME, by default ~/.config.
std::filesystem::path configDirectory();
/// $XDG_DATA_HOME, by default ~/.local/share.
std::filesystem::path dataDirectory();
/// $XDG_RUNTIME_DIR; empty where the session has none.
std::filesystem::path runtimeDirectory();

/// The record of raised devices: $XDG_CONFIG_HOME/halvo/raised-devices.json.
std::filesystem::path raisedDevicesPath();
/// Where it lies while that folder takes nothing: $XDG_RUNTIME_DIR/halvo-raised-devices.json; empty
/// where the session has no such directory.
std::filesystem::path spareRaisedDevicesPath();

/// The lock of who may change the session's devices: in the runtime directory, or beside the
/// settings where there is none.
std::filesystem::path sessionLockPath();

} // namespace halvo
