#include "driver/macos/FrameClock.h"
#include "driver/macos/VirtualDevice.h"

#include <gtest/gtest.h>

namespace {

using halvo::driver::FrameClock;
using halvo::driver::Timebase;
using halvo::driver::VirtualDevice;
using halvo::driver::ZeroTimeStamp;

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t kStart = 987'654'321'987;
constexpr std::uint64_t kHour = 3600;

/// Ticks that `frames` take, by wide numbers, rounded down.
std::uint64_t ticksFor(std::uint64_t frames, std::uint32_t rate, Timebase timebase) {
    return static_cast<std::uint64_t>(Wide{frames} * 1'000'000'000 * timebase.denominator /
                                      (Wide{rate} * timebase.numerator));
}

/// Cycles of 471 frames for an hour; the stamp at each must be the last multiple of the period, to
/// the tick.
void runAnHour(std::uint32_t rate, Timebase timebase) {
    constexpr std::uint64_t kCycle = 471;
    FrameClock clock(timebase);
    clock.start(kStart, rate);
    const std::uint64_t seed = clock.at(kStart).seed;
    std::uint64_t next = 0;
    std::uint64_t stamps = 0;
    for (std::uint64_t frame = 0; frame < rate * kHour; frame += kCycle) {
        const std::uint64_t now = kStart + ticksFor(frame, rate, timebase) + 1;
        const ZeroTimeStamp stamp = clock.at(now);
        ASSERT_EQ(stamp.seed, seed);
        ASSERT_EQ(stamp.frame, frame / FrameClock::kPeriod * FrameClock::kPeriod);
        ASSERT_EQ(stamp.hostTime, kStart + ticksFor(stamp.frame, rate, timebase));
        if (stamp.frame < next) continue;
        ASSERT_EQ(stamp.frame, next) << "none is left out";
        next += FrameClock::kPeriod;
        ++stamps;
    }
    EXPECT_EQ(stamps, (rate * kHour - 1) / FrameClock::kPeriod + 1);
}

TEST(FrameClockTests, AnHourOfCyclesAddsUpNoRounding) {
    struct Case {
        const char* name;
        Timebase timebase;
    };
    const Case cases[] = {{"nanoseconds", {1, 1}}, {"24 MHz", {125, 3}}, {"odd", {1000, 333}}};
    for (const auto& [name, timebase] : cases) {
        for (const std::uint32_t rate : VirtualDevice::kRates) {
            SCOPED_TRACE(std::string(name) + " at " + std::to_string(rate));
            runAnHour(rate, timebase);
        }
    }
}

TEST(FrameClockTests, AYearLaterAndBeforeItsStart) {
    constexpr std::uint64_t kYear = 366ULL * 24 * 3600;
    FrameClock clock({125, 3});
    clock.start(kStart, 96000);
    const std::uint64_t frames = kYear * 96000 / FrameClock::kPeriod * FrameClock::kPeriod;
    const ZeroTimeStamp late = clock.at(kStart + ticksFor(frames, 96000, {125, 3}));
    EXPECT_EQ(late.frame, frames);
    const ZeroTimeStamp early = clock.at(kStart - 1);
    EXPECT_EQ(early.frame, 0U);
    EXPECT_EQ(early.hostTime, kStart);
}

TEST(FrameClockTests, AnotherStartIsAnotherTimeline) {
    FrameClock clock({1, 1});
    clock.start(kStart, 48000);
    const ZeroTimeStamp before = clock.at(kStart + 10'000'000'000);
    clock.start(kStart + 20'000'000'000, 96000);
    const ZeroTimeStamp after = clock.at(kStart + 20'000'000'000);
    EXPECT_GT(before.frame, 0U);
    EXPECT_EQ(after.frame, 0U);
    EXPECT_NE(after.seed, before.seed);
}

} // namespace
