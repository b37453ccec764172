#include "support/PendingFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace halvo::tools {

namespace {

namespace fs = std::filesystem;

constexpr int kAttempts = 100;

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

/// Moves without replacing. Where there are no hard links, there remains a moment for another's
/// file to be replaced.
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

} // namespace

std::string cannotWrite(const fs::path& target, int error) {
    return "cannot write " + target.string() + ": " +
           (error == EEXIST ? "it is there already" : std::strerror(error)) + advice(error);
}

std::expected<PendingFile, std::string> PendingFile::create(const fs::path& target) {
    std::error_code error;
    const fs::path place = fs::weakly_canonical(target, error);
    if (error) return std::unexpected(cannotWrite(target, error.value()));
    if (!place.has_filename()) return std::unexpected(cannotWrite(target, EISDIR));
    // A short name of its own: the target's may be as long as names can be.
    const std::string stem = ".halvo-" + std::to_string(::getpid()) + "-";
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        fs::path temporary = place.parent_path() / (stem + std::to_string(attempt) + ".part");
        const int descriptor =
            ::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (descriptor >= 0) return PendingFile(target, place, std::move(temporary), descriptor);
        if (errno != EEXIST) break;
    }
    return std::unexpected(cannotWrite(target, errno));
}

PendingFile::PendingFile(fs::path target, fs::path place, fs::path temporary, int descriptor)
    : target_(std::move(target)), place_(std::move(place)), temporary_(std::move(temporary)),
      descriptor_(descriptor) {}

PendingFile::PendingFile(PendingFile&& other) noexcept
    : target_(std::move(other.target_)), place_(std::move(other.place_)),
      temporary_(std::exchange(other.temporary_, {})),
      descriptor_(std::exchange(other.descriptor_, -1)) {}

PendingFile::~PendingFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!temporary_.empty()) (void)::unlink(temporary_.c_str()); // nothing more can be done
}

std::optional<std::string> PendingFile::commit(Existing existing) {
    struct stat status{};
    if (existing == Existing::replace && ::stat(place_.c_str(), &status) == 0) {
        // A device or a pipe would be gone for everybody.
        if (!S_ISREG(status.st_mode)) return "cannot write " + target_.string() + ": not a file";
        (void)::fchmod(descriptor_, status.st_mode & 07777); // who may read it stays as it was
    }
    // Some file systems tell only here that the disk was full.
    if (::close(std::exchange(descriptor_, -1)) != 0) return cannotWrite(target_, errno);
    int error = 0;
    if (existing == Existing::keep) {
        error = moveUnlessThere(temporary_, place_);
    } else if (std::rename(temporary_.c_str(), place_.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) return cannotWrite(target_, error);
    temporary_.clear();
    return std::nullopt;
}

} // namespace halvo::tools
