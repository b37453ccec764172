#include "posix/AtomicFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr int kMaximumLinks = 40; // as the kernel's own limit
constexpr int kAttempts = 100;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
constexpr mode_t kAsUsual = 0666; // less the process's mask

const char* advice(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return "; free some space, or write to another disk";
    case ENOENT:
    case ENOTDIR:
        return "; make its folder first";
    case EACCES:
    case EPERM:
    case EROFS:
        return "; choose a folder that is yours";
    case EFBIG:
        return "; it would be larger than files may be here";
    default:
        return "";
    }
}

/// Whether an error is about a second file in the directory rather than about the contents.
bool isAboutTheDirectory(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
}

/// Moves without replacing. Where there are no hard links, another's file may be replaced in the
/// moment between the look and the move.
int moveUnlessThere(const fs::path& from, const fs::path& to) {
    if (::link(from.c_str(), to.c_str()) == 0) {
        (void)::unlink(from.c_str()); // what is left is a second name
        return 0;
    }
    if (errno == EEXIST) return EEXIST;
    struct stat status{};
    if (::lstat(to.c_str(), &status) == 0) return EEXIST;
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

bool overwrite(const fs::path& target, const std::string& contents) {
    const FileDescriptor file(
        ::open(target.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file || !isRegularFile(file.get())) return false;
    (void)::fchmod(file.get(), kPrivate); // another user's file keeps its mode
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

std::string cannotWrite(const fs::path& target, int error) {
    return "cannot write " + target.string() + ": " +
           (error == EEXIST ? "it is there already" : std::strerror(error)) + advice(error);
}

AtomicFile::AtomicFile(const fs::path& place, mode_t mode) : place_(place) {
    // A short name of its own: the target's may be as long as names can be.
    const std::string stem = ".halvo-" + std::to_string(::getpid()) + "-";
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto path = place.parent_path() / (stem + std::to_string(attempt) + ".part");
        file_ = FileDescriptor(
            ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
        if (file_) {
            temporary_ = path;
            return;
        }
        error_ = errno;
        if (error_ != EEXIST) return;
    }
}

AtomicFile::AtomicFile(AtomicFile&& other) noexcept
    : target_(std::move(other.target_)), place_(std::move(other.place_)),
      temporary_(std::exchange(other.temporary_, {})), file_(std::move(other.file_)),
      error_(other.error_) {}

AtomicFile::~AtomicFile() {
    if (!temporary_.empty()) (void)::unlink(temporary_.c_str()); // nothing more can be done
}

std::expected<AtomicFile, std::string> AtomicFile::create(const fs::path& target) {
    const auto place = resolve(target);
    if (!place) return std::unexpected(cannotWrite(target, ELOOP));
    if (!place->has_filename()) return std::unexpected(cannotWrite(target, EISDIR));
    AtomicFile file(*place, kAsUsual);
    if (!file.file_) return std::unexpected(cannotWrite(target, file.error_));
    file.target_ = target;
    return file;
}

std::optional<std::string> AtomicFile::commit(Existing existing) {
    struct stat status{};
    if (existing == Existing::replace && ::stat(place_.c_str(), &status) == 0) {
        // A device or a pipe would be gone for everybody.
        if (!S_ISREG(status.st_mode)) return "cannot write " + target_.string() + ": not a file";
        (void)::fchmod(file_.get(), status.st_mode & 07777); // who may read it stays as it was
    }
    const int error = moveToPlace(existing);
    return error != 0 ? std::optional(cannotWrite(target_, error)) : std::nullopt;
}

/// 0 or an error's number.
int AtomicFile::moveToPlace(Existing existing) {
    if (const int error = file_.close()) return error;
    int error = 0;
    if (existing == Existing::keep) {
        error = moveUnlessThere(temporary_, place_);
    } else if (std::rename(temporary_.c_str(), place_.c_str()) != 0) {
        error = errno;
    }
    if (error == 0) temporary_.clear();
    return error;
}

std::optional<fs::path> AtomicFile::resolve(fs::path path) {
    for (int links = 0; links <= kMaximumLinks; ++links) {
        std::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error) return path;
        path = path.parent_path() / target; // an absolute target replaces all of it
    }
    return std::nullopt;
}

std::optional<std::string> AtomicFile::read(const fs::path& path, std::size_t maximumSize) {
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

bool AtomicFile::write(const fs::path& path, const std::string& contents) {
    const auto place = resolve(path);
    if (!place) return false;
    AtomicFile file(*place, kPrivate);
    int error = file.error_;
    if (file.file_) {
        if (!writeAll(file.descriptor(), contents)) return false;
        error = file.moveToPlace(Existing::replace);
    }
    return error == 0 || (isAboutTheDirectory(error) && overwrite(*place, contents));
}

std::expected<fs::path, std::error_code> AtomicFile::setAside(const fs::path& path) {
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

} // namespace halvo
