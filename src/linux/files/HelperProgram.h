#pragma once

#include <filesystem>

namespace halvo {

/// Where a helper of the application is: in its installation's lib/halvo, else beside the
/// application, else /usr/lib/halvo. `directory` is the one of the application's own program.
std::filesystem::path helperProgram(const std::filesystem::path& directory, const char* name);

} // namespace halvo
