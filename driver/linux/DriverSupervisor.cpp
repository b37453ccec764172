#include "driver/linux/DriverSupervisor.h"

#include "driver/linux/Driver.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace halvo::driver {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kForEver{-1};
// The last server's supervisor needs some milliseconds to end; the next server may be quicker.
constexpr std::chrono::milliseconds kHandOver{2000};
constexpr std::chrono::milliseconds kLongestEnd{1500};

// At most 15 letters, as the kernel keeps them; two names, so that each is found by its own.
constexpr const char* kSupervisorName = "halvo-keeper";
constexpr const char* kDriverName = "halvo-audio-dev";

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

void detachFromTerminal() {
    ::setsid();
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nothing < 0) return;
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        (void)::dup2(nothing, standard);
    if (nothing > STDERR_FILENO) ::close(nothing);
}

} // namespace

DriverSupervisor::~DriverSupervisor() {
    if (signals_ >= 0) ::close(signals_);
}

int DriverSupervisor::run(pid_t adopted) {
    (void)::prctl(PR_SET_NAME, kSupervisorName);
    takeSignals();
    if (!lock_.acquire(kHandOver)) return 0; // this server's driver has one already
    // A process ID cannot be reused while that process is the parent.
    if (adopted > 0) driver_ = std::make_unique<ProcessDescriptor>(adopted);
    if (adopted != ::getppid()) driver_.reset();
    return supervise();
}

int DriverSupervisor::runInBackground() {
    const pid_t child = ::fork();
    if (child < 0) return 1;
    if (child > 0) return 0;
    detachFromTerminal();
    std::_Exit(run(0));
}

void DriverSupervisor::takeSignals() {
    const sigset_t signals = endingSignals();
    (void)::sigprocmask(SIG_BLOCK, &signals, nullptr);
    signals_ = ::signalfd(-1, &signals, SFD_CLOEXEC);
}

bool DriverSupervisor::startDriver() {
    const pid_t supervisor = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) return false;
    if (child == 0) {
        ::close(signals_);
        const sigset_t signals = endingSignals();
        (void)::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
        (void)::prctl(PR_SET_NAME, kDriverName);
        std::_Exit(runDriver_(supervisor));
    }
    driver_ = std::make_unique<ProcessDescriptor>(child);
    return true;
}

bool DriverSupervisor::signalComesBefore(int descriptor, Milliseconds longest) const {
    std::array<pollfd, 2> events{pollfd{signals_, POLLIN, 0}, pollfd{descriptor, POLLIN, 0}};
    int found = -1;
    do {
        found = ::poll(events.data(), events.size(), static_cast<int>(longest.count()));
    } while (found < 0 && errno == EINTR);
    return events.front().revents != 0;
}

void DriverSupervisor::endDriver() const {
    (void)driver_->signal(SIGTERM);
    if (!driver_->waitForEnd(kLongestEnd)) (void)driver_->signal(SIGKILL);
    (void)driver_->waitForEnd(kLongestEnd);
}

int DriverSupervisor::supervise() {
    for (;;) {
        const auto start = Clock::now();
        if (driver_ || startDriver()) {
            if (signalComesBefore(driver_->get(), kForEver)) {
                endDriver();
                return 0;
            }
            const auto ending = driver_->reap().value_or(ProcessDescriptor::Ending{});
            driver_.reset();
            const bool byItself = ending.end == ProcessDescriptor::End::exited;
            if (byItself && ending.status != Driver::kFailed) return 0;
        }
        const auto lived = std::chrono::duration_cast<Milliseconds>(Clock::now() - start);
        const auto delay = backOff_.delayAfter(lived);
        std::fprintf(stderr, "halvo-audio-device: the driver died; starting it again\n");
        if (signalComesBefore(-1, delay)) return 0;
    }
}

} // namespace halvo::driver
