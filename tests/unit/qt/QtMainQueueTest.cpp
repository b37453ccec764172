#include "qt/QtMainQueue.h"

#include "unit/qt/QtTestLoop.h"

#include <QEventLoop>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using halvo::QtMainQueue;
using halvo::Subscription;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class QtMainQueueTests : public testing::Test {
  protected:
    /// Lets the loop run until work calls `stop`.
    void run() { loop_.exec(); }
    void stop() { loop_.quit(); }

    QCoreApplication& application_ = halvo::test::application();
    QEventLoop loop_;
    std::optional<QtMainQueue> queue_{std::in_place};
    std::vector<std::string> log_;
};

TEST_F(QtMainQueueTests, RunsWorkLaterInTheLoopAndInOrder) {
    int levelInWork = 0;
    queue_->async([&] {
        levelInWork = QThread::currentThread()->loopLevel();
        queue_->async([&] {
            log_.emplace_back("posted from work");
            stop();
        });
        log_.emplace_back("first");
    });
    queue_->async([&] { log_.emplace_back("second"); });
    EXPECT_TRUE(log_.empty()) << "inside the call";
    run();
    EXPECT_EQ(levelInWork, 1);
    EXPECT_EQ(log_, (std::vector<std::string>{"first", "second", "posted from work"}));
}

TEST_F(QtMainQueueTests, TakesWorkFromAnyThreadAndKeepsEachOnesOrder) {
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    const auto mainThread = std::this_thread::get_id();
    std::map<int, std::vector<int>> received;
    int count = 0;
    bool elsewhere = false;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < kEach; ++i) {
                queue_->async([&, thread, i] {
                    elsewhere = elsewhere || std::this_thread::get_id() != mainThread;
                    received[thread].push_back(i);
                    if (++count == kThreads * kEach) stop();
                });
            }
        });
    }
    run();
    for (auto& thread : threads)
        thread.join();
    EXPECT_FALSE(elsewhere);
    for (const auto& [thread, numbers] : received) {
        EXPECT_EQ(numbers.size(), std::size_t{kEach});
        EXPECT_TRUE(std::ranges::is_sorted(numbers)) << "of thread " << thread;
    }
}

TEST_F(QtMainQueueTests, DelaysAreIndependentAndCancellable) {
    queue_->after(30ms, [this] { stop(); });
    queue_->after(10ms, [this] { log_.emplace_back("10"); });
    queue_->after(5ms, [this] { log_.emplace_back("5"); });
    const auto kept = queue_->afterCancellable(7ms, [this] { log_.emplace_back("7"); });
    auto cancelled = queue_->afterCancellable(1ms, [this] { log_.emplace_back("cancelled"); });
    cancelled.cancel();
    {
        const auto ended = queue_->afterCancellable(1ms, [this] { log_.emplace_back("ended"); });
    }
    run();
    EXPECT_EQ(log_, (std::vector<std::string>{"5", "7", "10"}));
}

TEST_F(QtMainQueueTests, NeverRunsEarlyThoughTheLoopCountsMilliseconds) {
    constexpr auto kPeriod = 3700us;
    const auto start = Clock::now();
    int early = 0;
    int ticks = 0;
    const auto once = queue_->afterCancellable(1900us, [&] {
        if (Clock::now() - start < 1900us) ++early;
    });
    const auto ticking = queue_->every(kPeriod, [&] {
        ++ticks;
        if (Clock::now() - start < ticks * kPeriod) ++early;
        if (ticks == 12) stop();
    });
    run();
    EXPECT_EQ(early, 0);
}

TEST_F(QtMainQueueTests, MissedTicksAreLeftOut) {
    constexpr auto kPeriod = 2ms;
    std::vector<Clock::time_point> ticks;
    const auto start = Clock::now();
    const auto ticking = queue_->every(kPeriod, [&] {
        ticks.push_back(Clock::now());
        // A slow first tick takes five periods.
        while (ticks.size() == 1 && Clock::now() < ticks.front() + 5 * kPeriod) {
        }
        if (ticks.size() == 3) stop();
    });
    run();
    // The second is late. If missed ticks were made up for, the third would follow immediately.
    EXPECT_GE(ticks[2] - start, 7 * kPeriod);
}

TEST_F(QtMainQueueTests, ATickMayEndItself) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = held;
    Subscription ticking;
    ticking = queue_->every(1ms, [&, held] {
        ++*held;
        ticking.cancel();
        ++*held; // the work must not be destroyed while it runs
    });
    queue_->after(8ms, [this] { stop(); });
    EXPECT_EQ(*held, 0);
    held.reset();
    run();
    EXPECT_TRUE(watch.expired()) << "what the work held is kept after its end";
}

TEST_F(QtMainQueueTests, PeriodicWorkRestsWhileNobodyWatchesOrNothingFlows) {
    struct Case {
        const char* name;
        std::function<void(QtMainQueue&)> rest;
        std::function<void(QtMainQueue&)> wake;
    };
    bool isWatched = true;
    const std::vector<Case> cases{
        {"nobody watches", [&](QtMainQueue&) { isWatched = false; },
         [&](QtMainQueue& queue) {
             isWatched = true;
             queue.stir();
         }},
        {"nothing flows", [](QtMainQueue& queue) { queue.setQuiet(true); },
         [](QtMainQueue& queue) { queue.setQuiet(false); }},
    };
    // Timers that are due run in the order of their times, however late the loop is.
    for (const auto& [name, rest, wake] : cases) {
        QtMainQueue queue(4ms);
        queue.setWatch([&] { return isWatched; });
        int ticks = 0;
        int resting = 0;
        int woken = 0;
        const auto ticking = queue.every(1ms, [&] { ++ticks; });
        queue_->after(20ms, [&] { rest(queue); });
        queue_->after(40ms, [&] { resting = std::exchange(ticks, 0); });
        queue_->after(60ms, [&] {
            EXPECT_EQ(ticks, 0) << name;
            wake(queue);
        });
        queue_->after(100ms, [&] {
            woken = ticks;
            stop();
        });
        run();
        EXPECT_GT(resting, 4) << name << ": rested while it was watched";
        EXPECT_GT(woken, 4) << name << ": rests for ever";
    }
}

TEST_F(QtMainQueueTests, SubscriptionsOutliveTheQueueAndItsWorkDoesNot) {
    auto delayed = queue_->afterCancellable(1ms, [this] { log_.emplace_back("delayed"); });
    auto ticking = queue_->every(1ms, [this] { log_.emplace_back("tick"); });
    queue_->async([this] { log_.emplace_back("async"); });
    queue_.reset();
    delayed.cancel();
    QtMainQueue other;
    other.after(5ms, [this] { stop(); });
    run();
    EXPECT_TRUE(log_.empty());
}

} // namespace
