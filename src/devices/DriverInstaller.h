#pragma once

#include <filesystem>
#include <string>

namespace halvo {

class Alert;
class DriverInstallation;
class SystemLog;

/// Keeps the virtual device's driver installed and current, with the person's consent.
/// Main thread only; its alerts are modal.
class DriverInstaller {
  public:
    DriverInstaller(DriverInstallation& installation, Alert& alert, SystemLog& log)
        : installation_(installation), alert_(alert), log_(log) {}

    bool isInstalled() const;
    /// Whether the installed driver is older than the one that came with the application, or
    /// cannot be read. False when either of them is missing.
    bool needsUpdate() const;
    /// Asks the person. True when the driver is present and current afterwards.
    bool installIfNeeded();
    /// Copies the driver with an administrator's rights; waits for the password, the copy and the
    /// sound system. Whether it is in place.
    bool performInstall(const std::filesystem::path& source);

  private:
    void showError(const std::string& text);

    DriverInstallation& installation_;
    Alert& alert_;
    SystemLog& log_;
};

} // namespace halvo
