#pragma once

#include "platform/ChildProcess.h"

#include <filesystem>
#include <string>

namespace halvo {

/// The shell command by which macOS replaces the driver in its plug-in folder and restarts the
/// audio server. Its last word hides every failure, by design: none may have been running. Paths
/// are put between single quotes and not escaped otherwise. Any thread.
std::string driverCopyShellCommand(const std::filesystem::path& source,
                                   const std::filesystem::path& folder,
                                   const std::filesystem::path& installed);

/// A text as it stands between the double quotes of an AppleScript literal. Any thread.
std::string appleScriptEscaped(const std::string& text);

/// macOS's tool with the script that asks for an administrator's password and runs the shell
/// command. Any thread.
Command administratorScript(const std::string& shellCommand);

} // namespace halvo
