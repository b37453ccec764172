#include "SessionMeasurement.h"

#include "BenchSound.h"
#include "CostWatch.h"
#include "demo/ApplicationRun.h"
#include "demo/PresetsFile.h"
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
using Seconds = std::chrono::duration<double>;
using Outcome = std::expected<ordered_json, std::string>;

namespace {

// The session manager suspends an idle sink after five seconds.
constexpr Seconds kUntilIdle{8};
constexpr Seconds kUntilSteady{2};
constexpr Seconds kWindow{5};
constexpr int kWindows = 3;

/// Both programs together, and each of them: medians of some windows of time.
Outcome measure(const Stage& stage, const ApplicationRun& application) {
    std::vector<Cost> together;
    std::vector<Cost> ofApplication;
    std::vector<Cost> ofDriver;
    for (int window = 0; window < kWindows; ++window) {
        const CostWatch applicationWatch(application.pid());
        const CostWatch driverWatch(stage.driverPid());
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
