#pragma once

#include "platform/DriverInstallation.h"

namespace halvo {

/// The driver among the audio server's plug-ins, and the administrator prompt of the system's
/// scripting tool. Main thread only.
class MacDriverInstallation final : public DriverInstallation {
  public:
    std::filesystem::path installedPath() override;
    /// Among the application's resources.
    std::optional<std::filesystem::path> bundledDriverURL() override;
    bool exists(const std::filesystem::path& bundle) override;
    std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                  const std::string& key) override;

    std::string copyTool() override { return "osascript"; }
    std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) override;
    void takeUp() override {}        ///< the copy has restarted the audio server
    void ensureRunning() override {} ///< the audio server sees to it
    void pause(std::chrono::milliseconds duration) override;
};

} // namespace halvo
