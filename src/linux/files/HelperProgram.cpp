#include "linux/files/HelperProgram.h"

#include <system_error>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kInstalledFolder = "/usr/lib/halvo";

} // namespace

fs::path helperProgram(const fs::path& directory, const char* name) {
    const auto installation = directory.parent_path() / "lib" / "halvo";
    for (const auto& folder : {installation, directory}) {
        std::error_code error;
        if (fs::exists(folder / name, error)) return folder / name;
    }
    return fs::path(kInstalledFolder) / name;
}

} // namespace halvo
