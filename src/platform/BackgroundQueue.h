#pragma once

#include <functional>

namespace halvo {

/// Runs work that may block on threads other than the main one.
class BackgroundQueue {
  public:
    virtual ~BackgroundQueue() = default;

    /// Runs `work` soon and beside other work: what blocks holds up nothing else, and no order is
    /// promised. Any thread.
    virtual void async(std::function<void()> work) = 0;
};

} // namespace halvo
