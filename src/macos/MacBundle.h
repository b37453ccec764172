#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace halvo::MacBundle {

/// The application's folder of resources; nothing when it does not run from a bundle. Any thread.
std::optional<std::filesystem::path> resourceFolder();

/// A resource by its name and extension. Any thread.
std::optional<std::filesystem::path> resource(const std::string& name,
                                              const std::string& extension);

} // namespace halvo::MacBundle
