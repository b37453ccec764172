#include "driver/linux/ProcessDescriptor.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvo::driver {

ProcessDescriptor::ProcessDescriptor(pid_t process)
    : descriptor_(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))) {}

ProcessDescriptor::~ProcessDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool ProcessDescriptor::signal(int number) const {
    return ::syscall(SYS_pidfd_send_signal, descriptor_, number, nullptr, 0) == 0;
}

bool ProcessDescriptor::waitForEnd(std::chrono::milliseconds patience) const {
    if (descriptor_ < 0) return true;
    pollfd ended{descriptor_, POLLIN, 0};
    int found = -1;
    do {
        found = ::poll(&ended, 1, static_cast<int>(patience.count()));
    } while (found < 0 && errno == EINTR);
    return found > 0;
}

std::optional<ProcessDescriptor::Ending> ProcessDescriptor::reap() const {
    siginfo_t info{};
    if (::waitid(P_PIDFD, static_cast<id_t>(descriptor_), &info, WEXITED | WNOHANG) != 0) {
        return waitForEnd(std::chrono::milliseconds{0}) ? std::optional(Ending{}) : std::nullopt;
    }
    if (info.si_pid == 0) return std::nullopt;
    if (info.si_code == CLD_EXITED) return Ending{End::exited, info.si_status};
    return Ending{End::killed, 0};
}

} // namespace halvo::driver
