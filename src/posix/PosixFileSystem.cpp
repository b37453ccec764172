#include "posix/PosixFileSystem.h"

#include "posix/AtomicFile.h"
#include "posix/FileDescriptor.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaximumFileSize = std::size_t{64} << 20U; // bytes

/// The temporary directory is shared: somebody else may have put a file, a pipe or a second name
/// of one of the user's own files there.
bool isOwnPlainFile(int descriptor) {
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == ::geteuid() && status.st_nlink == 1;
}

} // namespace

fs::path PosixFileSystem::temporaryDirectory() {
    const char* named = std::getenv("TMPDIR");
    return named != nullptr && *named != '\0' ? named : "/tmp";
}

bool PosixFileSystem::exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool PosixFileSystem::createDirectory(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path, error);
    return fs::is_directory(path, error);
}

std::optional<std::string> PosixFileSystem::read(const fs::path& path) {
    return AtomicFile::read(path, kMaximumFileSize);
}

bool PosixFileSystem::write(const fs::path& path, const std::string& contents) {
    return AtomicFile::write(path, contents);
}

bool PosixFileSystem::append(const fs::path& path, const std::string& contents) {
    const FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
               S_IRUSR | S_IWUSR));
    return file && isOwnPlainFile(file.get()) && writeAll(file.get(), contents);
}

bool PosixFileSystem::setAside(const fs::path& path) {
    return AtomicFile::setAside(path).has_value();
}

bool PosixFileSystem::remove(const fs::path& path) {
    std::error_code error;
    fs::remove(path, error);
    return !error;
}

} // namespace halvo
