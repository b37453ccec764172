#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace halvo::demo {

/// What one band did in one run.
struct BandMeasurement {
    int frequencyHz;
    double gainDb;     ///< what the preset asked of this band
    double expectedDb; ///< what the whole cascade does there by its formula
    double measuredDb; ///< what was heard, in the channel that is further off

    /// How far the two may lie apart in dB; the lowest band is coarse in single precision.
    double tolerance() const { return frequencyHz == 32 ? 0.4 : 0.2; }
    double deviation() const;
    bool holds() const { return deviation() <= tolerance(); }
};

/// What one of the two programs costs while music plays.
struct Cost {
    double cpuPercent = 0; ///< of one processor
    double rssMiB = 0;
};

/// A track that a player announced, and what came of it.
struct AnnouncedTrack {
    std::string title = {};
    std::string artist = {};
    std::string tags = {};   ///< what the tag service answered when it was asked; else empty
    std::string preset = {}; ///< the active one afterwards
    std::string wanted = {}; ///< the preset of that genre
    double seconds = 0;      ///< from the announcement to the preset
};

/// Everything that the demo measured, and whether it is good enough.
struct Report {
    std::vector<BandMeasurement> bands;
    /// The first factory preset: the largest deviation of its ten bands from the formula in dB. For
    /// the terminal alone.
    double firstPresetDeviationDb = 0;
    bool flatBitExact = false;
    std::size_t underruns = 0;
    /// How often something had to be played again because the server missed a cycle.
    std::size_t repeatedMeasurements = 0;
    std::int64_t addedLatencyFrames = -1; ///< -1: not known
    double startToSoundMs = 0;
    /// The preset that the application said was active during the demo track, and how high each of
    /// its ten band levels (0 to 1) rose.
    std::string activePreset;
    std::array<double, 10> bandLevels{};
    std::vector<AnnouncedTrack> tracks;
    Cost halvo;
    Cost driver;

    /// One sentence for each number that does not hold; empty when all is well.
    std::vector<std::string> failures() const;
    std::string json() const;
    /// For the terminal: at most 80 columns, each line ended.
    std::string table() const;
};

} // namespace halvo::demo
