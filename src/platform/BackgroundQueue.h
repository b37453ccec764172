#pragma once

#include <functional>

namespace halvo {

/// Runs work that may block on threads other than the main one.
class BackgroundQueue {
  public:
    virtual ~BackgroundQueue() = default;

    /// Runs `work` soon, in parallel with other work and in no particular order: blocking work
    /// delays nothing else. Any thread.
    virtual void async(std::function<void()> work) = 0;
};

} // namespace halvo
