#include "posix/ProcessTermination.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace halvo::ProcessTermination {

namespace {

constexpr auto kLongestStep = std::chrono::milliseconds(450);

} // namespace

void runLimited(const std::function<void()>& step) {
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
        // No thread can be started: better without the limit than not at all.
        step();
        return;
    }
    std::unique_lock lock(progress->mutex);
    progress->changed.wait_for(lock, kLongestStep, [&progress] { return progress->done; });
}

void dieBySignal() {
    (void)std::signal(SIGTERM, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    (void)::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    (void)std::raise(SIGTERM);
}

} // namespace halvo::ProcessTermination
