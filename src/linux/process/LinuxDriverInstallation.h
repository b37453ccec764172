#pragma once

#include "platform/DriverInstallation.h"

#include <vector>

namespace halvo {

/// Installs the driver's bundle under /usr/lib, with the drop-in by which the sound server starts
/// it, through the desktop's administrator prompt. Main thread only.
class LinuxDriverInstallation : public DriverInstallation {
  public:
    /// `executableDirectory`: the program's own, in or near which its copy of the bundle lies.
    /// `root`: the root of the file system.
    explicit LinuxDriverInstallation(std::filesystem::path executableDirectory,
                                     std::filesystem::path root = "/");

    /// /usr/lib/halvo/HalvoAudioDevice.driver, or the path in the environment variable
    /// HALVO_DRIVER_BUNDLE; that one gets no drop-in, and its driver is not started here.
    std::filesystem::path installedPath() override;
    /// In ../lib/halvo/ relative to the program's directory, or in that directory itself.
    std::optional<std::filesystem::path> bundledDriverURL() override;
    bool exists(const std::filesystem::path& bundle) override;
    std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                  const std::string& key) override;

    std::string copyTool() override { return "pkexec"; }
    /// If the copy fails before its last step, the previous driver stays. A failed copy never has
    /// status 0.
    std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) override;
    /// Restarts the user's sound server, which starts the driver; where systemd does not run the
    /// server, restarts the driver alone.
    void takeUp() override;
    void ensureRunning() override;
    void pause(std::chrono::milliseconds duration) override;

  private:
    std::filesystem::path driverProgram();

    std::filesystem::path executableDirectory_;
    std::filesystem::path root_;
};

} // namespace halvo
