#pragma once

#include "platform/MainQueue.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace halvo {

/// A main queue in virtual time: nothing runs until the test says so.
class FakeMainQueue final : public MainQueue {
  public:
    void async(Work work) override;
    void after(Duration delay, Work work) override;
    Subscription afterCancellable(Duration delay, Work work) override;
    Subscription every(Duration period, Work work) override;
    Duration now() const override { return now_; }

    /// Runs the work that is queued now, but not the work which that queues.
    void runTurn();
    /// Runs until nothing is queued for the present moment.
    void flush();
    /// Lets virtual time pass, running everything that falls due, in order.
    void advance(Duration time);
    /// The same, up to the first work that falls due within that time. False: none did.
    bool advanceToNext(Duration time);
    /// Drops everything that has not run.
    void discard();

  private:
    struct Timer {
        Duration due{};
        std::uint64_t order = 0;
        Duration period{}; ///< zero: runs once
        Work work;
        bool cancelled = false;
    };

    std::shared_ptr<Timer> add(Duration delay, Duration period, Work work);
    std::shared_ptr<Timer> nextDue(Duration limit);
    bool runNext(Duration limit);

    std::mutex mutex_; ///< `async` may be called from any thread
    std::deque<Work> queued_;
    std::vector<std::shared_ptr<Timer>> timers_;
    Duration now_{};
    std::uint64_t nextOrder_ = 0;
};

} // namespace halvo
