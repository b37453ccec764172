#pragma once

#include <filesystem>

namespace halvo {

/// The path of a helper program: in lib/halvo of the same installation, else beside the
/// application, else in /usr/lib/halvo. `directory` holds the application's program.
std::filesystem::path helperProgram(const std::filesystem::path& directory, const char* name);

} // namespace halvo
