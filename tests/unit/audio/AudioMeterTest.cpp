#include "audio/AudioMeter.h"
#include "fake/FakeMainQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

using namespace halvo;
using namespace std::chrono_literals;

namespace {

class Meter : public testing::Test {
  protected:
    FakeMainQueue queue;
    AudioMeter meter{queue};

    float levelAfter(float peak) {
        meter.rawPeak.set(peak);
        meter.tick();
        return meter.currentLevel();
    }
    void capture(float amplitude) {
        const std::array<float, 4> samples{amplitude, -amplitude, amplitude, -amplitude};
        meter.captureAmplitude(samples.data(), 2, 2);
    }
};

} // namespace

TEST_F(Meter, JumpsUpAndFallsByAFixedPart) {
    EXPECT_EQ(levelAfter(1.0F), 1.0F);
    EXPECT_NEAR(levelAfter(0), 0.5833, 1e-4);
    EXPECT_NEAR(levelAfter(0), 0.3403, 1e-4);
    EXPECT_NEAR(levelAfter(0), 0.1985, 1e-4);
    EXPECT_EQ(levelAfter(0.9F), 0.9F);
    for (int i = 0; i < 300; ++i)
        EXPECT_GE(levelAfter(0), 0);
}

TEST_F(Meter, AnEndlessPeakIsForgottenByTheNextTick) {
    for (const float broken : {std::numeric_limits<float>::infinity(), std::nanf("")}) {
        (void)levelAfter(broken);
        EXPECT_EQ(levelAfter(0.5F), 0.5F) << broken;
        EXPECT_NEAR(levelAfter(0), 0.2917, 1e-4) << broken;
    }
}

TEST_F(Meter, KeepsTheLastTwentyBuffersOldestFirst) {
    for (int n = 1; n <= 25; ++n)
        capture(static_cast<float>(n) / 100);
    meter.tick();
    EXPECT_FLOAT_EQ(meter.history().front(), 0.06F);
    EXPECT_FLOAT_EQ(meter.history().back(), 0.25F);
    EXPECT_TRUE(std::ranges::is_sorted(meter.history()));
    meter.captureAmplitude(nullptr, 0, 2);
    meter.tick();
    EXPECT_EQ(meter.history().back(), 0.0F) << "an empty buffer is silence";
}

TEST_F(Meter, TicksThirtyTimesASecondBetweenStartAndStop) {
    int ticks = 0;
    std::vector<bool> running;
    meter.onLevelUpdate = [&](float) { ++ticks; };
    meter.onRunningUpdate = [&](bool now) { running.push_back(now); };
    meter.start();
    queue.advance(1s);
    EXPECT_EQ(ticks, 30);
    EXPECT_FALSE(running.back()) << "nobody to ask";
    meter.isIORunning = [] { return true; };
    queue.advance(40ms);
    EXPECT_TRUE(running.back());
    const auto reports = running.size();
    meter.stop();
    const int stopped = ticks;
    queue.advance(1s);
    EXPECT_EQ(ticks, stopped);
    EXPECT_EQ(running.size(), reports) << "stopping does not report it";
    meter.start();
    meter.start();
    queue.advance(100ms);
    EXPECT_EQ(ticks, stopped + 6) << "two timers";
}

TEST_F(Meter, StoppingReportsSilenceAndWhatIsStillCapturedDoesNotComeBack) {
    capture(0.5F);
    (void)levelAfter(0.8F);
    float level = -1;
    AudioMeter::History waveform{};
    waveform.fill(-1);
    meter.onLevelUpdate = [&](float value) { level = value; };
    meter.onWaveformUpdate = [&](const auto& history) { waveform = history; };
    meter.stop();
    EXPECT_EQ(level, 0);
    EXPECT_EQ(meter.currentLevel(), 0);
    EXPECT_EQ(std::ranges::count(waveform, 0.0F), 20);
    meter.tick();
    EXPECT_EQ(std::ranges::count(waveform, 0.0F), 20) << "nothing new was captured";
    capture(0.25F);
    meter.tick();
    EXPECT_EQ(std::ranges::count(waveform, 0.0F), 19) << "a history of the new run alone";
}

TEST_F(Meter, BadCountsEndTheProcess) {
    float sample = 0;
    EXPECT_DEATH(meter.captureAmplitude(&sample, -1, 2), "");
    EXPECT_DEATH(meter.captureAmplitude(&sample, std::int64_t{1} << 62, 4), "");
}

TEST(Threads, AHistoryCrossesWhole) {
    FakeMainQueue queue;
    AudioMeter meter(queue);
    std::atomic<bool> done{false};
    std::thread renderer([&] {
        for (int n = 1; n <= 50'000; ++n) {
            const float sample = static_cast<float>(n);
            meter.captureAmplitude(&sample, 1, 1);
        }
        done.store(true);
    });
    while (!done.load()) {
        meter.tick();
        ASSERT_TRUE(std::ranges::is_sorted(meter.history()));
    }
    renderer.join();
}
