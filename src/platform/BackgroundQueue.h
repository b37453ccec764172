#pragma once

#include <functional>

namespace halvo {

/// Runs work that may block on a thread other than the main one.
class BackgroundQueue {
  public:
    virtual ~BackgroundQueue() = default;

    /// Runs `work` soon, in the order of the calls. Any thread.
    virtual void async(std::function<void()> work) = 0;
};

} // namespace halvo
