#pragma once

#include "base/Realtime.h"

#include <atomic>
#include <cstdint>

namespace halvo::driver {

/// How long a tick of the host's clock lasts: nanoseconds = ticks × numerator / denominator.
struct Timebase {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;
};

/// A pair of equal moments on the device's and on the host's clock.
struct ZeroTimeStamp {
    std::uint64_t frame = 0; ///< frames since the clock was started
    std::uint64_t hostTime = 0;
    std::uint64_t seed = 0; ///< another one: do not compare with stamps of before
};

/// A device's clock that runs exactly as fast as the host's. Every stamp is computed from the start
/// alone, so nothing adds up: a stamp is less than one tick early after any time.
class FrameClock {
  public:
    /// Frames between two stamps.
    static constexpr std::uint32_t kPeriod = 16384;

    explicit FrameClock(Timebase timebase);

    /// Begins again at frame 0, at `rate` frames per second. While nobody asks for stamps; any
    /// thread.
    void start(std::uint64_t hostTime, std::uint32_t rate);

    /// The last stamp at or before the host's time `now`. Any thread, real-time safe.
    ZeroTimeStamp at(std::uint64_t now) const noexcept HALVO_REALTIME;

  private:
    const Timebase timebase_;
    // Frames are ticks × framesNumerator / ticksNumerator, in lowest terms.
    std::atomic<std::uint64_t> framesNumerator_{1};
    std::atomic<std::uint64_t> ticksNumerator_{1};
    std::atomic<std::uint64_t> start_{0};
    std::atomic<std::uint64_t> seed_{0};
};

} // namespace halvo::driver
