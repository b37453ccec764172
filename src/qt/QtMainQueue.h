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
    /// `untilRest`: for how long nothing goes on before periodic work rests.
    explicit QtMainQueue(std::chrono::milliseconds untilRest = std::chrono::seconds(2))
        : untilRest_(untilRest) {}

    void async(Work work) override;
    void after(Duration delay, Work work) override;
    Subscription afterCancellable(Duration delay, Work work) override;
    /// Keeps to the grid of whole periods since the call; ticks that were missed are left out.
    Subscription every(Duration period, Work work) override;

    /// Says whether anything goes on that periodic work could follow. When nothing has for
    /// `untilRest`, that work rests until something does. Any thread.
    void setQuiet(bool quiet);

    /// Answers whether somebody can see what periodic work makes. When nobody can for
    /// `untilRest`, that work rests until `stir`. Without it somebody always can. Main thread.
    void setWatch(std::function<bool()> isWatched);
    /// Somebody looks again. Main thread.
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
