#include "audio/AudioMeter.h"

#include "audio/SampleBlock.h"
#include "audio/SampleMath.h"
#include "platform/MainQueue.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace halvo {

namespace {

constexpr std::chrono::microseconds kTickPeriod{33'333};
/// One tick of 1/30 s over a release time of 0.08 s. The attack of 0.005 s is shorter than a tick:
/// the level jumps.
constexpr float kReleaseFraction = 0.4166667F;

} // namespace

void AudioMeter::start() {
    replacedTimers_.push_back(std::move(timer_));
    timer_ = queue_.every(kTickPeriod, [this] { tick(); });
}

void AudioMeter::stop() {
    timer_.cancel();
    currentLevel_ = 0;
    history_ = {};
    // What the render thread may still add belongs to the run that is over.
    run_.fetch_add(1, std::memory_order_relaxed);
    if (onLevelUpdate) onLevelUpdate(0);
    if (onWaveformUpdate) onWaveformUpdate(history_);
}

void AudioMeter::tick() {
    const float peak = rawPeak.value();
    if (!std::isfinite(currentLevel_)) currentLevel_ = 0; // it would never fall again
    const float delta = peak - currentLevel_;
    currentLevel_ = currentLevel_ < peak ? peak : currentLevel_ + delta * kReleaseFraction;
    const auto& captured = captured_.read();
    if (captured.run == run_.load(std::memory_order_relaxed)) history_ = captured.history;
    if (onLevelUpdate) onLevelUpdate(currentLevel_);
    if (onWaveformUpdate) onWaveformUpdate(history_);
    if (onRunningUpdate) onRunningUpdate(isIORunning && isIORunning());
    if (onTick) onTick();
}

void AudioMeter::captureAmplitude(const float* samples, std::int64_t frameCount,
                                  std::int64_t channelCount) noexcept HALVO_REALTIME {
    captureAmplitude({samples, sampleCount(frameCount, channelCount)});
}

void AudioMeter::captureAmplitude(std::span<const float> samples) noexcept HALVO_REALTIME {
    const auto run = run_.load(std::memory_order_relaxed);
    if (run != latest_.run) latest_ = {{}, run};
    auto& history = latest_.history;
    std::copy(history.begin() + 1, history.end(), history.begin());
    history.back() = rootMeanSquare(samples);
    captured_.write(latest_);
}

} // namespace halvo
