#include "DesktopMeasurement.h"

#include "BenchSound.h"
#include "CostWatch.h"
#include "Statistics.h"
#include "demo/Programs.h"
#include "desktop/ScreenProbe.h"
#include "desktop/VirtualDesktop.h"
#include "session/Player.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace halvo::bench {

using desktop::ScreenProbe;
using desktop::VirtualDesktop;
using nlohmann::ordered_json;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kStarts = 5;
constexpr int kOpenings = 10;
constexpr std::chrono::microseconds kLook{500};
constexpr auto kPanelReady = 2s; // its views are made in the first idle moment
constexpr auto kUntilIdle = 8s;  // the session manager suspends an idle sink after five
constexpr auto kUntilSteady = 3s;
constexpr auto kWindow = 5s;
constexpr int kWindows = 3;
constexpr QPoint kItem{1000, 10};
// Inside the panel, folded or not, and clear of its round corners.
const QRect kPanelPart{850, 35, 300, 150};

double millisecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

void waitClosely(const std::function<bool()>& condition, const char* what) {
    const auto until = Clock::now() + 10s;
    while (!condition()) {
        if (Clock::now() > until) throw std::runtime_error(std::string("In vain: ") + what);
        std::this_thread::sleep_for(kLook);
        QCoreApplication::processEvents();
    }
}

class DesktopRun {
  public:
    explicit DesktopRun(desktop::Programs programs) : desktop_(std::move(programs)) {
        desktop_.startDriver();
    }
    ordered_json run();

  private:
    double start();
    double open();
    void close();
    void showBands();
    ordered_json times();
    ordered_json cost(bool hasSound);

    VirtualDesktop desktop_;
};

double DesktopRun::start() {
    const auto begin = Clock::now();
    desktop_.startApplication();
    waitClosely([this] { return desktop_.tray().hasItem(); }, "the tray item");
    return millisecondsSince(begin);
}

/// The time until the panel shows what it goes on to show, and not a part or a blank of it.
double DesktopRun::open() {
    const ScreenProbe probe(desktop_.display(), kPanelPart);
    const auto begin = Clock::now();
    desktop_.tray().activate(kItem.x(), kItem.y());
    waitClosely([&] { return probe.isChanged(); }, "the panel");
    auto shown = probe.read();
    double changed = millisecondsSince(begin);
    while (millisecondsSince(begin) < changed + 150) {
        auto now = probe.read();
        if (now != shown) changed = millisecondsSince(begin);
        shown = std::move(now);
        std::this_thread::sleep_for(kLook);
        QCoreApplication::processEvents();
    }
    return changed;
}

void DesktopRun::close() {
    const ScreenProbe probe(desktop_.display(), kPanelPart);
    desktop_.tray().activate(kItem.x(), kItem.y());
    waitClosely([&] { return probe.isChanged(); }, "the panel's end");
}

void DesktopRun::showBands() {
    const QRect panel = desktop_.drawnArea();
    desktop_.press(panel.bottomLeft() + QPoint(30, -18));
    waitClosely([&] { return desktop_.drawnArea().height() > panel.height() + 50; }, "the bands");
}

/// Starts and openings; leaves an application that runs, its panel closed.
ordered_json DesktopRun::times() {
    std::vector<double> starts;
    std::vector<double> atOnce;
    std::vector<double> first;
    std::vector<double> later;
    for (int round = 0; round < 2 * kStarts; ++round) {
        const bool isAtOnce = round % 2 == 0;
        if (round > 0) desktop_.stopApplication();
        starts.push_back(start());
        if (!isAtOnce) VirtualDesktop::rest(kPanelReady);
        (isAtOnce ? atOnce : first).push_back(open());
        VirtualDesktop::rest(kPanelReady);
    }
    for (int opening = 0; opening < kOpenings; ++opening) {
        close();
        VirtualDesktop::rest(300ms);
        later.push_back(open());
        VirtualDesktop::rest(300ms);
    }
    close();
    const auto figures = [](const std::vector<double>& values) {
        return ordered_json{{"median", median(values)}, {"longest", std::ranges::max(values)}};
    };
    return {{"startToItemMs", figures(starts)},
            {"clickRightAfterStartMs", figures(atOnce)},
            {"firstClickMs", figures(first)},
            {"laterClickMs", figures(later)}};
}

ordered_json DesktopRun::cost(bool hasSound) {
    std::unique_ptr<session::Player> player;
    if (hasSound) {
        player = std::make_unique<session::Player>(desktop_.session().serverSocket(),
                                                   stretch(kStretchSeconds).samples, 48000);
    }
    VirtualDesktop::rest(hasSound ? kUntilSteady : kUntilIdle);
    std::vector<Cost> costs;
    const int icons = desktop_.tray().newIcons();
    for (int window = 0; window < kWindows; ++window) {
        const CostWatch watch(desktop_.application().pid());
        VirtualDesktop::rest(kWindow);
        const auto cost = watch.finish();
        if (!cost) throw std::runtime_error("The application ended.");
        costs.push_back(*cost);
    }
    if (player && player->isFinished()) throw std::runtime_error("The sound was too short.");
    auto result = json(medianOf(costs));
    result["newIconsPerSecond"] = (desktop_.tray().newIcons() - icons) /
                                  std::chrono::duration<double>(kWindow * kWindows).count();
    return result;
}

ordered_json DesktopRun::run() {
    auto result = times();
    result["closedSilent"] = cost(false);
    result["closedPlaying"] = cost(true);
    desktop_.tray().disappear();
    result["closedPlayingNoTray"] = cost(true);
    desktop_.tray().appear();
    waitClosely([this] { return desktop_.tray().hasItem(); }, "the tray item's return");
    VirtualDesktop::rest(300ms);
    (void)open();
    result["openPlaying"] = cost(true);
    showBands();
    result["bandsPlaying"] = cost(true);
    result["bandsSilent"] = cost(false);
    desktop_.stopApplication();
    return {{"desktop", result}};
}

} // namespace

ordered_json measureDesktop() {
    auto programs = demo::Programs::find();
    if (!programs) throw std::runtime_error(programs.error());
    return DesktopRun({programs->application, programs->driver, programs->driverBundle}).run();
}

} // namespace halvo::bench
