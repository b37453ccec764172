#include "posix/ProcessStandardOutput.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace halvo {

namespace {

/// Blocks SIGPIPE on this thread, and consumes the one that a write has raised meanwhile.
class BrokenPipeGuard {
  public:
    BrokenPipeGuard() {
        sigemptyset(&brokenPipe_);
        sigaddset(&brokenPipe_, SIGPIPE);
        wasPending_ = isPending();
        (void)::pthread_sigmask(SIG_BLOCK, &brokenPipe_, &before_);
    }
    ~BrokenPipeGuard() {
        // It is pending, so this does not wait.
        int taken = 0;
        if (!wasPending_ && isPending()) (void)::sigwait(&brokenPipe_, &taken);
        (void)::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

  private:
    static bool isPending() {
        sigset_t pending;
        return ::sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t brokenPipe_{};
    sigset_t before_{};
    bool wasPending_ = false;
};

/// Whether a write that just failed may be tried again.
bool mayRetry() {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, -1) > 0 || errno == EINTR;
}

} // namespace

void ProcessStandardOutput::print(const std::string& line) {
    const BrokenPipeGuard guard;
    const std::string text = line + "\n";
    for (std::string_view rest = text; !rest.empty();) {
        const auto count = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
        if (count < 0 && !mayRetry()) return;
    }
}

} // namespace halvo
