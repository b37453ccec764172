#pragma once

#include <chrono>
#include <thread>

namespace halvo {

/// Looks every two milliseconds whether the server shows what was asked of it; false when it does
/// not in that time. Any thread.
template <typename Predicate>
bool waitShortly(Predicate isReached, std::chrono::milliseconds longest) {
    const auto end = std::chrono::steady_clock::now() + longest;
    while (!isReached()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace halvo
