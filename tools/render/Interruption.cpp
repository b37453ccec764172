#include "render/Interruption.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

namespace halvo::render {

namespace {

std::atomic<int> caught{0};
static_assert(std::atomic<int>::is_always_lock_free);

} // namespace

Interruption::Interruption() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present{};
        (void)::sigaction(number, nullptr, &present); // these three can be asked for
        if (present.sa_handler == SIG_IGN) continue;
        struct sigaction action{};
        action.sa_handler = [](int signal) { caught.store(signal, std::memory_order_relaxed); };
        action.sa_flags = SA_RESTART;
        (void)::sigaction(number, &action, nullptr);
    }
    // Too large a file, or nobody to read the messages, is an error to handle, not an end.
    (void)std::signal(SIGXFSZ, SIG_IGN);
    (void)std::signal(SIGPIPE, SIG_IGN);
}

int Interruption::signal() const {
    return caught.load(std::memory_order_relaxed);
}

void Interruption::endBy(int signal) {
    (void)std::signal(signal, SIG_DFL);
    (void)std::raise(signal);
    std::exit(EXIT_FAILURE); // if it is blocked
}

} // namespace halvo::render
