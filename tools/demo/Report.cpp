#include "Report.h"

#include "support/FormattedText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace halvo::demo {

using tools::formattedText;

namespace {

constexpr std::size_t kBandCount = 20;
constexpr std::size_t kTrackCount = 3;
constexpr std::size_t kMostRepetitions = 3;
constexpr double kMostPresetDeviationDb = 0.4;
constexpr std::int64_t kMostLatencyFrames = 4096;
constexpr double kMostStartMs = 3000;
constexpr Cost kMostOfHalvo{.cpuPercent = 50, .rssMiB = 256};
constexpr Cost kMostOfDriver{.cpuPercent = 25, .rssMiB = 64};

nlohmann::ordered_json bandJson(const BandMeasurement& band) {
    return {{"frequencyHz", band.frequencyHz},
            {"gainDb", band.gainDb},
            {"expectedDb", band.expectedDb},
            {"measuredDb", band.measuredDb}};
}

std::string bandCell(const BandMeasurement& band) {
    return formattedText("%5d Hz %+4.0f %8.2f %8.2f %c", band.frequencyHz, band.gainDb,
                         band.expectedDb, band.measuredDb, band.holds() ? ' ' : '!');
}

/// The texts may be of any script: they are not cut to columns.
std::string trackLine(const AnnouncedTrack& track) {
    return "  " + track.artist + ", \"" + track.title + "\": " + track.tags + " -> " +
           track.preset + formattedText(" (%.1f s)\n", track.seconds);
}

} // namespace

double BandMeasurement::deviation() const {
    return std::abs(measuredDb - expectedDb);
}

std::vector<std::string> Report::failures() const {
    std::vector<std::string> sentences;
    const auto demand = [&](bool holds, std::string otherwise) {
        if (!holds) sentences.push_back(std::move(otherwise));
    };
    const auto demandCost = [&](const char* program, const Cost& cost, const Cost& most) {
        demand(cost.cpuPercent >= 0 && cost.cpuPercent <= most.cpuPercent,
               formattedText("%s took %.1f %% of a processor, more than %.0f %%.", program,
                             cost.cpuPercent, most.cpuPercent));
        demand(cost.rssMiB > 0 && cost.rssMiB <= most.rssMiB,
               formattedText("%s held %.1f MiB of memory, not between 0 and %.0f MiB.", program,
                             cost.rssMiB, most.rssMiB));
    };
    demand(bands.size() == kBandCount,
           formattedText("%zu of %zu bands were measured.", bands.size(), kBandCount));
    for (const BandMeasurement& band : bands)
        demand(band.holds(),
               formattedText("%d Hz at %+.0f dB was heard at %.2f dB; %.2f dB are expected.",
                             band.frequencyHz, band.gainDb, band.measuredDb, band.expectedDb));
    demand(
        firstPresetDeviationDb <= kMostPresetDeviationDb,
        formattedText("The first factory preset was heard %.2f dB off.", firstPresetDeviationDb));
    demand(flatBitExact, "With a flat preset the sound was not the same bit for bit.");
    demand(underruns == 0, formattedText("The sound was interrupted %zu times.", underruns));
    demand(repeatedMeasurements <= kMostRepetitions,
           formattedText("The sound server missed cycles in %zu takes.", repeatedMeasurements));
    demand(addedLatencyFrames >= 0 && addedLatencyFrames <= kMostLatencyFrames,
           formattedText("Halvo adds %lld frames of delay, not between 0 and %lld.",
                         static_cast<long long>(addedLatencyFrames),
                         static_cast<long long>(kMostLatencyFrames)));
    demand(startToSoundMs > 0 && startToSoundMs <= kMostStartMs,
           formattedText("The first sound came %.0f ms after the start, not within %.0f ms.",
                         startToSoundMs, kMostStartMs));
    demand(!activePreset.empty(), "Halvo did not tell its active preset.");
    demand(std::ranges::all_of(bandLevels, [](double level) { return level > 0 && level <= 1; }),
           "Not every band level rose during the demo track.");
    demand(tracks.size() == kTrackCount,
           formattedText("%zu of %zu tracks were announced.", tracks.size(), kTrackCount));
    for (const AnnouncedTrack& track : tracks)
        demand(track.preset == track.wanted && !track.tags.empty(),
               formattedText("\"%s\" sounds as \"%s\" does, not as \"%s\".", track.title.c_str(),
                             track.preset.c_str(), track.wanted.c_str()));
    demandCost("halvo", halvo, kMostOfHalvo);
    demandCost("The driver", driver, kMostOfDriver);
    return sentences;
}

std::string Report::json() const {
    nlohmann::ordered_json root;
    root["bands"] = nlohmann::ordered_json::array();
    for (const BandMeasurement& band : bands)
        root["bands"].push_back(bandJson(band));
    root["flatBitExact"] = flatBitExact;
    root["underruns"] = underruns;
    root["repeatedTakes"] = repeatedMeasurements;
    root["addedLatencyFrames"] = addedLatencyFrames;
    root["startToSoundMs"] = startToSoundMs;
    root["activePreset"] = activePreset;
    root["bandLevels"] = bandLevels;
    root["tracks"] = nlohmann::ordered_json::array();
    for (const AnnouncedTrack& track : tracks)
        root["tracks"].push_back({{"title", track.title},
                                  {"artist", track.artist},
                                  {"tags", track.tags},
                                  {"preset", track.preset},
                                  {"seconds", track.seconds}});
    root["cpuPercent"] = {{"halvo", halvo.cpuPercent}, {"driver", driver.cpuPercent}};
    root["rssMiB"] = {{"halvo", halvo.rssMiB}, {"driver", driver.rssMiB}};
    return root.dump(2) + "\n";
}

std::string Report::table() const {
    const char* heading = "    Band Gain Expected    Heard";
    std::string result = formattedText("%s        %s    [dB]\n", heading, heading);
    // Sorted by band and gain: -12 dB stands on the left, +12 dB on the right.
    for (std::size_t row = 0; row + 1 < bands.size(); row += 2)
        result += bandCell(bands[row]) + "      " + bandCell(bands[row + 1]) + "\n";
    result +=
        formattedText("  First factory preset       within %.2f dB\n", firstPresetDeviationDb);
    result += formattedText("  Flat preset, bit for bit   %s\n", flatBitExact ? "yes" : "NO");
    result += formattedText("  Interruptions              %zu\n", underruns);
    result += formattedText("  Takes repeated             %zu\n", repeatedMeasurements);
    result += formattedText("  Added delay                %lld frames (%.1f ms)\n",
                            static_cast<long long>(addedLatencyFrames),
                            static_cast<double>(addedLatencyFrames) / 48.0);
    result += formattedText("  Start to first sound       %.0f ms\n", startToSoundMs);
    result += formattedText("  Active preset              %s\n", activePreset.c_str());
    result += "  Band levels, highest      ";
    for (const double level : bandLevels)
        result += formattedText(" %.2f", level);
    result += "\n";
    for (const AnnouncedTrack& track : tracks)
        result += trackLine(track);
    result += formattedText("  halvo                      %.1f %% of a processor, %.1f MiB\n",
                            halvo.cpuPercent, halvo.rssMiB);
    result += formattedText("  driver                     %.1f %% of a processor, %.1f MiB\n",
                            driver.cpuPercent, driver.rssMiB);
    return result;
}

} // namespace halvo::demo
