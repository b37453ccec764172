#pragma once

#include "base/Subscription.h"

#include <chrono>
#include <functional>

namespace halvo {

/// Runs work on the main thread, in the order in which it was posted.
class MainQueue {
  public:
    using Work = std::function<void()>;
    using Duration = std::chrono::microseconds;

    virtual ~MainQueue() = default;

    /// Runs `work` in a later iteration of the main loop, never inside this call. Any thread.
    virtual void async(Work work) = 0;

    /// Runs `work` once after `delay`; it cannot be cancelled. Main thread.
    virtual void after(Duration delay, Work work) = 0;

    /// Runs `work` once after `delay` unless the subscription ends first. Main thread.
    virtual Subscription afterCancellable(Duration delay, Work work) = 0;

    /// Runs `work` every `period` until the subscription ends. A back end may pause it after some
    /// seconds without sound, or while its results are not visible. Main thread.
    virtual Subscription every(Duration period, Work work) = 0;

    /// The time since a fixed moment, on the clock that the delays use. Any thread.
    virtual Duration now() const {
        return std::chrono::duration_cast<Duration>(
            std::chrono::steady_clock::now().time_since_epoch());
    }
};

} // namespace halvo
