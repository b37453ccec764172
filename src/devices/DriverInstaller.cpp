#include "devices/DriverInstaller.h"

#include "base/VersionComparison.h"
#include "platform/Alert.h"
#include "platform/DriverInstallation.h"
#include "platform/SystemLog.h"

namespace halvo {

namespace {

constexpr const char* kVersionKey = "CFBundleVersion";
// Time for the restarted sound server to publish the device.
constexpr std::chrono::milliseconds kPauseAfterInstall{2000};

} // namespace

bool DriverInstaller::isInstalled() const {
    return installation_.exists(installation_.installedPath());
}

bool DriverInstaller::needsUpdate() const {
    if (!isInstalled()) return false;
    const auto bundled = installation_.bundledDriverURL();
    if (!bundled) return false;
    const auto installedVersion =
        installation_.propertyListString(installation_.installedPath(), kVersionKey);
    if (!installedVersion) return true; // an unreadable copy is replaced
    const auto bundledVersion = installation_.propertyListString(*bundled, kVersionKey);
    return bundledVersion && compareVersions(*bundledVersion, *installedVersion) > 0;
}

bool DriverInstaller::installIfNeeded() {
    const auto bundled = installation_.bundledDriverURL();
    if (!bundled) {
        log_.write("Halvo: Bundled driver not found in app resources");
        return false;
    }
    if (isInstalled() && !needsUpdate()) {
        log_.write("Halvo: Driver already installed and up to date");
        return true;
    }
    const std::string action = isInstalled() ? "update" : "install";
    log_.write("Halvo: Driver " + action + " needed");
    const auto choice =
        alert_.runModal(AlertStyle::informational, "Halvo Audio Driver",
                        "Halvo needs to " + action +
                            " its audio driver to capture system audio. You'll be prompted for "
                            "your administrator password.",
                        {"Install Driver", "Quit"});
    if (choice == 0) return performInstall(*bundled);
    log_.write("Halvo: User cancelled driver " + action);
    return false;
}

bool DriverInstaller::performInstall(const std::filesystem::path& source) {
    const auto result = installation_.copyWithPrivileges(source);
    if (!result) {
        log_.write("Halvo: Failed to launch " + installation_.copyTool() + ": " + result.error());
        showError("Failed to start the installer: " + result.error());
        return false;
    }
    if (result->status == 0) {
        installation_.takeUp();
        log_.write("Halvo: Driver installed successfully");
        installation_.pause(kPauseAfterInstall);
        return true;
    }
    log_.write("Halvo: Driver install failed (exit " + std::to_string(result->status) +
               "): " + result->output);
    if (result->wasDismissed || result->output.contains("User canceled")) return false;
    showError("Driver installation failed. Please try again or install manually.\n\n" +
              result->output);
    return false;
}

void DriverInstaller::showError(const std::string& text) {
    (void)alert_.runModal(AlertStyle::critical, "Driver Installation Error", text, {});
}

} // namespace halvo
