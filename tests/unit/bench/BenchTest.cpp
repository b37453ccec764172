#include "bench/BenchReport.h"
#include "bench/BenchSound.h"
#include "bench/ResponseCheck.h"
#include "bench/Statistics.h"
#include "unit/demo/Filtered.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <numeric>
#include <utility>

namespace halvo::bench {
namespace {

using demo::StereoSound;
using nlohmann::ordered_json;

StereoSound equalized(const StereoSound& sound, std::span<const float> gains) {
    return demo::filtered(demo::ExpectedResponse(gains, demo::kSampleRate), sound);
}

TEST(StatisticsTest, PercentilesAreValuesThatOccurred) {
    std::vector<double> thousand(1000);
    std::iota(thousand.rbegin(), thousand.rend(), 1.0);
    for (const auto& [share, expected] :
         {std::pair(0.5, 500.0), std::pair(0.99, 990.0), std::pair(0.999, 999.0),
          std::pair(0.9991, 1000.0), std::pair(1.0, 1000.0)})
        EXPECT_EQ(percentile(thousand, share), expected) << share;
    EXPECT_EQ(percentile({7}, 0.001), 7);
    EXPECT_EQ(median({9, 1, 2}), 2);
    EXPECT_EQ(median({9, 1, 2, 4}), 3);
}

TEST(ResponseCheckTest, TellsThePresetFromAnyOtherFilter) {
    const auto preset = presetGains();
    EXPECT_LT(deviation(click(), equalized(click(), preset)).decibels, 0.001);

    for (const std::size_t band : {0U, 4U, 9U}) {
        auto gains = preset;
        gains[band] -= 0.5F;
        const Deviation off = deviation(click(), equalized(click(), gains));
        EXPECT_NEAR(off.decibels, 0.5, 0.05) << "band " << band;
    }

    const StereoSound unfiltered = click();
    StereoSound oneChannel = equalized(click(), preset);
    for (std::size_t frame = 0; frame < oneChannel.frameCount(); ++frame)
        oneChannel.samples[frame * 2 + 1] = unfiltered.right(frame);
    EXPECT_GT(deviation(click(), oneChannel).decibels, kSameFilterDb);
}

TEST(BenchSoundTest, NoSampleGoesBeyondFullScale) {
    EXPECT_NE(presetGains()[0], 0) << "the preset is not there";
    EXPECT_LT(equalized(stretch(2), presetGains()).peak(), 1);
    EXPECT_LT(equalized(click(), presetGains()).peak(), 1);
}

TEST(BenchReportTest, EveryAimIsJudgedByItsOwnFigures) {
    const ordered_json good = ordered_json::parse(R"({
        "cascade": {"nsPerFrame": 5, "plainNsPerFrame": 30, "limitNsPerFrame": 4,
                    "forms": {"fourLanes": {"nsPerFrame": 6}, "eightLanes": {"nsPerFrame": 5}}},
        "processBuffer": {"512": {"nsPerFrame": 11}},
        "silenceAfterSound": {"ratio": 1.2},
        "peers": [{"ratioToHalvo": 9}, {"ratioToHalvo": 3.5}, {"ratioToHalvo": 20}],
        "playing": {"cpuPercent": 0.9},
        "idle": {"wakeupsPerSecond": 0}})");
    const auto failing = [](const ordered_json& report) {
        std::string aims;
        for (const Verdict& verdict : verdicts(report))
            if (!verdict.holds) aims += verdict.aim + "; ";
        return aims;
    };
    EXPECT_EQ(verdicts(good).size(), 8U);
    EXPECT_EQ(failing(good), "");

    for (const auto& [path, value, aim] :
         {std::tuple("/cascade/forms/fourLanes/nsPerFrame", 6.5, "any x86-64"),
          std::tuple("/cascade/forms/eightLanes/nsPerFrame", 5.3, "AVX2"),
          std::tuple("/cascade/nsPerFrame", 7.6, "a quarter"),
          std::tuple("/processBuffer/512/nsPerFrame", 12.1, "512 frames"),
          std::tuple("/silenceAfterSound/ratio", 1.6, "silence"),
          std::tuple("/peers/1/ratioToHalvo", 2.9, "cheapest"),
          std::tuple("/playing/cpuPercent", 1.1, "1 % of a core"),
          std::tuple("/idle/wakeupsPerSecond", 1.0, "no wakeups")}) {
        ordered_json report = good;
        report[ordered_json::json_pointer(path)] = value;
        const std::string aims = failing(report);
        EXPECT_NE(aims.find(aim), std::string::npos) << path << ": " << aims;
        EXPECT_EQ(std::ranges::count(aims, ';'), 1) << path << ": " << aims;
    }
}

TEST(BenchReportTest, WhatWasNotMeasuredIsLeftOut) {
    for (const char* text : {"{}", R"({"cascade": {}})", R"({"peers": [], "halvo": null})",
                             R"({"idle": {"cpuPercent": 1}})"}) {
        const auto report = ordered_json::parse(text);
        EXPECT_TRUE(verdicts(report).empty()) << text;
        EXPECT_EQ(table(report).find("nan"), std::string::npos) << text;
    }
}

} // namespace
} // namespace halvo::bench
