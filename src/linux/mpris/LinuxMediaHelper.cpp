#include "linux/mpris/LinuxMediaHelper.h"

#include "linux/files/HelperProgram.h"

#include <cstdlib>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kProgram = "halvo-media-helper";
constexpr const char* kVariable = "HALVO_MEDIA_HELPER";

} // namespace

LinuxMediaHelper::LinuxMediaHelper(fs::path executableDirectory)
    : executableDirectory_(std::move(executableDirectory)) {}

std::optional<std::string> LinuxMediaHelper::resourceFolder() const {
    if (const char* other = std::getenv(kVariable)) {
        if (*other == '\0') return std::nullopt;
        return fs::path(other).parent_path().string();
    }
    return helperProgram(executableDirectory_, kProgram).parent_path().string();
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
