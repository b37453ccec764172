#pragma once

#include "platform/DriverInstallation.h"

namespace halvo {

/// The driver in the audio server's plug-in folder, and the administrator prompt of osascript. Main
/// thread only.
class MacDriverInstallation final : public DriverInstallation {
  public:
    std::filesystem::path installedPath() override;
    /// In the application's resources.
    std::optional<std::filesystem::path> bundledDriverURL() override;
    bool exists(const std::filesystem::path& bundle) override;
    std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                  const std::string& key) override;

    std::string copyTool() override { return "osascript"; }
    std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) override;
    void takeUp() override {}        ///< the copy has restarted the audio server
    void ensureRunning() override {} ///< the audio server does it
    void pause(std::chrono::milliseconds duration) override;
};

} // namespace halvo
