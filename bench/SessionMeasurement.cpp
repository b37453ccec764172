#include "SessionMeasurement.h"

#include "BenchSound.h"
#include "Statistics.h"
#include "TaskUsage.h"
#include "demo/ApplicationRun.h"
#include "demo/PresetsFile.h"
#include "demo/ProcessUsage.h"
#include "demo/Progress.h"
#include "demo/Stage.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

namespace halvo::bench {

using demo::ApplicationRun;
using demo::progress;
using demo::Stage;
using nlohmann::ordered_json;
using std::chrono_literals::operator""s;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using Outcome = std::expected<ordered_json, std::string>;

namespace {

// The session manager suspends what nobody plays to after five seconds.
constexpr Seconds kUntilIdle{8};
constexpr Seconds kUntilSteady{2};
constexpr Seconds kWindow{5};
constexpr int kWindows = 3;

struct Cost {
    double cpuPercent = 0;
    double wakeupsPerSecond = 0;
    double rssMiB = 0;

    Cost operator+(const Cost& other) const {
        return {cpuPercent + other.cpuPercent, wakeupsPerSecond + other.wakeupsPerSecond,
                rssMiB + other.rssMiB};
    }
};

ordered_json json(const Cost& cost) {
    return {{"cpuPercent", cost.cpuPercent},
            {"wakeupsPerSecond", cost.wakeupsPerSecond},
            {"rssMiB", cost.rssMiB}};
}

/// One of the two programs, from now until `finish`.
class Watch {
  public:
    explicit Watch(int pid) : pid_(pid), before_(TaskUsage::of(pid)), begin_(Clock::now()) {}

    /// Nothing when the program has ended.
    std::optional<Cost> finish() const {
        const Seconds duration = Clock::now() - begin_;
        const auto after = TaskUsage::of(pid_);
        const auto memory = demo::ProcessUsage::of(pid_);
        if (!before_ || !after || !memory) return std::nullopt;
        return Cost{.cpuPercent = 100 * after->cpuSecondsSince(*before_) / duration.count(),
                    .wakeupsPerSecond =
                        static_cast<double>(after->wakeupsSince(*before_)) / duration.count(),
                    .rssMiB = memory->residentMiB};
    }

  private:
    int pid_;
    std::optional<TaskUsage> before_;
    Clock::time_point begin_;
};

/// The median of each figure for itself.
Cost medianOf(const std::vector<Cost>& costs) {
    const auto of = [&](double Cost::* figure) {
        std::vector<double> values;
        for (const Cost& cost : costs)
            values.push_back(cost.*figure);
        return median(std::move(values));
    };
    return {of(&Cost::cpuPercent), of(&Cost::wakeupsPerSecond), of(&Cost::rssMiB)};
}

/// Both programs together, and each of them: medians of some windows of time.
Outcome measure(const Stage& stage, const ApplicationRun& application) {
    std::vector<Cost> together;
    std::vector<Cost> ofApplication;
    std::vector<Cost> ofDriver;
    for (int window = 0; window < kWindows; ++window) {
        const Watch applicationWatch(application.pid());
        const Watch driverWatch(stage.driverPid());
        std::this_thread::sleep_for(kWindow);
        const auto applicationCost = applicationWatch.finish();
        const auto driverCost = driverWatch.finish();
        if (!applicationCost || !driverCost)
            return std::unexpected("The application or the driver ended during the measurement.");
        together.push_back(*applicationCost + *driverCost);
        ofApplication.push_back(*applicationCost);
        ofDriver.push_back(*driverCost);
    }
    ordered_json result = json(medianOf(together));
    result["application"] = json(medianOf(ofApplication));
    result["driver"] = json(medianOf(ofDriver));
    return result;
}

Outcome measurePlaying(Stage& stage, const ApplicationRun& application) {
    const auto path = stage.prepare("bench.wav", stretch(kStretchSeconds));
    if (!path) return std::unexpected(path.error());
    const auto player = stage.startPlayingIntoVirtualOutput(*path);
    if (!player) return std::unexpected(player.error());
    std::this_thread::sleep_for(kUntilSteady);
    auto result = measure(stage, application);
    if (!result) return result;
    if (!(*player)->isRunning()) return std::unexpected("The player ended too early.");
    (*player)->end();
    (*result)["quantum"] = stage.session().options().quantum;
    return result;
}

} // namespace

Outcome measureSession() {
    auto programs = demo::Programs::find();
    if (!programs) return std::unexpected(programs.error());
    const auto stage = Stage::open(std::move(*programs));
    if (!stage) return std::unexpected(stage.error());
    if (auto failure = demo::writePresetsFile((*stage)->dataHome(), kPreset, presetGains()))
        return std::unexpected(*failure);
    const auto application = ApplicationRun::start(**stage);
    if (!application) return std::unexpected(application.error());
    if (auto ready = (*application)->waitUntilReady(); !ready)
        return std::unexpected(ready.error());

    progress("Application and driver while nothing plays");
    std::this_thread::sleep_for(kUntilIdle);
    auto idle = measure(**stage, **application);
    if (!idle) return idle;
    progress("Application and driver while music plays");
    auto playing = measurePlaying(**stage, **application);
    if (!playing) return playing;
    if (auto quit = (*application)->quit(); !quit) return std::unexpected(quit.error());
    return ordered_json{{"idle", *idle}, {"playing", *playing}};
}

} // namespace halvo::bench
