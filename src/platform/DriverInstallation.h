#pragma once

#include <chrono>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace halvo {

/// How a copy with an administrator's rights ended.
struct DriverCopyResult {
    int status = 0;            ///< 0: the driver is in place
    std::string output;        ///< what the tool said, UTF-8; empty when that was none
    bool wasDismissed = false; ///< the person did not want to give a password
};

/// Where the virtual device's driver lives on this system, and how it gets there. Main thread only.
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
    /// Asks for an administrator's password and replaces the installed driver by `source`. Waits
    /// for the person, however long that takes. An error's description when the tool cannot be
    /// started.
    virtual std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) = 0;
    /// Makes the sound system take the driver that was just copied, where copying did not.
    virtual void takeUp() = 0;
    /// Starts the installed driver for this session where the sound system has not.
    virtual void ensureRunning() = 0;
    /// Blocks for that long.
    virtual void pause(std::chrono::milliseconds duration) = 0;
};

} // namespace halvo
