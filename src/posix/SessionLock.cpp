#include "posix/SessionLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <thread>

namespace halvo {

namespace {

constexpr std::chrono::milliseconds kPoll{5};

} // namespace

std::optional<SessionLock> SessionLock::take(const std::filesystem::path& path,
                                             std::chrono::milliseconds longest) {
    std::error_code ignored; // shows when the file is opened
    std::filesystem::create_directories(path.parent_path(), ignored);
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) return SessionLock(FileDescriptor());
    const auto end = std::chrono::steady_clock::now() + longest;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (std::chrono::steady_clock::now() >= end) return std::nullopt;
        std::this_thread::sleep_for(kPoll);
    }
    return SessionLock(std::move(file));
}

} // namespace halvo
