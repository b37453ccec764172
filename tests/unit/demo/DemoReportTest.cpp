#include "demo/PresetsFile.h"
#include "demo/Report.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <limits>
#include <sstream>

#include <stdlib.h>

namespace halvo::demo {
namespace {

Report goodReport() {
    Report report;
    for (const int frequency : {32, 64, 125, 250, 500, 1000, 2000, 4000, 8000, 16000})
        for (const double gain : {-12.0, 12.0})
            report.bands.push_back({frequency, gain, gain * 1.05, gain * 1.05 + 0.1});
    report.flatBitExact = true;
    report.addedLatencyFrames = 1024;
    report.startToSoundMs = 480.5;
    report.activePreset = "R&B";
    report.bandLevels.fill(0.5);
    for (const auto* title : {"One", "Two", "Three"})
        report.tracks.push_back(
            {.title = title, .tags = "jazz", .preset = "Jazz", .wanted = "Jazz"});
    report.halvo = {.cpuPercent = 2.5, .rssMiB = 60};
    report.driver = {.cpuPercent = 0.5, .rssMiB = 12};
    return report;
}

TEST(ReportTest, NamesEachNumberThatDoesNotHold) {
    Report good = goodReport();
    good.bands[0].measuredDb = good.bands[0].expectedDb - 0.35; // more tolerance at 32 Hz
    EXPECT_TRUE(good.failures().empty());
    struct Case {
        std::string name;
        std::function<void(Report&)> damage;
        std::string word;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Case> cases{
        {"a band is missing", [](Report& r) { r.bands.pop_back(); }, "19 of 20"},
        {"a band is off", [](Report& r) { r.bands[11].measuredDb += 0.15; }, "1000 Hz at +12 dB"},
        {"a band is not a number", [&](Report& r) { r.bands[4].measuredDb = nan; },
         "125 Hz at -12"},
        {"the lowest band is far off", [](Report& r) { r.bands[0].measuredDb += 0.4; }, "32 Hz"},
        {"factory preset", [](Report& r) { r.firstPresetDeviationDb = 0.5; }, "factory preset"},
        {"not exact", [](Report& r) { r.flatBitExact = false; }, "bit for bit"},
        {"one underrun", [](Report& r) { r.underruns = 1; }, "interrupted 1 times"},
        {"missed cycles", [](Report& r) { r.repeatedMeasurements = 4; }, "in 4 takes"},
        {"late", [](Report& r) { r.addedLatencyFrames = 20000; }, "20000 frames"},
        {"early", [](Report& r) { r.addedLatencyFrames = -1; }, "-1 frames"},
        {"slow start", [](Report& r) { r.startToSoundMs = 9000; }, "9000 ms"},
        {"start not a number", [&](Report& r) { r.startToSoundMs = nan; }, "ms after the start"},
        {"busy", [](Report& r) { r.halvo.cpuPercent = 99; }, "halvo took 99.0"},
        {"a track is missing", [](Report& r) { r.tracks.pop_back(); }, "2 of 3 tracks"},
        {"another genre", [](Report& r) { r.tracks[1].preset = "Flat"; }, "\"Two\" sounds as"},
        {"nobody asked", [](Report& r) { r.tracks[2].tags.clear(); }, "Three"},
        {"no preset told", [](Report& r) { r.activePreset.clear(); }, "active preset"},
        {"a silent band", [](Report& r) { r.bandLevels[3] = 0; }, "band level"},
        {"no memory read", [](Report& r) { r.driver.rssMiB = 0; }, "driver held 0.0"},
    };
    for (const Case& item : cases) {
        Report report = goodReport();
        item.damage(report);
        const auto failures = report.failures();
        ASSERT_EQ(failures.size(), 1U) << item.name;
        EXPECT_NE(failures[0].find(item.word), std::string::npos)
            << item.name << ": " << failures[0];
    }
}

TEST(ReportTest, WritesEveryNumber) {
    const auto root = nlohmann::json::parse(goodReport().json());
    ASSERT_EQ(root.at("bands").size(), 20U);
    EXPECT_EQ(root.at("bands")[1].at("frequencyHz"), 32);
    EXPECT_EQ(root.at("bands")[1].at("gainDb"), 12.0);
    EXPECT_DOUBLE_EQ(root.at("bands")[1].at("expectedDb"), 12.6);
    EXPECT_DOUBLE_EQ(root.at("bands")[1].at("measuredDb"), 12.7);
    EXPECT_EQ(root.at("flatBitExact"), true);
    EXPECT_EQ(root.at("underruns"), 0);
    EXPECT_EQ(root.at("repeatedTakes"), 0);
    EXPECT_EQ(root.at("addedLatencyFrames"), 1024);
    EXPECT_EQ(root.at("startToSoundMs"), 480.5);
    EXPECT_EQ(root.at("cpuPercent").at("halvo"), 2.5);
    EXPECT_EQ(root.at("rssMiB").at("driver"), 12);
}

TEST(ReportTest, TableFitsTheTerminal) {
    std::istringstream table(goodReport().table());
    std::size_t lines = 0;
    for (std::string line; std::getline(table, line); ++lines)
        EXPECT_LE(line.size(), 80U) << line;
    EXPECT_EQ(lines, 24U);
}

TEST(PresetsFileTest, IsWhatTheApplicationStartsOn) {
    std::string folder = testing::TempDir() + "halvo-XXXXXX";
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    const std::vector<float> gains{0, 0, 0, -12, 0, 0, 0, 0, 0, 0.5F};
    EXPECT_EQ(removePresetsFile(folder), std::nullopt) << "nothing there is no failure";
    ASSERT_EQ(writePresetsFile(folder, "Demo", gains), std::nullopt);
    EXPECT_TRUE(std::filesystem::exists(folder + "/Halvo/presets.json"));
    const auto first = readFirstPreset(folder);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name, "Demo");
    EXPECT_EQ(first->bands, gains);
    EXPECT_EQ(first->preamp, 0.0F);
    EXPECT_EQ(removePresetsFile(folder), std::nullopt);
    EXPECT_FALSE(readFirstPreset(folder));
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace halvo::demo
