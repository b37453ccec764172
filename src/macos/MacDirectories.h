#pragma once

#include "posix/SessionFiles.h"

#include <filesystem>
#include <optional>

namespace halvo {

// Where the user's files lie. Any thread.

/// ~/Library/Application Support; nothing when the system names no such place.
std::optional<std::filesystem::path> applicationSupportDirectory();

/// raised-devices.json and session.lock lie beside the presets, the spare record in the user's
/// temporary directory.
SessionFiles sessionFiles();

} // namespace halvo
