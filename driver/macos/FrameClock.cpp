#include "driver/macos/FrameClock.h"

#include <numeric>

namespace halvo::driver {

namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

/// value × numerator / denominator, rounded down, without the product ever overflowing: both are
/// below 2³² for every timebase that processors have.
constexpr std::uint64_t scaled(std::uint64_t value, std::uint64_t numerator,
                               std::uint64_t denominator) noexcept {
    return value / denominator * numerator + value % denominator * numerator / denominator;
}

} // namespace

FrameClock::FrameClock(Timebase timebase) : timebase_(timebase) {
    start(0, 48000);
}

void FrameClock::start(std::uint64_t hostTime, std::uint32_t rate) {
    const std::uint64_t frames = std::uint64_t{rate} * timebase_.numerator;
    const std::uint64_t ticks = kNanosecondsPerSecond * timebase_.denominator;
    const std::uint64_t common = std::gcd(frames, ticks);
    framesNumerator_ = frames / common;
    ticksNumerator_ = ticks / common;
    start_ = hostTime;
    ++seed_;
}

ZeroTimeStamp FrameClock::at(std::uint64_t now) const noexcept HALVO_REALTIME {
    const std::uint64_t start = start_.load(std::memory_order_relaxed);
    const std::uint64_t frames = framesNumerator_.load(std::memory_order_relaxed);
    const std::uint64_t ticks = ticksNumerator_.load(std::memory_order_relaxed);
    const std::uint64_t elapsed = now > start ? now - start : 0;
    const std::uint64_t frame = scaled(elapsed, frames, ticks) / kPeriod * kPeriod;
    return {frame, start + scaled(frame, ticks, frames), seed_.load(std::memory_order_relaxed)};
}

} // namespace halvo::driver
