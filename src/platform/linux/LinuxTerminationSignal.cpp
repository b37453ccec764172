#include "platform/linux/LinuxTerminationSignal.h"

#include "platform/AudioHardware.h"
#include "platform/linux/JsonUserDefaults.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

/// For silencing the listeners, and again for the handler.
constexpr auto kLongestStep = std::chrono::milliseconds(450);

sigset_t terminationSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    return set;
}

/// Runs `step` on another thread and waits for it, but not longer than allowed.
void runLimited(std::function<void()> step) {
    struct Progress {
        std::mutex mutex;
        std::condition_variable changed;
        bool done = false;
    };
    const auto progress = std::make_shared<Progress>();
    try {
        std::thread([progress, step] {
            step();
            const std::scoped_lock lock(progress->mutex);
            progress->done = true;
            progress->changed.notify_one();
        }).detach();
    } catch (const std::system_error&) {
        // No thread to be had: better without the limit than not at all.
        step();
        return;
    }
    std::unique_lock lock(progress->mutex);
    progress->changed.wait_for(lock, kLongestStep, [&progress] { return progress->done; });
}

/// Ends the process as the signal does by itself.
void dieBySignal() {
    (void)std::signal(SIGTERM, SIG_DFL);
    LinuxTerminationSignal::unblock();
    (void)std::raise(SIGTERM);
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

void LinuxTerminationSignal::unblockInChild() noexcept {
    sigset_t none;
    sigemptyset(&none);
    (void)::sigprocmask(SIG_SETMASK, &none, nullptr);
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
        unblock(); // then at least it ends the process
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
    // Before the handler's first write, or the main thread would answer it.
    runLimited([this] { mainHardware_.silenceListeners(); });
    runLimited([this, handler] {
        const auto hardware = makeHardware_();
        const auto defaults = JsonUserDefaults::readOnly(defaults_);
        if (!hardware) return;
        handler(*hardware, defaults);
        if (handled_) handled_();
    });
    dieBySignal();
}

} // namespace halvo
