#include "linux/process/LinuxDriverInstallation.h"

#include "posix/AtomicFile.h"
#include "qt/PropertyList.h"
#include "qt/QtChildProcesses.h"

#include <cstdlib>
#include <system_error>
#include <thread>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kBundleName = "HalvoAudioDevice.driver";
constexpr const char* kInstalledFolder = "usr/lib/halvo";
constexpr const char* kDropInFolder = "usr/share/pipewire/pipewire.conf.d";
constexpr const char* kBundleVariable = "HALVO_DRIVER_BUNDLE";
constexpr std::size_t kMaximumListSize = std::size_t{1} << 20U; // bytes
constexpr int kDismissed = 126;                                 // pkexec's status
constexpr std::chrono::seconds kPatience{10};

// $1: the bundle to copy, $2: where it goes, $3: the folder for its drop-in, or nothing. The old
// bundle stays until the new one is whole. One status for every failure: 126 and 127 are pkexec's.
constexpr const char* kCopyScript = R"(umask 022
case $2 in
/*/HalvoAudioDevice.driver) ;;
*) echo "halvo: no place for a driver: $2" >&2; exit 1 ;;
esac
mkdir -p -- "${2%/*}" &&
rm -rf -- "$2.new" &&
cp -R -- "$1/." "$2.new" &&
chown -Rh root:root -- "$2.new" &&
chmod -R u=rwX,go=rX -- "$2.new" &&
rm -rf -- "$2" &&
mv -- "$2.new" "$2" || { rm -rf -- "$2.new"; exit 1; }
[ -z "$3" ] || { mkdir -p -- "$3" && cp -- "$2/Contents/Resources/60-halvo.conf" "$3/"; } || exit 1
)";

std::optional<std::string> otherBundle() {
    const char* other = std::getenv(kBundleVariable);
    return other != nullptr && *other != '\0' ? std::optional<std::string>(other) : std::nullopt;
}

bool succeeds(const std::string& program, const std::vector<std::string>& arguments) {
    const auto result = runProcess({program, arguments}, kPatience);
    return result && result->status == 0;
}

} // namespace

LinuxDriverInstallation::LinuxDriverInstallation(fs::path executableDirectory, fs::path root)
    : executableDirectory_(std::move(executableDirectory)), root_(std::move(root)) {}

fs::path LinuxDriverInstallation::installedPath() {
    return otherBundle().value_or(root_ / kInstalledFolder / kBundleName);
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

std::expected<DriverCopyResult, std::string>
LinuxDriverInstallation::copyWithPrivileges(const fs::path& source) {
    const std::string dropIns = otherBundle() ? "" : (root_ / kDropInFolder).string();
    const auto result = runProcess({"pkexec",
                                    {"/bin/sh", "-c", kCopyScript, "halvo-install", source.string(),
                                     installedPath().string(), dropIns}},
                                   std::nullopt);
    if (!result) return std::unexpected(result.error());
    return DriverCopyResult{result->status, result->output, result->status == kDismissed};
}

void LinuxDriverInstallation::takeUp() {
    const std::string server = "pipewire.service";
    if (succeeds("systemctl", {"--user", "is-active", "--quiet", server}) &&
        succeeds("systemctl", {"--user", "restart", server})) {
        return;
    }
    (void)succeeds(driverProgram(), {"--end"}); // the replaced one, if it still runs
    (void)succeeds(driverProgram(), {"--start"});
}

void LinuxDriverInstallation::ensureRunning() {
    if (!otherBundle()) (void)succeeds(driverProgram(), {"--start"});
}

void LinuxDriverInstallation::pause(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

fs::path LinuxDriverInstallation::driverProgram() {
    return installedPath() / "Contents" / "Linux" / "halvo-audio-device";
}

} // namespace halvo
