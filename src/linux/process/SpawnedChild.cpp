#include "linux/process/SpawnedChild.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace halvo {

namespace {

/// The file actions and attributes for posix_spawn, with their memory.
class SpawnPlan {
  public:
    SpawnPlan(int output, SpawnedChild::Ties ties) {
        ::posix_spawn_file_actions_init(&actions_);
        if (ties.input >= 0) {
            ::posix_spawn_file_actions_adddup2(&actions_, ties.input, STDIN_FILENO);
        } else {
            ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        }
        if (output >= 0) {
            ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        } else {
            ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        }
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);

        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        if (ties.session == SpawnedChild::Session::own) flags |= POSIX_SPAWN_SETSID;
        ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    ~SpawnPlan() {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attributes_);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;

    /// 0 or an error number; the child has executed the program by then.
    int run(const Command& command, pid_t& pid) const {
        std::vector<char*> words{const_cast<char*>(command.program.c_str())};
        for (const auto& argument : command.arguments)
            words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        return ::posix_spawn(&pid, command.program.c_str(), &actions_, &attributes_, words.data(),
                             environ);
    }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

std::string description(int error) {
    return std::strerror(error); // NOLINT(concurrency-mt-unsafe): glibc's is per thread
}

} // namespace

std::expected<SpawnedChild, std::string> SpawnedChild::start(const Command& command, Output output,
                                                             Ties ties) {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
    if (output == Output::pipe) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::unexpected(description(errno));
        readEnd = FileDescriptor(ends[0]);
        writeEnd = FileDescriptor(ends[1]);
        (void)::fcntl(ends[0], F_SETFL, O_NONBLOCK); // a pipe takes it
    }
    pid_t pid = 0;
    if (const int error = SpawnPlan(writeEnd.get(), ties).run(command, pid)) {
        return std::unexpected(description(error));
    }
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
