#pragma once

#include "platform/MainQueue.h"

#include <QObject>

#include <chrono>
#include <functional>

namespace halvo {

/// The main thread's event loop as a queue. Created and destroyed on the main thread, after the
/// application object; work that is still waiting then is dropped.
class QtMainQueue final : public MainQueue {
  public:
    /// `untilRest`: how long everything is quiet before periodic work pauses.
    explicit QtMainQueue(std::chrono::milliseconds untilRest = std::chrono::seconds(2))
        : untilRest_(untilRest) {}

    void async(Work work) override;
    void after(Duration delay, Work work) override;
    Subscription afterCancellable(Duration delay, Work work) override;
    /// Fires at whole periods since the call; missed ticks are skipped.
    Subscription every(Duration period, Work work) override;

    /// Tells whether there is nothing for periodic work to follow. After `untilRest` of quiet, it
    /// pauses until there is something. Any thread.
    void setQuiet(bool quiet);

    /// `isWatched` returns whether the results of periodic work are visible. Once they have been
    /// hidden for `untilRest`, it pauses until `stir`. By default always visible. Main thread.
    void setWatch(std::function<bool()> isWatched);
    /// The results are visible again. Main thread.
    void stir();

  private:
    bool mayRest() const { return quiet_ || (isWatched_ && !isWatched_()); }
    void wake();
    void restSoon();

    const std::chrono::milliseconds untilRest_;
    QObject context_;
    bool quiet_ = false;
    std::function<bool()> isWatched_;
    Subscription rest_;
};

} // namespace halvo
