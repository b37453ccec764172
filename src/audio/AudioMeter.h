#pragma once

#include "audio/AtomicFloat.h"
#include "audio/TripleBuffer.h"
#include "base/Realtime.h"
#include "base/Subscription.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace halvo {

class MainQueue;

/// Turns the processed signal into what the interface draws: a level with instant attack and a
/// short release, and the RMS of the last 20 buffers. Linear amplitudes, full scale 1. Everything
/// is for the main thread, but what is marked for the render thread.
class AudioMeter {
  public:
    static constexpr std::size_t kHistoryLength = 20;
    using History = std::array<float, kHistoryLength>; ///< oldest first

    explicit AudioMeter(MainQueue& queue) : queue_(queue) {}

    // Called at each tick, in this order, if set.
    std::function<void(float)> onLevelUpdate;
    std::function<void(const History&)> onWaveformUpdate;
    std::function<void(bool)> onRunningUpdate;
    /// Asked at each tick; absent counts as not running.
    std::function<bool()> isIORunning;
    /// Called at the end of each tick: the one clock by which the main thread collects what the
    /// render thread has made.
    std::function<void()> onTick;

    /// Ticks 30 times a second. By design a second start without a stop makes two timers tick.
    void start();
    /// Ends the ticks and reports a level and a history of zeros.
    void stop();
    void tick();

    float currentLevel() const { return currentLevel_; }
    const History& history() const { return history_; }

    /// The largest magnitude of the latest buffer; set just before `captureAmplitude`.
    AtomicFloat rawPeak;
    /// Adds one buffer's RMS to the history. A negative or overflowing count ends the process.
    /// Render thread.
    void captureAmplitude(const float* samples, std::int64_t frameCount,
                          std::int64_t channelCount) noexcept HALVO_REALTIME;
    void captureAmplitude(std::span<const float> samples) noexcept HALVO_REALTIME;

  private:
    /// A history and the run of the meter that it belongs to.
    struct Captured {
        History history{};
        std::uint32_t run = 0;
    };

    // Main thread.
    MainQueue& queue_;
    Subscription timer_;
    std::vector<Subscription> replacedTimers_;
    float currentLevel_ = 0;
    History history_{};
    // Render thread.
    Captured latest_;
    // Shared.
    std::atomic<std::uint32_t> run_{0}; ///< counts the stops
    TripleBuffer<Captured> captured_{Captured{}};
};

} // namespace halvo
