#include "Programs.h"

#include <filesystem>

namespace halvo::demo {
namespace {

namespace fs = std::filesystem;

/// The folder of the build that this program belongs to, however deep it lies in there.
fs::path buildFolder() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    fs::path folder = self.parent_path();
    while (folder.has_relative_path() && !fs::exists(folder / "CMakeCache.txt", error))
        folder = folder.parent_path();
    return folder;
}

} // namespace

std::expected<Programs, std::string> Programs::find() {
    std::error_code error;
    const fs::path build = buildFolder();
    const fs::path bundle = build / "driver" / "HalvoAudioDevice.driver";
    Programs programs{.application = (build / "src" / "halvo").string(),
                      .driver = (bundle / "Contents" / "Linux" / "halvo-audio-device").string(),
                      .driverBundle = bundle.string()};
    for (const std::string& path : {programs.application, programs.driver})
        if (!fs::exists(path, error))
            return std::unexpected(path + " is missing. Please build it first: cmake --build " +
                                   build.string());
    return programs;
}

} // namespace halvo::demo
