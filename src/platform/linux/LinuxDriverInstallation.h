#pragma once

#include "platform/DriverInstallation.h"

namespace halvo {

/// The driver's bundle among the system's libraries. Main thread only.
class LinuxDriverInstallation final : public DriverInstallation {
  public:
    /// `executableDirectory`: where the program itself lies, beside which its own copy is sought.
    explicit LinuxDriverInstallation(std::filesystem::path executableDirectory);

    /// /usr/lib/halvo/HalvoAudioDevice.driver; the environment variable HALVO_DRIVER_BUNDLE names
    /// another place.
    std::filesystem::path installedPath() override;
    /// In ../lib/halvo/ as seen from the program, or in the program's own directory.
    std::optional<std::filesystem::path> bundledDriverURL() override;
    bool exists(const std::filesystem::path& bundle) override;
    std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                  const std::string& key) override;

  private:
    std::filesystem::path executableDirectory_;
};

} // namespace halvo
