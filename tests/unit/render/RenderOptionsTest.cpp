#include "presets/FactoryPresets.h"
#include "presets/PresetCoding.h"
#include "render/Options.h"
#include "render/PresetChoice.h"
#include "render/ProgressBar.h"
#include "unit/linux/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <locale>

namespace halvo::render {
namespace {

using Arguments = std::vector<const char*>;

/// A locale that writes 5,24.
class DecimalComma : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(RenderOptions, AreReadInAnyOrderAndLanguage) {
    const std::locale before = std::locale::global(
        std::locale(std::locale::classic(), new DecimalComma)); // the locale owns it
    const auto options = parseOptions(Arguments{"in.wav", "--gains", "-1,+2,.5,4e0,5.24,6,7,8,9,20",
                                                "--preamp=-6.5", "--force", "--", "--out.wav"});
    const auto table = presetTable({{UUID::random(), "A", -1.5F, {5.24F, 0}, false}});
    std::locale::global(before);
    ASSERT_TRUE(options) << options.error();
    EXPECT_EQ(options->input, "in.wav");
    EXPECT_EQ(options->output, "--out.wav");
    EXPECT_TRUE(options->force);
    EXPECT_EQ(options->preamp, -6.5F);
    EXPECT_EQ(options->gains, (std::array<float, 10>{-1, 2, 0.5F, 4, 5.24F, 6, 7, 8, 9, 20}));
    EXPECT_EQ(table, "A\t5.24 0.0 (preamp -1.5)\n");
}

TEST(RenderOptions, SayWhatIsWrong) {
    struct Row {
        Arguments arguments;
        const char* sentence;
    };
    for (const auto& [arguments, sentence] :
         {Row{{"--preset", "Rock", "in"}, "an input file and an output file"},
          Row{{"in", "out"}, "nothing to apply"},
          Row{{"in", "out", "--preset"}, "--preset needs a value"},
          Row{{"in", "out", "--loud"}, "there is no option --loud"},
          Row{{"in", "out", "--force=yes"}, "--force takes no value"},
          Row{{"in", "out", "--gains", "1,2,3"}, "holds 3"},
          Row{{"in", "out", "--gains", "0,0,0,0,0,0,0,0,0,0,"}, "ten numbers"},
          Row{{"in", "out", "--gains", "0,0,0,0,0,0,0,0,0,x"}, "\"x\" is not a number"},
          Row{{"in", "out", "--gains", "0,0,0,0,0,0,0,0,0,-20.5"}, "out of range"},
          Row{{"in", "out", "--preamp", "nan"}, "not a number"},
          Row{{"in", "out", "--preamp", "0x1"}, "not a number"},
          Row{{"in", "out", "--preset", "a", "--gains", "0,0,0,0,0,0,0,0,0,0"}, "exclude"},
          Row{{"--list", "--factory", "--presets-file", "a"}, "exclude"}}) {
        const auto options = parseOptions(arguments);
        ASSERT_FALSE(options) << sentence;
        EXPECT_NE(options.error().find(sentence), std::string::npos) << options.error();
    }
}

class RenderPresets : public testing::Test {
  protected:
    std::string failure() {
        const auto chosen = choosePreset(options, folder / "presets.json");
        return chosen ? "" : chosen.error();
    }
    test::TemporaryDirectory folder;
    Options options;
};

TEST_F(RenderPresets, AreTheOnesThatTheApplicationShows) {
    auto rock = defaultPresets()[2];
    rock.bands[0] = -7;
    rock.preamp = -3;
    const EQPreset mine{UUID::random(), "Mine", 0, {1, 2, 3}, false};
    test::put(folder / "presets.json", *encodePresets({rock, mine}));

    options.preset = "Rock";
    EXPECT_EQ(choosePreset(options, folder / "presets.json"), rock) << "as it was changed";
    options.preset = "Pop";
    EXPECT_EQ(failure(), "") << "one that the file lacks comes back at the next start";
    options.factoryOnly = true;
    options.preset = "Rock";
    EXPECT_EQ(choosePreset(options, folder / "presets.json")->bands[0], 10);
    options.factoryOnly = false;
    options.presetsFile = folder / "presets.json";
    options.preset = "Mine";
    options.preamp = 4;
    EXPECT_EQ(choosePreset(options, "none")->preamp, 4) << "in place of its own";
    EXPECT_EQ(test::contents(folder / "presets.json"), *encodePresets({rock, mine}));
}

TEST_F(RenderPresets, SuggestAName) {
    options.preset = "bas booster";
    EXPECT_NE(failure().find("did you mean \"Bass Booster\"?\nThere are: R&B, "),
              std::string::npos);
    options.preset = "Xylophone";
    EXPECT_EQ(failure().find("did you mean"), std::string::npos) << failure();
}

TEST_F(RenderPresets, SayWhyAFileCannotBeUsed) {
    options.preset = "Rock";
    test::put(folder / "presets.json", "{\"name\": \"Rock\"}");
    EXPECT_NE(failure().find("not a list of presets"), std::string::npos) << "no silent guess";
    options.presetsFile = folder / "none.json";
    EXPECT_NE(failure().find("No such file"), std::string::npos);
    options.presetsFile = folder.path();
    EXPECT_NE(failure().find("it is not a file"), std::string::npos);
}

TEST(RenderProgressBar, GrowsWithoutChangingItsWidth) {
    EXPECT_EQ(ProgressBar::line(0, 10), "[" + std::string(50, ' ') + "]   0 %");
    EXPECT_EQ(ProgressBar::line(5, 10),
              "[" + std::string(25, '=') + std::string(25, ' ') + "]  50 %");
    EXPECT_EQ(ProgressBar::line(11, 10), "[" + std::string(50, '=') + "] 100 %");
}

} // namespace
} // namespace halvo::render
