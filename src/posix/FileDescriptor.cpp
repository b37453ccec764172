#include "posix/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo {

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) (void)close(); // nobody is left to hear of an error
}

int FileDescriptor::close() {
    return ::close(std::exchange(descriptor_, -1)) == 0 ? 0 : errno;
}

std::optional<std::pair<FileDescriptor, FileDescriptor>> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) return std::nullopt;
    for (const int end : ends)
        (void)::fcntl(end, F_SETFD, FD_CLOEXEC); // of a descriptor just made: cannot fail
    return std::pair(FileDescriptor(ends[0]), FileDescriptor(ends[1]));
}

bool isRegularFile(int descriptor) {
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace halvo
