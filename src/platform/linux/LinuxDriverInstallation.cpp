#include "platform/linux/LinuxDriverInstallation.h"

#include "platform/linux/AtomicFile.h"
#include "platform/qt/PropertyList.h"

#include <cstdlib>
#include <system_error>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kBundleName = "HalvoAudioDevice.driver";
constexpr const char* kInstalledFolder = "/usr/lib/halvo";
constexpr const char* kBundleVariable = "HALVO_DRIVER_BUNDLE";
constexpr std::size_t kMaximumListSize = std::size_t{1} << 20U; // bytes

} // namespace

LinuxDriverInstallation::LinuxDriverInstallation(fs::path executableDirectory)
    : executableDirectory_(std::move(executableDirectory)) {}

fs::path LinuxDriverInstallation::installedPath() {
    const char* other = std::getenv(kBundleVariable);
    if (other != nullptr && *other != '\0') return other;
    return fs::path(kInstalledFolder) / kBundleName;
}

std::optional<fs::path> LinuxDriverInstallation::bundledDriverURL() {
    const auto prefix = executableDirectory_.parent_path();
    for (const auto& folder : {prefix / "lib" / "halvo", executableDirectory_}) {
        if (exists(folder / kBundleName)) return folder / kBundleName;
    }
    return std::nullopt;
}

bool LinuxDriverInstallation::exists(const fs::path& bundle) {
    std::error_code error;
    return fs::exists(bundle, error);
}

std::optional<std::string> LinuxDriverInstallation::propertyListString(const fs::path& bundle,
                                                                       const std::string& key) {
    const auto list = AtomicFile::read(bundle / "Contents" / "Info.plist", kMaximumListSize);
    return list ? halvo::propertyListString(*list, key) : std::nullopt;
}

} // namespace halvo
