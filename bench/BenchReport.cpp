#include "BenchReport.h"

#include "support/FormattedText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>

namespace halvo::bench {

using nlohmann::ordered_json;
using tools::formattedText;

namespace {

/// The number at a path as "/idle/rssMiB".
std::optional<double> number(const ordered_json& report, const std::string& path) {
    const ordered_json::json_pointer pointer(path);
    if (!report.contains(pointer) || !report.at(pointer).is_number()) return std::nullopt;
    return report.at(pointer).get<double>();
}

/// The object or list of that name, or an empty one.
const ordered_json& part(const ordered_json& report, std::string_view name) {
    static const ordered_json empty;
    const auto found = report.find(std::string(name));
    return found == report.end() ? empty : *found;
}

double numberOrZero(const ordered_json& report, const std::string& path) {
    return number(report, path).value_or(0);
}

/// Nothing unless both were measured.
std::optional<double> ratio(const ordered_json& report, const std::string& path,
                            const std::string& base) {
    const auto value = number(report, path);
    const auto whole = number(report, base);
    return value && whole && *whole > 0 ? std::optional(*value / *whole) : std::nullopt;
}

std::optional<double> timesLimit(const ordered_json& report, const std::string& path) {
    return ratio(report, path, "/cascade/limitNsPerFrame");
}

/// A line with the time at `path` and, where the report has it, the plain loop's at `plainPath`.
std::string timeLine(const ordered_json& report, const std::string& name, const std::string& path,
                     const std::string& plainPath = {}) {
    const auto time = number(report, path);
    if (!time) return {};
    std::string line = formattedText("  %-37s%13.2f%12.2f", name.c_str(), *time,
                                     timesLimit(report, path).value_or(0));
    if (const auto plain = plainPath.empty() ? std::nullopt : number(report, plainPath))
        line += formattedText("%13.2f", *plain);
    return line + "\n";
}

std::string cascadeLines(const ordered_json& report) {
    std::string result = timeLine(report, "the recurrence alone", "/cascade/limitNsPerFrame");
    for (const auto& [form, figures] : part(part(report, "cascade"), "forms").items())
        result += timeLine(report, "ten bands, " + form, "/cascade/forms/" + form + "/nsPerFrame",
                           "/cascade/plainNsPerFrame");
    return result;
}

std::string renderTable(const ordered_json& report) {
    if (!report.contains("cascade")) return {};
    std::string result = formattedText("%-39s%13s%12s%13s\n", "Render path, ns per stereo frame",
                                       "time", "of limit", "plain loop") +
                         cascadeLines(report);
    for (const auto& [stage, time] : part(report, "stages").items())
        result += timeLine(report, stage, "/stages/" + stage);
    for (const std::string block : {"64", "128", "512"})
        result += timeLine(report, "everything, " + block + " frames",
                           "/processBuffer/" + block + "/nsPerFrame",
                           "/processBuffer/" + block + "/plainNsPerFrame");
    result +=
        timeLine(report, "everything, silence after sound", "/silenceAfterSound/silenceNsPerFrame");
    if (const auto count = number(report, "/cascade/instructionsPerFrame"))
        result += formattedText("  %-37s%13.1f\n", "ten bands, instructions per frame", *count);
    if (const auto time = number(report, "/fft/microseconds"))
        result += formattedText("  %-37s%13.2f\n", "FFT of 2048 points, microseconds", *time);
    return result + "\n";
}

std::string peerLine(const std::string& name, const ordered_json& peer) {
    return formattedText(
        "  %-37s%14.4f%12.3f%13.1f\n", name.c_str(), numberOrZero(peer, "/cpuSecondsPerMinute"),
        numberOrZero(peer, "/deviationDb"), number(peer, "/ratioToHalvo").value_or(1));
}

std::string peerTable(const ordered_json& report) {
    if (!report.contains("peers")) return {};
    std::string result = "Ten peaking filters over a stereo file, one thread, reading and writing "
                         "taken off\n";
    result += formattedText("  %-37s%14s%12s%13s\n", "", "CPU s per min", "dB off", "times Halvo");
    if (part(report, "halvo").is_object()) result += peerLine("Halvo", part(report, "halvo"));
    for (const ordered_json& peer : part(report, "peers"))
        result += peerLine(peer.value("name", ""), peer);
    for (const ordered_json& sentence : part(report, "missing"))
        result += "  " + sentence.get<std::string>() + "\n";
    return result + "\n";
}

std::string callbackTable(const ordered_json& report) {
    if (!report.contains("callback")) return {};
    std::string result = formattedText("%-39s%13s%12s%13s\n", "Render callback, microseconds",
                                       "p50", "p99", "p99.9");
    for (const auto& [block, times] : part(report, "callback").items())
        result += formattedText("  %-37s%13.2f%12.2f%13.2f\n", (block + " frames").c_str(),
                                numberOrZero(times, "/p50"), numberOrZero(times, "/p99"),
                                numberOrZero(times, "/p99.9"));
    return result + "\n";
}

std::string sessionTable(const ordered_json& report) {
    std::string result;
    for (const char* state : {"idle", "playing"}) {
        if (!report.contains(state)) continue;
        for (const char* program : {"", "application", "driver"}) {
            const bool isSum = *program == '\0';
            const ordered_json& whole = part(report, state);
            const ordered_json& cost = isSum ? whole : part(whole, program);
            const std::string label =
                isSum ? std::string("Together, ") + state : std::string("  ") + program;
            result += formattedText(
                "%-39s%13.2f%12.1f%13.1f\n", label.c_str(), numberOrZero(cost, "/cpuPercent"),
                numberOrZero(cost, "/wakeupsPerSecond"), numberOrZero(cost, "/rssMiB"));
        }
    }
    if (result.empty()) return {};
    return formattedText("%-39s%13s%12s%13s\n", "Application and driver", "% of a core",
                         "wakeups/s", "resident MiB") +
           result + "\n";
}

constexpr struct {
    const char* name;
    const char* label;
} kWaits[] = {{"startToItemMs", "  start to the item in the tray"},
              {"clickRightAfterStartMs", "  click right after the start"},
              {"firstClickMs", "  first click later on"},
              {"laterClickMs", "  each later click"}},
  kStates[] = {{"closedSilent", "  panel closed, silence"},
               {"closedPlayingNoTray", "  closed, music, no tray"},
               {"closedPlaying", "  closed, music, live icon"},
               {"openPlaying", "  open, music"},
               {"bandsPlaying", "  open with bands, music"},
               {"bandsSilent", "  open with bands, silence"}};

std::string desktopTable(const ordered_json& report) {
    if (!report.contains("desktop")) return {};
    std::string result = formattedText("%-39s%13s%12s\n", "What a person waits for, milliseconds",
                                       "median", "longest");
    for (const auto& [name, label] : kWaits) {
        const std::string path = std::string("/desktop/") + name;
        result +=
            formattedText("%-39s%13.1f%12.1f\n", label, numberOrZero(report, path + "/median"),
                          numberOrZero(report, path + "/longest"));
    }
    result += formattedText("\n%-39s%13s%12s%13s\n", "The application on a desktop", "% of a core",
                            "wakeups/s", "resident MiB");
    for (const auto& [name, label] : kStates) {
        const std::string path = std::string("/desktop/") + name;
        result += formattedText("%-39s%13.2f%12.1f%13.1f\n", label,
                                numberOrZero(report, path + "/cpuPercent"),
                                numberOrZero(report, path + "/wakeupsPerSecond"),
                                numberOrZero(report, path + "/rssMiB"));
    }
    return result + "\n";
}

std::optional<double> cheapestPeer(const ordered_json& report) {
    std::optional<double> least;
    for (const ordered_json& peer : part(report, "peers"))
        if (const auto times = number(peer, "/ratioToHalvo"))
            least = std::min(*times, least.value_or(*times));
    return least;
}

} // namespace

std::string table(const ordered_json& report) {
    return renderTable(report) + peerTable(report) + callbackTable(report) + sessionTable(report) +
           desktopTable(report);
}

std::vector<Verdict> verdicts(const ordered_json& report) {
    std::vector<Verdict> result;
    const auto atMost = [&](const char* aim, std::optional<double> measured, double most) {
        if (measured) result.push_back({aim, *measured, *measured <= most});
    };
    const auto atLeast = [&](const char* aim, std::optional<double> measured, double least) {
        if (measured) result.push_back({aim, *measured, *measured >= least});
    };
    atMost("ten bands, any x86-64: at most 1.6 times the limit",
           timesLimit(report, "/cascade/forms/fourLanes/nsPerFrame"), 1.6);
    atMost("ten bands with AVX2: at most 1.3 times the limit",
           timesLimit(report, "/cascade/forms/eightLanes/nsPerFrame"), 1.3);
    atMost("ten bands: at most a quarter of the plain loop",
           ratio(report, "/cascade/nsPerFrame", "/cascade/plainNsPerFrame"), 0.25);
    atMost("everything, 512 frames: at most 3 times the limit",
           timesLimit(report, "/processBuffer/512/nsPerFrame"), 3);
    atMost("silence after sound: at most 1.5 times sound",
           number(report, "/silenceAfterSound/ratio"), 1.5);
    atLeast("the cheapest peer: at least 3 times the cost", cheapestPeer(report), 3);
    atMost("playing: application and driver at most 1 % of a core",
           number(report, "/playing/cpuPercent"), 1);
    atMost("nothing plays: no wakeups per second", number(report, "/idle/wakeupsPerSecond"), 0);
    atMost("start to the item in the tray: at most 400 ms",
           number(report, "/desktop/startToItemMs/median"), 400);
    atMost("click to the panel: at most 100 ms", number(report, "/desktop/firstClickMs/median"),
           100);
    atMost("playing with a live icon: at most 1.5 % of a core",
           number(report, "/desktop/closedPlaying/cpuPercent"), 1.5);
    atMost("panel with spectrum, and icon: at most 7 % of a core",
           number(report, "/desktop/bandsPlaying/cpuPercent"), 7);
    atMost("panel open: at most 80 MiB", number(report, "/desktop/bandsPlaying/rssMiB"), 80);
    atMost("closed and silent: no new pictures",
           number(report, "/desktop/closedSilent/newIconsPerSecond"), 0);
    return result;
}

} // namespace halvo::bench
