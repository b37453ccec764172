#pragma once

#include <algorithm>
#include <chrono>

namespace halvo::driver {

/// The delay before a process that died is restarted: none the first time, then doubled for each
/// one that dies young.
class RestartBackOff {
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
