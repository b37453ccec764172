#pragma once

#include "platform/DriverInstallation.h"

#include <vector>

namespace halvo {

/// The driver's bundle among the system's libraries, beside it the drop-in by which the sound
/// server starts it, and the desktop's administrator prompt. Main thread only.
class LinuxDriverInstallation : public DriverInstallation {
  public:
    /// `executableDirectory`: where the program itself lies, beside which its own copy is sought.
    /// `root`: the system's top directory.
    explicit LinuxDriverInstallation(std::filesystem::path executableDirectory,
                                     std::filesystem::path root = "/");

    /// /usr/lib/halvo/HalvoAudioDevice.driver; the environment variable HALVO_DRIVER_BUNDLE names
    /// another place, which is without drop-in and whose driver is not started here.
    std::filesystem::path installedPath() override;
    /// In ../lib/halvo/ as seen from the program, or in the program's own directory.
    std::optional<std::filesystem::path> bundledDriverURL() override;
    bool exists(const std::filesystem::path& bundle) override;
    std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                  const std::string& key) override;

    std::string copyTool() override { return "pkexec"; }
    /// A copy that fails before the last step leaves the driver that was there. Never a status of 0
    /// for one that failed.
    std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) override;
    /// Restarts the user's sound server, which starts the driver; where nobody manages the server,
    /// the driver alone.
    void takeUp() override;
    void ensureRunning() override;
    void pause(std::chrono::milliseconds duration) override;

  private:
    std::filesystem::path driverProgram();

    std::filesystem::path executableDirectory_;
    std::filesystem::path root_;
};

} // namespace halvo
