#include "platform/linux/LinuxMediaHelper.h"

#include <cstdlib>
#include <system_error>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kProgram = "halvo-media-helper";
constexpr const char* kInstalledFolder = "/usr/lib/halvo";
constexpr const char* kVariable = "HALVO_MEDIA_HELPER";

} // namespace

LinuxMediaHelper::LinuxMediaHelper(fs::path executableDirectory)
    : executableDirectory_(std::move(executableDirectory)) {}

std::optional<std::string> LinuxMediaHelper::resourceFolder() const {
    if (const char* other = std::getenv(kVariable)) {
        if (*other == '\0') return std::nullopt;
        return fs::path(other).parent_path().string();
    }
    const auto installation = executableDirectory_.parent_path() / "lib" / "halvo";
    for (const auto& folder : {installation, executableDirectory_}) {
        std::error_code error;
        if (fs::exists(folder / kProgram, error)) return folder.string();
    }
    return kInstalledFolder;
}

std::string LinuxMediaHelper::libraryName() const {
    const char* other = std::getenv(kVariable);
    return other != nullptr && *other != '\0' ? fs::path(other).filename().string() : kProgram;
}

Command LinuxMediaHelper::command(const std::string& script, const std::string& /*library*/,
                                  const std::string& word) const {
    return {script, {word}};
}

} // namespace halvo
