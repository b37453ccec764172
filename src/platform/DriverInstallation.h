#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace halvo {

/// Where the virtual device's driver lives on this system. Main thread only.
class DriverInstallation {
  public:
    virtual ~DriverInstallation() = default;

    virtual std::filesystem::path installedPath() = 0;
    /// The copy that comes with the application, if it has one.
    virtual std::optional<std::filesystem::path> bundledDriverURL() = 0;
    virtual bool exists(const std::filesystem::path& bundle) = 0;
    /// The text under `key` in the bundle's "Contents/Info.plist"; nothing when the list cannot be
    /// read or has no such text.
    virtual std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                          const std::string& key) = 0;
};

} // namespace halvo
