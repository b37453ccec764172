#include "linux/process/SpawnedChild.h"

#include "posix/ProcessSpawn.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

std::string description(int error) {
    return std::strerror(error); // NOLINT(concurrency-mt-unsafe): glibc's is per thread
}

} // namespace

std::expected<SpawnedChild, std::string> SpawnedChild::start(const Command& command,
                                                             Output output) {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
    if (output == Output::pipe) {
        auto ends = makePipe();
        if (!ends) return std::unexpected(description(errno));
        readEnd = std::move(ends->first);
        writeEnd = std::move(ends->second);
        (void)::fcntl(readEnd.get(), F_SETFL, O_NONBLOCK); // a pipe takes it
    }
    const auto started = ProcessSpawn::start(command, {.output = writeEnd.get()});
    if (!started) return std::unexpected(started.error());
    const pid_t pid = *started;
    // Nobody has reaped the child yet, so the number is still its own.
    FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    if (!process) {
        const auto reason = description(errno);
        (void)::kill(pid, SIGKILL);
        (void)::waitpid(pid, nullptr, 0);
        return std::unexpected(reason);
    }
    return SpawnedChild(pid, std::move(process), std::move(readEnd));
}

bool SpawnedChild::signal(int number) const {
    return ::syscall(SYS_pidfd_send_signal, process_.get(), number, nullptr, 0) == 0;
}

std::optional<int> SpawnedChild::wait(std::chrono::milliseconds deadline) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + deadline;
    pollfd ended{process_.get(), POLLIN, 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const int found = ::poll(&ended, 1, static_cast<int>(std::max<long>(left, 0)));
        if (found > 0) break;
        if (found == 0 || errno != EINTR) return std::nullopt;
    }
    siginfo_t info{};
    if (::waitid(P_PIDFD, static_cast<id_t>(process_.get()), &info, WEXITED) != 0) return 0;
    return info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
}

} // namespace halvo
