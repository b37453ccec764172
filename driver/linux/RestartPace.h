#pragma once

#include <algorithm>
#include <chrono>

namespace halvo::driver {

/// How long to wait before a program that died is started again: not at all the first time, and
/// longer and longer for one that dies young each time.
class RestartPace {
  public:
    using Milliseconds = std::chrono::milliseconds;
    static constexpr Milliseconds kYoung{2000};
    static constexpr Milliseconds kFirst{100};
    static constexpr Milliseconds kLongest{30000};

    Milliseconds delayAfter(Milliseconds lived) {
        if (lived >= kYoung) next_ = Milliseconds{0};
        const auto delay = next_;
        next_ = delay == Milliseconds{0} ? kFirst : std::min(delay * 2, kLongest);
        return delay;
    }

  private:
    Milliseconds next_{0};
};

} // namespace halvo::driver
