#include "linux/process/LinuxTerminationSignal.h"

#include "linux/files/JsonUserDefaults.h"
#include "platform/AudioHardware.h"
#include "posix/ProcessTermination.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

sigset_t terminationSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    return set;
}

} // namespace

void LinuxTerminationSignal::blockBeforeThreads() {
    const auto set = terminationSet();
    (void)::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void LinuxTerminationSignal::unblock() {
    const auto set = terminationSet();
    (void)::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

LinuxTerminationSignal::LinuxTerminationSignal(AudioHardware& mainHardware,
                                               MakeHardware makeHardware,
                                               std::filesystem::path defaults,
                                               std::function<void()> handled)
    : mainHardware_(mainHardware), makeHardware_(std::move(makeHardware)),
      defaults_(std::move(defaults)), handled_(std::move(handled)) {}

LinuxTerminationSignal::~LinuxTerminationSignal() {
    if (!thread_.joinable()) return;
    (void)::eventfd_write(stop_.get(), 1); // cannot overflow: written once
    thread_.join();
}

void LinuxTerminationSignal::install(Handler handler) {
    if (thread_.joinable()) return;
    const auto set = terminationSet();
    signal_ = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC));
    stop_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC));
    if (!signal_ || !stop_) {
        unblock(); // then SIGTERM at least ends the process
        return;
    }
    thread_ = std::thread([this, handler] { waitForSignal(handler); });
}

void LinuxTerminationSignal::waitForSignal(Handler handler) {
    std::array<pollfd, 2> waiting{pollfd{signal_.get(), POLLIN, 0}, pollfd{stop_.get(), POLLIN, 0}};
    while (::poll(waiting.data(), waiting.size(), -1) < 0) {
        if (errno != EINTR) return;
    }
    if (waiting[0].revents == 0) return;
    // Before the handler's first write, or the main thread would react to it.
    ProcessTermination::runLimited([this] { mainHardware_.silenceListeners(); });
    ProcessTermination::runLimited([this, handler] {
        const auto hardware = makeHardware_();
        const auto defaults = JsonUserDefaults::readOnly(defaults_);
        if (!hardware) return;
        handler(*hardware, defaults);
        if (handled_) handled_();
    });
    ProcessTermination::dieBySignal();
}

} // namespace halvo
