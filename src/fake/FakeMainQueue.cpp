#include "fake/FakeMainQueue.h"

#include <algorithm>
#include <tuple>

namespace halvo {

void FakeMainQueue::async(Work work) {
    const std::lock_guard lock(mutex_);
    queued_.push_back(std::move(work));
}

void FakeMainQueue::after(Duration delay, Work work) {
    add(delay, Duration{}, std::move(work));
}

Subscription FakeMainQueue::afterCancellable(Duration delay, Work work) {
    auto timer = add(delay, Duration{}, std::move(work));
    return Subscription([timer] { timer->cancelled = true; });
}

Subscription FakeMainQueue::every(Duration period, Work work) {
    auto timer = add(period, period, std::move(work));
    return Subscription([timer] { timer->cancelled = true; });
}

void FakeMainQueue::runTurn() {
    std::deque<Work> current;
    {
        const std::lock_guard lock(mutex_);
        current.swap(queued_);
    }
    for (auto& work : current)
        work();
}

void FakeMainQueue::flush() {
    const auto isEmpty = [this] {
        const std::lock_guard lock(mutex_);
        return queued_.empty();
    };
    while (!isEmpty())
        runTurn();
}

void FakeMainQueue::advance(Duration time) {
    const Duration end = now_ + time;
    flush();
    while (runNext(end)) {
    }
    now_ = end;
}

bool FakeMainQueue::advanceToNext(Duration time) {
    const Duration end = now_ + time;
    flush();
    if (runNext(end)) return true;
    now_ = end;
    return false;
}

bool FakeMainQueue::runNext(Duration limit) {
    const auto timer = nextDue(limit);
    if (!timer) return false;
    now_ = std::max(now_, timer->due);
    if (timer->period > Duration{}) {
        timer->due += timer->period;
        timer->order = nextOrder_++;
    } else {
        std::erase(timers_, timer);
    }
    timer->work();
    flush();
    return true;
}

void FakeMainQueue::discard() {
    timers_.clear();
    const std::lock_guard lock(mutex_);
    queued_.clear();
}

std::shared_ptr<FakeMainQueue::Timer> FakeMainQueue::add(Duration delay, Duration period,
                                                         Work work) {
    auto timer =
        std::make_shared<Timer>(Timer{now_ + delay, nextOrder_++, period, std::move(work), false});
    timers_.push_back(timer);
    return timer;
}

std::shared_ptr<FakeMainQueue::Timer> FakeMainQueue::nextDue(Duration limit) {
    std::erase_if(timers_, [](const auto& timer) { return timer->cancelled; });
    const auto first = std::ranges::min_element(
        timers_, {}, [](const auto& timer) { return std::tuple(timer->due, timer->order); });
    if (first == timers_.end() || (*first)->due > limit) return nullptr;
    return *first;
}

} // namespace halvo
