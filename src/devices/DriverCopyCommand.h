#pragma once

#include "platform/ChildProcess.h"

#include <filesystem>
#include <string>

namespace halvo {

/// The shell command that replaces the driver in macOS's plug-in folder and restarts the audio
/// server. Its final "true" hides every failure, by design: no server may have been running. Paths
/// are single-quoted and not escaped otherwise. Any thread.
std::string driverCopyShellCommand(const std::filesystem::path& source,
                                   const std::filesystem::path& folder,
                                   const std::filesystem::path& installed);

/// A text escaped for an AppleScript string literal. Any thread.
std::string appleScriptEscaped(const std::string& text);

/// macOS's tool with the script that asks for an administrator's password and runs the shell
/// command. Any thread.
Command administratorScript(const std::string& shellCommand);

} // namespace halvo
