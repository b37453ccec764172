#include "render/Interruption.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace halvo::render {

namespace {

std::atomic<int> caught{0};
static_assert(std::atomic<int>::is_always_lock_free);

} // namespace

Interruption::Interruption() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present{};
        (void)::sigaction(number, nullptr, &present); // cannot fail for these three
        if (present.sa_handler == SIG_IGN) continue;
        struct sigaction action{};
        action.sa_handler = [](int signal) { caught.store(signal, std::memory_order_relaxed); };
        action.sa_flags = SA_RESTART;
        (void)::sigaction(number, &action, nullptr);
    }
    // A file that is too large, or a closed pipe, is an error to report, not the end.
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
