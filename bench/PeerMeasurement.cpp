#include "PeerMeasurement.h"

#include "BenchSound.h"
#include "ResponseCheck.h"
#include "Statistics.h"
#include "demo/Progress.h"
#include "demo/SoundFile.h"
#include "session/SpawnedProgram.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <utility>

namespace halvo::bench {

using demo::progress;
using nlohmann::ordered_json;
using session::SpawnedProgram;

namespace {

constexpr int kRounds = 5;

} // namespace

PeerMeasurement::PeerMeasurement(std::string folder, std::string build)
    : folder_(std::move(folder)), build_(std::move(build)) {}

double PeerMeasurement::Runner::cpuSecondsPerMinute() const {
    return (median(filterSeconds) - median(nullSeconds)) / kFileMinutes;
}

bool PeerMeasurement::leaveOut(const Runner& runner, const std::string& sentence) {
    missing_.push_back(runner.peer.name + " is left out: " + sentence);
    progress("%s", missing_.back().c_str());
    return false;
}

/// Whether the program runs at all, and how far it is from the preset's curve.
bool PeerMeasurement::prepare(Runner& runner) {
    const std::string played = folder_ + "/click.wav";
    const std::string filtered = folder_ + "/filtered.wav";
    if (const auto failure = demo::writeSoundFile(played, click()))
        return leaveOut(runner, *failure);
    const auto filter =
        SpawnedProgram::run(commandFor(runner.peer.filter, played, filtered), folder_ + "/log");
    if (!filter) return leaveOut(runner, filter.error());
    const auto sound = readSoundFile(filtered);
    if (!sound) return leaveOut(runner, sound.error());
    const Deviation off = deviation(click(), *sound);
    runner.deviationDb = off.decibels;
    progress("%s: within %.3f dB of the curve%s", runner.peer.name.c_str(), off.decibels,
             off.decibels <= kSameFilterDb ? "" : ", so it is NOT the same filter");
    return true;
}

/// Once with the filter and once without.
bool PeerMeasurement::measureOnce(Runner& runner) {
    const std::string output = folder_ + "/out.wav";
    for (auto [words, times] : {std::pair(&runner.peer.filter, &runner.filterSeconds),
                                std::pair(&runner.peer.null, &runner.nullSeconds)}) {
        const auto pass = SpawnedProgram::run(commandFor(*words, folder_ + "/long.wav", output),
                                              folder_ + "/log");
        // Each run starts with the same free memory for its file.
        (void)std::remove(output.c_str());
        if (!pass) return leaveOut(runner, pass.error());
        times->push_back(pass->cpuSeconds);
    }
    return true;
}

std::string PeerMeasurement::version(const Peer& peer) const {
    const auto question = peer.package.empty()
                              ? Peer::Words{peer.filter[0], "--version"}
                              : Peer::Words{"dpkg-query", "-W", "-f", "${Version}", peer.package};
    const auto answer = SpawnedProgram::run(question, folder_ + "/log");
    return answer ? answer->output.substr(0, answer->output.find('\n')) : std::string();
}

ordered_json PeerMeasurement::json(const Runner& runner) const {
    return {{"name", runner.peer.name},
            {"version", version(runner.peer)},
            {"cpuSecondsPerMinute", runner.cpuSecondsPerMinute()},
            {"form", runner.peer.form},
            {"nullCpuSecondsPerMinute", median(runner.nullSeconds) / kFileMinutes},
            {"deviationDb", runner.deviationDb}};
}

ordered_json PeerMeasurement::run() {
    ordered_json result{{"halvo", nullptr}, {"peers", ordered_json::array()}};
    Runner halvo{halvoRenderer(build_), 0, {}, {}};
    const auto failure = writeLongFile(folder_ + "/long.wav");
    if (failure) missing_.push_back(*failure);
    if (!failure && prepare(halvo)) {
        std::vector<Runner> runners;
        for (Peer& peer : peers(build_)) {
            Runner runner{std::move(peer), 0, {}, {}};
            if (prepare(runner)) runners.push_back(std::move(runner));
        }
        for (int round = 1; round <= kRounds; ++round) {
            progress("Ten minutes of sound through each, round %d of %d", round, kRounds);
            // Halvo runs before each of the others: every ratio depends on it.
            std::erase_if(runners, [&](Runner& runner) {
                return !measureOnce(halvo) || !measureOnce(runner);
            });
        }
        result["halvo"] = json(halvo);
        for (const Runner& runner : runners) {
            ordered_json peer = json(runner);
            peer["ratioToHalvo"] = runner.cpuSecondsPerMinute() / halvo.cpuSecondsPerMinute();
            result["peers"].push_back(std::move(peer));
        }
    }
    result["missing"] = missing_;
    return result;
}

} // namespace halvo::bench
