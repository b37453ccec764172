#pragma once

#include <chrono>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace halvo {

/// The result of copying with administrator rights.
struct DriverCopyResult {
    int status = 0;            ///< 0: the driver is in place
    std::string output;        ///< the tool's output, UTF-8; empty when it was not
    bool wasDismissed = false; ///< the user cancelled the password prompt
};

/// Where this system keeps the virtual device's driver, and how to install it. Main thread only.
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

    /// The name of the tool that asks for the password, for messages.
    virtual std::string copyTool() = 0;
    /// Asks for an administrator's password and replaces the installed driver with `source`. Waits
    /// for the user without a limit. An error's description when the tool cannot be started.
    virtual std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) = 0;
    /// Makes the sound system load the copied driver, where copying alone does not.
    virtual void takeUp() = 0;
    /// Starts the installed driver for this session where the sound system has not.
    virtual void ensureRunning() = 0;
    /// Blocks for `duration`.
    virtual void pause(std::chrono::milliseconds duration) = 0;
};

} // namespace halvo
