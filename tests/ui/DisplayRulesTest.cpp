#include "ui/DisplayRules.h"
#include "ui/QtValues.h"
#include "ui/VolumeTaper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace halvo {

namespace {

TEST(DisplayRules, LightColorsOfThePalette) {
    const struct {
        const char* hex;
        bool light;
    } cases[] = {{"#34C759", true},  {"#FF9500", true},  {"#5AC8FA", true},  {"#FFFFFF", true},
                 {"#AF52DE", false}, {"#FF2D55", false}, {"#FF3B30", false}, {"#000000", false}};
    for (const auto& [hex, light] : cases)
        EXPECT_EQ(isLight(*Color::parse(hex)), light) << hex;
}

TEST(DisplayRules, DigitsOfEveryComponentSurviveThePicker) {
    EXPECT_EQ(hexDigits(*Color::parse("#34C759")), "34C759");
    EXPECT_EQ(hexDigits({.red = 0.9999, .green = 0, .blue = 1}), "FE00FF"); // truncated
    for (int value = 0; value < 256; ++value) {
        const QColor picked(value, 255 - value, value);
        const auto expected = picked.name().mid(1).toUpper().toStdString();
        EXPECT_EQ(hexDigits(*fromQt(picked)), expected);
    }
}

TEST(DisplayRules, TypedTextHasOneNumberSign) {
    const struct {
        const char* typed;
        const char* hex;
    } cases[] = {
        {"##3a#b4ff", "#3ab4ff"}, {"34C759", "#34C759"}, {"34C759#", "#34C759"}, {"", "#"}};
    for (const auto& [typed, hex] : cases)
        EXPECT_EQ(hexFromTypedText(typed), hex);
}

TEST(DisplayRules, GainAndPercentage) {
    const struct {
        float gain;
        const char* text;
    } gains[] = {{0, "+0.0"}, {-3.5F, "-3.5"}, {20, "+20.0"}, {0.25F, "+0.2"}, {-0.04F, "-0.0"}};
    for (const auto& [gain, text] : gains)
        EXPECT_EQ(gainText(gain), text);

    const struct {
        float position;
        const char* text;
        bool muted;
    } volumes[] = {{0.29F, "29%", false}, {0.53F, "52%", false}, {0.999F, "99%", false},
                   {0.005F, "0%", true},  {1, "100%", false},    {0.01F, "1%", false}};
    for (const auto& [position, text, muted] : volumes) {
        EXPECT_EQ(percentText(position), text);
        EXPECT_EQ(showsMuted(position), muted) << text;
    }
}

TEST(DisplayRules, GainAtAPlaceOfTheTrack) {
    const struct {
        float y;
        float height;
        float gain;
    } cases[] = {{0, 150, 20},    {75, 150, 0},     {150, 150, -20}, {-40, 150, 20},
                 {400, 150, -20}, {37.5F, 150, 10}, {10, 0, 0}};
    for (const auto& [y, height, gain] : cases)
        EXPECT_FLOAT_EQ(gainAt(y, height, 20), gain) << y << " of " << height;
}

TEST(VolumeTaper, EveryPercentageOfTheMixerIsTheSameInThePanel) {
    constexpr double kMixerSteps = 65536; // a mixer's whole way, as sound servers count it
    for (int percent = 0; percent <= 100; ++percent) {
        const double way = std::round(kMixerSteps * percent / 100.0) / kMixerSteps;
        const auto volume = static_cast<float>(way * way * way);
        EXPECT_EQ(percentText(VolumeTaper::cubeRoot.position(volume)),
                  std::to_string(percent) + "%");
        const float slider = static_cast<float>(percent) / 100.0F;
        for (const auto& taper : {VolumeTaper::cubeRoot, VolumeTaper::identity})
            EXPECT_NEAR(taper.position(taper.volume(slider)), slider, 1e-4) << percent;
    }
    EXPECT_FLOAT_EQ(VolumeTaper::cubeRoot.position(0.125F), 0.5F);
    EXPECT_FLOAT_EQ(VolumeTaper::cubeRoot.volume(0.5F), 0.125F);
    EXPECT_EQ(VolumeTaper::identity.position(0.53F), 0.53F); // which reads 52%, by design
    for (const auto& taper : {VolumeTaper::cubeRoot, VolumeTaper::identity}) {
        EXPECT_FLOAT_EQ(taper.position(3.0F), 1.0F);
        EXPECT_FLOAT_EQ(taper.position(std::numeric_limits<float>::quiet_NaN()), 0.0F);
    }
}

} // namespace

} // namespace halvo
