#include "macos/MacDriverInstallation.h"

#include "devices/DriverCopyCommand.h"
#include "macos/CoreFoundation.h"
#include "macos/MacBundle.h"
#include "posix/AtomicFile.h"
#include "qt/QtChildProcesses.h"

#include <system_error>
#include <thread>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPlugInFolder = "/Library/Audio/Plug-Ins/HAL";
constexpr const char* kBundleName = "HalvoAudioDevice";
constexpr const char* kBundleExtension = "driver";
constexpr std::size_t kMaximumListSize = std::size_t{1} << 20U; // bytes

/// Null when the bytes are not a property list.
CFHandle<CFPropertyListRef> parse(const std::string& list) {
    const CFHandle<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
                                                reinterpret_cast<const UInt8*>(list.data()),
                                                static_cast<CFIndex>(list.size())));
    if (!data) return {};
    return CFHandle<CFPropertyListRef>(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

} // namespace

fs::path MacDriverInstallation::installedPath() {
    return fs::path(kPlugInFolder) / (std::string(kBundleName) + "." + kBundleExtension);
}

std::optional<fs::path> MacDriverInstallation::bundledDriverURL() {
    return MacBundle::resource(kBundleName, kBundleExtension);
}

bool MacDriverInstallation::exists(const fs::path& bundle) {
    std::error_code error;
    return fs::exists(bundle, error);
}

std::optional<std::string> MacDriverInstallation::propertyListString(const fs::path& bundle,
                                                                     const std::string& key) {
    const auto list = AtomicFile::read(bundle / "Contents" / "Info.plist", kMaximumListSize);
    if (!list) return std::nullopt;
    const auto root = parse(*list);
    const auto name = makeCFString(key);
    if (!root || !name || CFGetTypeID(root.get()) != CFDictionaryGetTypeID()) return std::nullopt;
    return textOf(CFDictionaryGetValue(static_cast<CFDictionaryRef>(root.get()), name.get()));
}

std::expected<DriverCopyResult, std::string>
MacDriverInstallation::copyWithPrivileges(const fs::path& source) {
    const auto command = driverCopyShellCommand(source, kPlugInFolder, installedPath());
    const auto result = runProcess(administratorScript(command), std::nullopt);
    if (!result) return std::unexpected(result.error());
    return DriverCopyResult{.status = result->status, .output = result->output};
}

void MacDriverInstallation::pause(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

} // namespace halvo
