#include "posix/ProcessSpawn.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ; // NOLINT(readability-redundant-declaration): some systems declare it nowhere

namespace halvo::ProcessSpawn {

namespace {

/// The file actions and attributes for posix_spawn, with their memory.
class Plan {
  public:
    explicit Plan(Ties ties) {
        ::posix_spawn_file_actions_init(&actions_);
        lead(ties.input, STDIN_FILENO, O_RDONLY);
        lead(ties.output, STDOUT_FILENO, O_WRONLY);
        lead(-1, STDERR_FILENO, O_WRONLY);

        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        if (ties.session == Session::own) flags |= POSIX_SPAWN_SETSID;
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT; // no other descriptor reaches the program
#else
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
#endif
        ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    ~Plan() {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attributes_);
    }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;

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
    void lead(int descriptor, int standard, int mode) {
        if (descriptor >= 0) {
            ::posix_spawn_file_actions_adddup2(&actions_, descriptor, standard);
        } else {
            ::posix_spawn_file_actions_addopen(&actions_, standard, "/dev/null", mode, 0);
        }
    }

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

std::expected<pid_t, std::string> start(const Command& command, Ties ties) {
    pid_t pid = 0;
    const int error = Plan(ties).run(command, pid);
    if (error == 0) return pid;
    return std::unexpected<std::string>(
        std::strerror(error)); // NOLINT(concurrency-mt-unsafe): per thread on these systems
}

bool reap(pid_t program) {
    return ::waitpid(program, nullptr, WNOHANG) != 0; // also when somebody else has reaped it
}

} // namespace halvo::ProcessSpawn
