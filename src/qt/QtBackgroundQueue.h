#pragma once

#include "platform/BackgroundQueue.h"

#include <QThreadPool>

namespace halvo {

/// A few threads that exist only while there is work, and half a minute longer. What still waits
/// when this goes is dropped; what runs then is waited for.
class QtBackgroundQueue final : public BackgroundQueue {
  public:
    QtBackgroundQueue();
    ~QtBackgroundQueue() override;

    void async(std::function<void()> work) override;

  private:
    QThreadPool pool_;
};

} // namespace halvo
