#pragma once

#include "posix/SessionFiles.h"

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

/// The record of raised devices is $XDG_CONFIG_HOME/halvo/raised-devices.json. Its spare place,
/// $XDG_RUNTIME_DIR/halvo-raised-devices.json, is empty where the session has no such directory;
/// the lock is there, too, or else beside the settings.
SessionFiles sessionFiles();

} // namespace halvo
