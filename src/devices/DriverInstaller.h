#pragma once

#include <filesystem>
#include <string>

namespace halvo {

class Alert;
class DriverInstallation;
class SystemLog;

/// Installs and updates the virtual device's driver, with the user's consent. Main thread only; its
/// alerts are modal.
class DriverInstaller {
  public:
    DriverInstaller(DriverInstallation& installation, Alert& alert, SystemLog& log)
        : installation_(installation), alert_(alert), log_(log) {}

    bool isInstalled() const;
    /// Whether the installed driver is older than the one that came with the application, or
    /// cannot be read. False when either of them is missing.
    bool needsUpdate() const;
    /// Asks the user. True when the driver is present and current afterwards.
    bool installIfNeeded();
    /// Copies the driver with administrator rights; waits for the password, the copy and the sound
    /// system. True when it is installed.
    bool performInstall(const std::filesystem::path& source);

  private:
    void showError(const std::string& text);

    DriverInstallation& installation_;
    Alert& alert_;
    SystemLog& log_;
};

} // namespace halvo
