#include "CallbackMeasurement.h"

#include "BenchSound.h"
#include "Statistics.h"
#include "audio/AudioEngine.h"
#include "fake/FakePlatform.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <pthread.h>
#include <thread>

namespace halvo::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kRate = 48000;
constexpr std::uint32_t kCapacity = 16384;
constexpr std::array<std::uint32_t, 4> kBlocks{64, 128, 512, 1024};
constexpr std::size_t kCallbacks = 3000;
// Long enough for the processor to do other work in between.
constexpr std::chrono::milliseconds kPause{1};

/// The engine with a ring in memory in place of the driver's.
class Path {
  public:
    Path()
        : engine_(platform_.sharedMemory, platform_.outputUnits, platform_.mainQueue,
                  platform_.standardOutput,
                  [](const std::string&) { return std::optional<AudioDeviceID>(); }) {
        platform_.sharedMemory.createRing(kRate, 2, kCapacity);
        engine_.start("");
        engine_.eq().setBands(presetGains());
    }

    /// Microseconds for the next block of the sound.
    double render(std::uint32_t frames) {
        if (position_ + frames > sound_.frameCount()) position_ = 0;
        platform_.sharedMemory.write(
            std::span(sound_.samples).subspan(position_ * 2, std::size_t{frames} * 2));
        position_ += frames;
        RenderBuffer buffer{2, frames * 2 * 4, output_.data()};
        RenderBufferList list{1, &buffer};
        const RenderTimestamp timestamp;
        const auto begin = Clock::now();
        (void)renderCallback(&engine_, nullptr, &timestamp, 0, frames, &list); // it has no failure
        return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
    }

  private:
    FakePlatform platform_;
    AudioEngine engine_;
    demo::StereoSound sound_ = stretch(2);
    std::size_t position_ = 0;
    std::vector<float> output_ = std::vector<float>(std::size_t{kBlocks.back()} * 2);
};

void becomeRealTime() {
    sched_param parameters{};
    parameters.sched_priority = 20;
    // Without the right to it the figures hold, only their tail is longer.
    (void)::pthread_setschedparam(::pthread_self(), SCHED_FIFO, &parameters);
}

std::vector<double> times(std::uint32_t frames) {
    std::vector<double> microseconds;
    microseconds.reserve(kCallbacks);
    Path path;
    std::thread([&] {
        becomeRealTime();
        auto next = Clock::now();
        for (std::size_t i = 0; i < kCallbacks; ++i) {
            std::this_thread::sleep_until(next += kPause);
            microseconds.push_back(path.render(frames));
        }
    }).join();
    return microseconds;
}

} // namespace

nlohmann::ordered_json measureCallback() {
    nlohmann::ordered_json result;
    for (const std::uint32_t frames : kBlocks) {
        const auto microseconds = times(frames);
        result[std::to_string(frames)] = {{"p50", percentile(microseconds, 0.5)},
                                          {"p99", percentile(microseconds, 0.99)},
                                          {"p99.9", percentile(microseconds, 0.999)}};
    }
    return result;
}

} // namespace halvo::bench
