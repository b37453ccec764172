#include "Programs.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

#include <unistd.h>

namespace halvo::demo {
namespace {

namespace fs = std::filesystem;

bool isInPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (::access((folder + "/" + program).c_str(), X_OK) == 0) return true;
    return false;
}

/// The folder of the build that this program belongs to, however deep it lies in there.
fs::path buildFolder() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    fs::path folder = self.parent_path();
    while (folder.has_relative_path() && !fs::exists(folder / "CMakeCache.txt", error))
        folder = folder.parent_path();
    return folder;
}

/// What the session and the playing need from the system, and the Debian package that has it.
struct SystemProgram {
    const char* name;
    const char* package;
};
constexpr SystemProgram kSystemPrograms[] = {{"pipewire", "pipewire"},
                                             {"wireplumber", "wireplumber"},
                                             {"pw-play", "pipewire-bin"},
                                             {"dbus-daemon", "dbus-daemon"}};

} // namespace

std::expected<Programs, std::string> Programs::find() {
    for (const SystemProgram& program : kSystemPrograms)
        if (!isInPath(program.name))
            return std::unexpected(std::string(program.name) +
                                   " is missing. Please install it: apt-get install " +
                                   program.package);
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
