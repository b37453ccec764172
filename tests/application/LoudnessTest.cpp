#include "application/ApplicationScene.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>

using namespace halvo::test;
using halvo::session::Options;
using halvo::session::PrivateSession;

namespace {

constexpr double kToneDb = -23.0103; // a sine of amplitude 0.1
constexpr double kMargin = 1.0;

/// The speakers at a desktop slider of 50 %, the headphones lower.
Options someLevels() {
    Options options;
    options.outputs[0].volumes = {0.125F, 0.125F};
    options.outputs[1].volumes = {0.0625F, 0.0625F};
    return options;
}

/// A client that plays a tone throughout, and both outputs are recorded.
class Loudness : public testing::Test {
  protected:
    ApplicationScene scene{someLevels()};
    std::unique_ptr<halvo::session::Recorder> speakers = scene.record(kSpeakers);
    std::unique_ptr<halvo::session::Recorder> headphones = scene.record(kHeadphones);
    std::unique_ptr<halvo::session::Player> player;

    static constexpr double kSpeakersDb = kToneDb - 18.0618;   // 0.125
    static constexpr double kHeadphonesDb = kToneDb - 24.0824; // 0.0625

    void SetUp() override {
        scene.writePresets(std::vector<float>(10, 0.0F));
        player = scene.play(sine(1000, 0.1F, 100));
        ASSERT_TRUE(settlesAt(*speakers, kSpeakersDb)) << "the client alone";
    }
    static double loudest(halvo::session::Recorder& recorder) {
        return loudestDb(recorder.recording().samples);
    }
};

} // namespace

TEST_F(Loudness, NeverRisesFromStartToQuitAndIsTheSameWithAndWithout) {
    scene.startBoth();
    EXPECT_TRUE(settlesAt(*speakers, kSpeakersDb)) << "as loud with the equalizer as without";
    EXPECT_LE(loudest(*speakers), kSpeakersDb + kMargin) << "start";
    EXPECT_EQ(scene.session().volume(kVirtualSink)[0], 0.125F);

    speakers->clear();
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(settlesAt(*speakers, kSpeakersDb));
    EXPECT_LE(loudest(*speakers), kSpeakersDb + kMargin) << "quit";
}

TEST(FirstKey, AfterLoginIsOneStepDown) {
    Options options;
    options.outputs[0].volumes = {0.2F, 0.2F};
    ApplicationScene scene(options);
    scene.writePresets(std::vector<float>(10, 0.0F));
    scene.startBoth(); // and nothing has played yet
    const auto shown = scene.session().run({"wpctl", "get-volume", "@DEFAULT_AUDIO_SINK@"});
    EXPECT_TRUE(shown.output.starts_with("Volume: 0.58\n")) << shown.output;
    const auto key = scene.session().run({"wpctl", "set-volume", "@DEFAULT_AUDIO_SINK@", "5%-"});
    ASSERT_EQ(key.status, 0) << key.output;
    const auto speakers = scene.record(kSpeakers);
    const auto player = scene.play(sine(1000, 0.1F, 100));
    const double expected = kToneDb + 60 * std::log10(std::cbrt(0.2) - 0.05);
    EXPECT_TRUE(settlesAt(*speakers, expected));
    EXPECT_LE(loudestDb(speakers->recording().samples), expected + kMargin);
}

TEST_F(Loudness, NeverRisesAtTermination) {
    scene.startBoth();
    ASSERT_TRUE(settlesAt(*speakers, kSpeakersDb));
    speakers->clear();
    ASSERT_TRUE(scene.application().signal(SIGTERM));
    EXPECT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + SIGTERM);
    EXPECT_TRUE(settlesAt(*speakers, kSpeakersDb));
    EXPECT_LE(loudest(*speakers), kSpeakersDb + kMargin);
}

TEST_F(Loudness, NeverRisesWhenTheApplicationIsKilled) {
    scene.startDriver();
    std::string measured;
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        scene.startApplication();
        ASSERT_TRUE(scene.isReady());
        ASSERT_TRUE(settlesAt(*speakers, kSpeakersDb));
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return scene.session().volume(kSpeakers)[0] == 1.0F; }));
        speakers->clear();
        const auto start = std::chrono::steady_clock::now();
        ASSERT_TRUE(scene.application().signal(SIGKILL));
        EXPECT_TRUE(PrivateSession::waitFor([&] {
            return scene.session().defaultSink() == kSpeakers &&
                   scene.session().volume(kSpeakers)[0] == 0.125F;
        }));
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(settlesAt(*speakers, kSpeakersDb));
        EXPECT_LE(loudest(*speakers), kSpeakersDb + kMargin);
        measured += std::to_string(took.count()) + " ms, " +
                    std::to_string(loudest(*speakers) - kSpeakersDb) + " dB; ";
    }
    RecordProperty("restoreAndRaise", measured);
}

TEST_F(Loudness, NeverRisesWhenAnotherProgramChangesTheDefault) {
    scene.startBoth();
    ASSERT_TRUE(settlesAt(*speakers, kSpeakersDb));
    speakers->clear();
    headphones->clear();
    ASSERT_TRUE(scene.session().setDefault(kHeadphones));
    ASSERT_TRUE(
        PrivateSession::waitFor([&] { return scene.session().defaultSink() == kVirtualSink; }));
    EXPECT_TRUE(settlesAt(*headphones, kHeadphonesDb));
    EXPECT_LE(loudest(*headphones), kHeadphonesDb + kMargin) << "to the other device";
    EXPECT_LE(loudest(*speakers), kSpeakersDb + kMargin);

    headphones->clear();
    ASSERT_TRUE(scene.session().setDefault(kHeadphones)); // the very device that is raised
    ASSERT_TRUE(
        PrivateSession::waitFor([&] { return scene.session().defaultSink() == kVirtualSink; }));
    EXPECT_TRUE(settlesAt(*headphones, kHeadphonesDb));
    EXPECT_LE(loudest(*headphones), kHeadphonesDb + kMargin) << "to the raised device";
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_EQ(scene.session().defaultSink(), kHeadphones);
    EXPECT_EQ(scene.session().volume(kSpeakers)[0], 0.125F);
    EXPECT_EQ(scene.session().volume(kHeadphones)[0], 0.0625F);
}

TEST_F(Loudness, ASliderPositionIsAsLoudAsWithoutTheEqualizer) {
    scene.startBoth();
    for (const char* position : {"30%", "80%", "50%"}) {
        const auto set = scene.session().run({"pactl", "set-sink-volume", kVirtualSink, position});
        if (set.status != 0) {
            ASSERT_EQ(scene.session()
                          .run({"wpctl", "set-volume", "@DEFAULT_AUDIO_SINK@", position})
                          .status,
                      0)
                << set.output;
        }
        const double linear = std::pow(std::stod(position) / 100, 3);
        EXPECT_TRUE(settlesAt(*speakers, kToneDb + 20 * std::log10(linear))) << position;
        EXPECT_EQ(scene.session().volume(kSpeakers)[0], 1.0F) << "the device stays at full scale";
    }
    ASSERT_TRUE(scene.session().setMuted(kVirtualSink, true));
    EXPECT_TRUE(PrivateSession::waitFor([&] {
        speakers->clear();
        return PrivateSession::waitFor([&] { return speakers->frames() > 4800; }) &&
               speakers->recording().peak() == 0.0F;
    }));
}
