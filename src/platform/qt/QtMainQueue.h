#pragma once

#include "platform/MainQueue.h"

#include <QObject>

namespace halvo {

/// The main thread's event loop as a queue. Created and destroyed on the main thread, after the
/// application object; work that is still waiting then is dropped.
class QtMainQueue final : public MainQueue {
  public:
    QtMainQueue() = default;

    void async(Work work) override;
    void after(Duration delay, Work work) override;
    Subscription afterCancellable(Duration delay, Work work) override;
    /// Keeps to the grid of whole periods since the call; ticks that were missed are left out.
    Subscription every(Duration period, Work work) override;

    /// Says whether anything goes on that periodic work could follow. When nothing has for two
    /// seconds, that work rests until something does. Any thread.
    void setQuiet(bool quiet);

  private:
    void restSoon();

    QObject context_;
    bool quiet_ = false;
    Subscription rest_;
};

} // namespace halvo
