#include "posix/AtomicFile.h"

#include "posix/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace halvo::AtomicFile {

namespace {

namespace fs = std::filesystem;

constexpr int kMaximumLinks = 40; // as the kernel's own limit
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;

enum class Outcome { done, failed, notPossibleHere };

/// Whether an error speaks against a second file in the directory rather than against the contents.
bool isAboutTheDirectory(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
}

Outcome failure(int error) {
    return isAboutTheDirectory(error) ? Outcome::notPossibleHere : Outcome::failed;
}

Outcome replace(const fs::path& target, const std::string& contents) {
    std::string temporary =
        (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
    const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC)); // mode 0600
    if (!file) return failure(errno);
    Outcome outcome = Outcome::failed;
    if (writeAll(file.get(), contents)) {
        if (std::rename(temporary.c_str(), target.c_str()) == 0) return Outcome::done;
        outcome = failure(errno);
    }
    (void)::unlink(temporary.c_str()); // nothing more can be done about it
    return outcome;
}

bool overwrite(const fs::path& target, const std::string& contents) {
    const FileDescriptor file(
        ::open(target.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file || !isRegularFile(file.get())) return false;
    (void)::fchmod(file.get(), kPrivate); // somebody else's file keeps its mode
    return writeAll(file.get(), contents) &&
           ::ftruncate(file.get(), static_cast<off_t>(contents.size())) == 0;
}

std::string dateText() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    const auto length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H%M%SZ", &parts);
    return {text.data(), length};
}

} // namespace

std::optional<fs::path> resolve(fs::path path) {
    for (int links = 0; links <= kMaximumLinks; ++links) {
        std::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error) return path;
        path = path.parent_path() / target; // an absolute target replaces all of it
    }
    return std::nullopt;
}

std::optional<std::string> read(const fs::path& path, std::size_t maximumSize) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file || !isRegularFile(file.get())) return std::nullopt;
    std::string contents;
    std::array<char, 16384> chunk{};
    while (true) {
        const auto count = ::read(file.get(), chunk.data(), chunk.size());
        if (count == 0) return contents;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        contents.append(chunk.data(), static_cast<std::size_t>(count));
        if (contents.size() > maximumSize) return std::nullopt;
    }
}

bool write(const fs::path& path, const std::string& contents) {
    const auto target = resolve(path);
    if (!target) return false;
    const auto outcome = replace(*target, contents);
    return outcome == Outcome::done ||
           (outcome == Outcome::notPossibleHere && overwrite(*target, contents));
}

std::expected<fs::path, std::error_code> setAside(const fs::path& path) {
    std::error_code error;
    const fs::path target = resolve(path).value_or(path);
    // A link may lead to a whole folder or to a device, which is no copy of ours to move.
    if (target != path && !fs::is_regular_file(target, error)) {
        return std::unexpected(std::make_error_code(std::errc::operation_not_permitted));
    }
    const std::string base = target.string() + ".unreadable-" + dateText();
    std::string name = base;
    for (int i = 2; fs::exists(fs::symlink_status(name, error)); ++i)
        name = base + "-" + std::to_string(i);
    fs::rename(target, name, error);
    if (error) return std::unexpected(error);
    return name;
}

} // namespace halvo::AtomicFile
