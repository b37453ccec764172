#include "loudness/WriteAccess.h"

#include <thread>

namespace halvo {

namespace {

constexpr std::chrono::milliseconds kPoll{1};

} // namespace

/// As `try_lock_for`, which the ThreadSanitizer of g++ 12 takes for no lock at all.
WriteAccess::Lock WriteAccess::lockWithin(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    Lock lock(writing_, std::try_to_lock);
    while (!lock && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPoll);
        (void)lock.try_lock(); // the loop looks
    }
    return lock;
}

void WriteAccess::stop() {
    auto expected = Phase::running; // a restore that has begun goes on
    (void)phase_.compare_exchange_strong(expected, Phase::stopped);
}

} // namespace halvo
