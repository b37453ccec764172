#include "SessionMeasurement.h"

#include "BenchSound.h"
#include "CostWatch.h"
#include "demo/ApplicationRun.h"
#include "demo/MeasurementSession.h"
#include "demo/PresetsFile.h"
#include "demo/Progress.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

namespace halvo::bench {

using demo::ApplicationRun;
using demo::MeasurementSession;
using demo::progress;
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
Outcome measure(const MeasurementSession& session, const ApplicationRun& application) {
    std::vector<Cost> together;
    std::vector<Cost> ofApplication;
    std::vector<Cost> ofDriver;
    for (int window = 0; window < kWindows; ++window) {
        const CostWatch applicationWatch(application.pid());
        const CostWatch driverWatch(session.driverPid());
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

Outcome measurePlaying(MeasurementSession& session, const ApplicationRun& application) {
    const auto path = session.prepare("bench.wav", stretch(kStretchSeconds));
    if (!path) return std::unexpected(path.error());
    const auto player = session.startPlayingIntoVirtualOutput(*path);
    if (!player) return std::unexpected(player.error());
    std::this_thread::sleep_for(kUntilSteady);
    auto result = measure(session, application);
    if (!result) return result;
    if (!(*player)->isRunning()) return std::unexpected("The player ended too early.");
    (*player)->end();
    (*result)["quantum"] = session.privateSession().options().quantum;
    return result;
}

} // namespace

Outcome measureSession() {
    auto programs = demo::Programs::find();
    if (!programs) return std::unexpected(programs.error());
    const auto session = MeasurementSession::open(std::move(*programs));
    if (!session) return std::unexpected(session.error());
    if (auto failure = demo::writePresetsFile((*session)->dataHome(), kPreset, presetGains()))
        return std::unexpected(*failure);
    const auto application = ApplicationRun::start(**session);
    if (!application) return std::unexpected(application.error());

    progress("Application and driver while nothing plays");
    std::this_thread::sleep_for(kUntilIdle);
    auto idle = measure(**session, **application);
    if (!idle) return idle;
    progress("Application and driver while music plays");
    auto playing = measurePlaying(**session, **application);
    if (!playing) return playing;
    if (auto quit = (*application)->quit(); !quit) return std::unexpected(quit.error());
    return ordered_json{{"idle", *idle}, {"playing", *playing}};
}

} // namespace halvo::bench
