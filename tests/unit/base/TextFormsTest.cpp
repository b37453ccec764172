#include "base/NumberText.h"
#include "base/TextValues.h"
#include "base/UUID.h"
#include "base/VersionComparison.h"

#include <gtest/gtest.h>

#include <limits>

using namespace halvo;

TEST(NumberText, ShortestFormWithAFraction) {
    const std::pair<float, const char*> rows[] = {
        {1.0F, "1.0"},
        {0.0F, "0.0"},
        {-0.0F, "-0.0"},
        {0.125F, "0.125"},
        {5.24F, "5.24"},
        {-15.68F, "-15.68"},
        {0.4F, "0.4"},
        {1e-5F, "1e-05"},
        {0.0001F, "0.0001"},
        {123456.7F, "123456.7"},
        {std::numeric_limits<float>::infinity(), "inf"},
    };
    for (const auto& [value, text] : rows)
        EXPECT_EQ(numberText(value), text);
}

TEST(TextValues, WhatTheSettingsOfMacOSReadIntoTexts) {
    struct Row {
        const char* text;
        bool flag;
        double number;
    };
    for (const auto& [text, flag, number] : {Row{"", false, 0},
                                             {" \n", false, 0},
                                             {"YES", true, 0},
                                             {"yes", true, 0},
                                             {"true", true, 0},
                                             {"True", true, 0},
                                             {"NO", false, 0},
                                             {"false", false, 0},
                                             {"on", false, 0},
                                             {"1", true, 1},
                                             {"0", false, 0},
                                             {" \t-007", false, -7},
                                             {"text", false, 0},
                                             {"0.5", false, 0.5},
                                             {"123.4", false, 123.4},
                                             {".25", false, 0.25},
                                             {"-1.5e-2 dB", false, -0.015},
                                             {"0.5x", false, 0.5},
                                             {"0,5", false, 0},
                                             {"0x10", false, 0},
                                             {"inf", false, 0},
                                             {"nan", false, 0},
                                             {"x1", false, 0}}) {
        EXPECT_EQ(boolOfText(text), flag) << text;
        EXPECT_DOUBLE_EQ(numberOfText(text), number) << text;
    }
}

TEST(UUID, TextIsUpperCaseAndStrict) {
    const auto id = UUID::random();
    EXPECT_EQ(UUID::parse(id.text()), id);
    EXPECT_EQ(id.text().size(), 36U);
    EXPECT_EQ(id.text()[14], '4');
    EXPECT_EQ(UUID::parse("6f9619ff-8b86-d011-b42d-00c04fc964ff")->text(),
              "6F9619FF-8B86-D011-B42D-00C04FC964FF");
    for (const auto* bad :
         {"", "{6F9619FF-8B86-D011-B42D-00C04FC964FF}", "6F9619FF8B86D011B42D00C04FC964FF",
          "6F9619FF-8B86-D011-B42D-00C04FC964FG", "6F9619FF-8B86-D011-B42D-00C04FC964F",
          "6F9619FF-8B86-D011-B42D-00C04FC964FF "}) {
        EXPECT_FALSE(UUID::parse(bad)) << bad;
    }
    EXPECT_NE(UUID::random(), UUID::random());
}

TEST(VersionComparison, DigitRunsAreNumbers) {
    struct Row {
        const char* a;
        const char* b;
        int order;
    };
    for (const auto& [a, b, order] :
         {Row{"1.10", "1.9", 1}, Row{"2.0", "1.9", 1}, Row{"1.9", "1.10", -1}, Row{"1.0", "1.0", 0},
          Row{"1.0", "1.0.1", -1}, Row{"01", "1", 0}, Row{"1.0b", "1.0a", 1}, Row{"", "1", -1},
          Row{"99999999999999999999", "100000000000000000000", -1}}) {
        const int result = compareVersions(a, b);
        EXPECT_EQ((result > 0) - (result < 0), order) << a << " against " << b;
    }
}
