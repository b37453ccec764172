#include "settings/AppSettings.h"
#include "fake/FakeUserDefaults.h"

#include <gtest/gtest.h>

using namespace halvo;

TEST(Color, SixHexadecimalDigitsAndNothingElse) {
    const Color green{52 / 255.0, 199 / 255.0, 89 / 255.0};
    for (const auto* text :
         {"#34C759", "34c759", "  #34c759\n", "\t34C759 ", "\u00A0#34C759\u3000"}) {
        EXPECT_EQ(Color::parse(text), green) << text;
    }
    for (const auto* text : {"", "#", "native", "0xFF00", "+FF000", "-FF000", "GG0000", "##FF0000",
                             "12345", "#12345", "#FF000080", "#F00", "# 34C75", "34 C75",
                             "\uFF11\uFF12\uFF13\uFF14\uFF15\uFF16", "\uFF11\uFF12"}) {
        EXPECT_FALSE(Color::parse(text)) << text;
    }
}

TEST(AppSettings, AFreshUserHasTheDefaultsAndNothingIsWritten) {
    FakeUserDefaults defaults;
    const AppSettings settings(defaults);
    EXPECT_TRUE(settings.showNowPlaying.get());
    EXPECT_TRUE(settings.showMenubarWaveform.get());
    EXPECT_EQ(settings.accentColorHex.get(), "native");
    EXPECT_FALSE(settings.accentColor());
    EXPECT_TRUE(settings.customColors.get().empty());
    EXPECT_EQ(defaults.writes, 0);
}

TEST(AppSettings, EverythingSurvivesARestart) {
    FakeUserDefaults defaults;
    {
        AppSettings settings(defaults);
        settings.setShowNowPlaying(false);
        settings.setShowMenubarWaveform(false);
        settings.setAccentColorHex("#AF52DE");
        settings.addCustomColor("#123456", "Custom");
        settings.addCustomColor("#123456", "Custom");
    }
    const AppSettings settings(defaults);
    EXPECT_FALSE(settings.showNowPlaying.get());
    EXPECT_FALSE(settings.showMenubarWaveform.get());
    EXPECT_EQ(settings.accentColorHex.get(), "#AF52DE");
    ASSERT_EQ(settings.customColors.get().size(), 2U);
    EXPECT_NE(settings.customColors.get()[0].id, settings.customColors.get()[1].id);
    EXPECT_EQ(settings.customColors.get()[0].hex, "#123456");
}

TEST(AppSettings, BrokenValuesReadAsDefaults) {
    FakeUserDefaults defaults;
    defaults.setFloat("halvo_accentColorHex", 3);
    defaults.setString("halvo_showNowPlaying", "text");
    defaults.setString("halvo_showMenubarWaveform", "YES");
    for (const auto* colors : {"", "{}", "[1]", R"([{"id":"x","hex":"#000000","name":"n"}])",
                               R"([{"hex":"#000000","name":"n"}])"}) {
        defaults.setData("halvo_customColors", colors);
        const AppSettings settings(defaults);
        EXPECT_EQ(settings.accentColorHex.get(), "native");
        EXPECT_FALSE(settings.showNowPlaying.get()) << "present, but no truth in it";
        EXPECT_TRUE(settings.showMenubarWaveform.get()) << "a script's true";
        EXPECT_TRUE(settings.customColors.get().empty()) << colors;
    }
    AppSettings settings(defaults);
    settings.setAccentColorHex("no colour");
    EXPECT_EQ(defaults.stringForKey("halvo_accentColorHex"), "no colour");
    EXPECT_FALSE(settings.accentColor());
}

TEST(AppSettings, RemovingAColorRechecksTheAccentByItsText) {
    struct Row {
        const char* name;
        const char* accent;
        bool hasTwin;
        const char* expected;
    };
    for (const auto& [name, accent, hasTwin, expected] :
         {Row{"the accent itself", "#ff3b30", false, "native"},
          Row{"another colour carries it", "#ff3b30", true, "#ff3b30"},
          Row{"a palette colour", "#FF3B30", false, "#FF3B30"},
          Row{"the system's", "native", false, "native"}}) {
        FakeUserDefaults defaults;
        AppSettings settings(defaults);
        settings.addCustomColor("#ff3b30", "Custom");
        if (hasTwin) settings.addCustomColor("#ff3b30", "Twin");
        settings.setAccentColorHex(accent);
        settings.removeCustomColor(settings.customColors.get()[0].id);
        EXPECT_EQ(settings.accentColorHex.get(), expected) << name;
        EXPECT_EQ(defaults.stringForKey("halvo_accentColorHex"), expected) << name;
    }
}

TEST(AppSettings, Moving) {
    FakeUserDefaults defaults;
    AppSettings settings(defaults);
    for (const auto* name : {"A", "B", "C"})
        settings.addCustomColor("#000000", name);
    const auto names = [&] {
        std::string text;
        for (const auto& color : settings.customColors.get())
            text += color.name;
        return text;
    };
    settings.moveCustomColor(0, 1);
    EXPECT_EQ(names(), "BAC");
    const int writes = defaults.writes;
    settings.moveCustomColor(1, 3);
    settings.moveCustomColor(1, 1);
    EXPECT_EQ(names(), "BAC");
    EXPECT_EQ(defaults.writes, writes);
}
