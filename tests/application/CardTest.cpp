#include "application/ApplicationScene.h"
#include "linux_audio/SimulatedCard.h"

#include <gtest/gtest.h>

#include "base/NumberText.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <optional>

using namespace halvo::test;
using halvo::DeviceLevel;
using halvo::SimulatedCard;
using halvo::session::Options;
using halvo::session::PrivateSession;
using halvo::session::Recorder;

namespace {

constexpr const char* kSink = "card.sink";
constexpr double kToneDb = -23.0103; // a sine of amplitude 0.1
constexpr double kFrequency = 1000;
constexpr double kMargin = 1.0;
constexpr float kFirstLevel = 0.064F; // what the session manager gives to a port it does not know

double decibels(float volume) {
    return kToneDb + 20 * std::log10(static_cast<double>(volume));
}

/// The level of the last 0.2 s; nothing while there is less.
std::optional<double> levelNow(const Recorder& recorder) {
    const auto sound = recorder.recording().samples;
    const std::size_t window = 9600;
    if (sound.size() / 2 < window) return std::nullopt;
    return levelDb(sound, sound.size() / 2 - window, window);
}

testing::AssertionResult settlesAtOneOf(const Recorder& recorder,
                                        const std::vector<double>& levels) {
    std::optional<double> now;
    const bool isThere = PrivateSession::waitFor([&] {
        now = levelNow(recorder);
        return now && std::ranges::any_of(
                          levels, [&](double level) { return std::abs(*now - level) < 0.1; });
    });
    if (isThere) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << now.value_or(-200) << " dB instead of " << testing::PrintToString(levels);
}

testing::AssertionResult settlesAt(const Recorder& recorder, double level) {
    return settlesAtOneOf(recorder, {level});
}

double loudest(const Recorder& recorder) {
    return loudestDb(recorder.recording().samples);
}

/// In Hz, from the places where the left channel crosses zero upwards, in half a second to come.
double frequencyOf(Recorder& recorder) {
    const auto before = recorder.frames();
    EXPECT_TRUE(PrivateSession::waitFor([&] { return recorder.frames() > before + 24000; }));
    const auto sound = recorder.recording().samples;
    std::vector<double> crossings;
    for (std::size_t i = before + 1; i < sound.size() / 2; ++i) {
        const auto below = static_cast<double>(sound[2 * (i - 1)]);
        const auto above = static_cast<double>(sound[2 * i]);
        if (below < 0 && above >= 0) {
            crossings.push_back(static_cast<double>(i) - above / (above - below));
        }
    }
    if (crossings.size() < 2) return 0;
    return static_cast<double>(crossings.size() - 1) / (crossings.back() - crossings.front()) *
           48000;
}

/// A card under a session manager, its sink the default, a tone playing; the application starts
/// later.
class Card : public testing::Test {
  protected:
    ApplicationScene scene;
    std::unique_ptr<SimulatedCard> card;
    std::unique_ptr<halvo::session::Player> player;
    std::unique_ptr<Recorder> recorder;

    void insert(std::vector<SimulatedCard::Profile> profiles) {
        scene.writePresets(std::vector<float>(10, 0.0F));
        card = std::make_unique<SimulatedCard>(scene.session().serverSocket(), kSink,
                                               std::move(profiles));
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return scene.session().defaultSink() == kSink; }));
    }
    testing::AssertionResult isAt(const std::string& port, float volume) {
        DeviceLevel level;
        const bool isThere = PrivateSession::waitFor([&] {
            level = card->level();
            return level.port == port &&
                   std::ranges::all_of(level.channelVolumes, [volume](float now) {
                       return std::abs(now - volume) < 1e-4F;
                   });
        });
        if (isThere) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << level.port << " at " << testing::PrintToString(level.channelVolumes);
    }
    /// The person gives the port that plays its own level, as a mixer does, and the session manager
    /// has stored it.
    void setOwn(const std::string& port, float volume) {
        ASSERT_TRUE(isAt(port, kFirstLevel));
        const std::vector<float> volumes(card->level().channelVolumes.size(), volume);
        for (int attempt = 0; attempt < 5; ++attempt) {
            // The session manager may still be busy with the level that it gave the port first.
            card->turn({volumes}, true);
            if (PrivateSession::waitFor([&] { return isStored(port, volume); },
                                        std::chrono::seconds(3))) {
                ASSERT_TRUE(isAt(port, volume));
                return;
            }
        }
        FAIL() << "the session manager does not store the level of " << port;
    }
    bool isStored(const std::string& port, float volume) {
        std::ifstream file(scene.session().directory() + "/state/wireplumber/default-routes");
        for (std::string line; std::getline(file, line);) {
            const bool isLevel =
                line.contains("card:output:" + port) && line.contains("hannelVolumes");
            if (isLevel && line.contains(halvo::numberText(volume))) return true;
        }
        return false;
    }
    void listen() {
        recorder.reset();
        recorder = scene.record(kSink);
    }
    void expectUntouchedDefault() {
        EXPECT_TRUE(PrivateSession::waitFor([&] {
            return scene.session().defaultSink() == kSink && !scene.session().configuredDefault();
        })) << scene.session().defaultSink();
    }
};

/// Speakers and headphones.
class Ports : public Card {
  protected:
    static constexpr float kSpeakersLevel = 0.125F;

    void begin(float headphones, bool staysPlugged) {
        insert({{"analog", {{"speaker"}, {"headphones", false}}}});
        setOwn("speaker", kSpeakersLevel);
        card->setAvailable("headphones", true);
        setOwn("headphones", headphones);
        if (staysPlugged) {
            card->switchPort("speaker");
        } else {
            card->setAvailable("headphones", false);
        }
        ASSERT_TRUE(isAt("speaker", kSpeakersLevel)) << "the session manager's part";
        player = scene.play(sine(kFrequency, 0.1F, 100));
        listen();
        ASSERT_TRUE(settlesAt(*recorder, decibels(kSpeakersLevel))) << "the client alone";
        scene.startBoth();
        ASSERT_TRUE(isAt("speaker", 1));
        EXPECT_TRUE(settlesAt(*recorder, decibels(kSpeakersLevel)));
    }
};

class Jack : public Ports, public testing::WithParamInterface<float> {};

} // namespace

TEST_P(Jack, PlugAndUnplugAreFollowedWithoutAJump) {
    ASSERT_NO_FATAL_FAILURE(begin(GetParam(), false));
    const float quieter = std::min(GetParam(), kSpeakersLevel);
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        recorder->clear();
        card->setAvailable("headphones", true);
        EXPECT_TRUE(isAt("headphones", 1));
        EXPECT_TRUE(settlesAt(*recorder, decibels(quieter)));
        EXPECT_EQ(scene.session().defaultSink(), kVirtualSink);
        card->setAvailable("headphones", false);
        EXPECT_TRUE(isAt("speaker", 1));
        EXPECT_TRUE(settlesAt(*recorder, decibels(kSpeakersLevel)));
        EXPECT_EQ(scene.session().defaultSink(), kVirtualSink);
        EXPECT_LE(loudest(*recorder), decibels(kSpeakersLevel) + kMargin);
    }
    recorder->clear();
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(isAt("speaker", kSpeakersLevel));
    EXPECT_TRUE(settlesAt(*recorder, decibels(kSpeakersLevel)));
    EXPECT_LE(loudest(*recorder), decibels(kSpeakersLevel) + kMargin);
    expectUntouchedDefault();
    card->setAvailable("headphones", true);
    EXPECT_TRUE(isAt("headphones", GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Headphones, Jack, testing::Values(0.0625F, 0.5F));

namespace {

enum class End { quit, termination, kill };

struct Switch {
    const char* name;
    End end;
    bool isSettled; ///< before the end; else the end comes right after the switch
};

class PortAtTheEnd : public Ports, public testing::WithParamInterface<Switch> {
  protected:
    void end() {
        switch (GetParam().end) {
        case End::quit:
            EXPECT_EQ(scene.quit(), 0);
            break;
        case End::termination:
            ASSERT_TRUE(scene.application().signal(SIGTERM));
            EXPECT_EQ(scene.application().wait(PrivateSession::kPatience), 128 + SIGTERM);
            break;
        case End::kill:
            ASSERT_TRUE(scene.application().signal(SIGKILL));
            break;
        }
    }
};

} // namespace

TEST_P(PortAtTheEnd, EachPortHasItsOwnLevel) {
    constexpr float kHeadphonesLevel = 0.0625F;
    ASSERT_NO_FATAL_FAILURE(begin(kHeadphonesLevel, true));
    recorder->clear();
    card->switchPort("headphones");
    if (GetParam().isSettled) {
        EXPECT_TRUE(isAt("headphones", 1));
        EXPECT_TRUE(settlesAt(*recorder, decibels(kHeadphonesLevel)));
    } else {
        EXPECT_TRUE(isAt("headphones", kHeadphonesLevel));
    }
    end();
    expectUntouchedDefault();
    EXPECT_TRUE(isAt("headphones", kHeadphonesLevel));
    EXPECT_TRUE(settlesAt(*recorder, decibels(kHeadphonesLevel)));
    EXPECT_LE(loudest(*recorder), decibels(kSpeakersLevel) + kMargin);
    card->switchPort("speaker");
    EXPECT_TRUE(isAt("speaker", kSpeakersLevel));
    EXPECT_TRUE(settlesAt(*recorder, decibels(kSpeakersLevel)));
}

INSTANTIATE_TEST_SUITE_P(End, PortAtTheEnd,
                         testing::Values(Switch{"Quit", End::quit, true},
                                         Switch{"QuitAtOnce", End::quit, false},
                                         Switch{"Termination", End::termination, true},
                                         Switch{"Kill", End::kill, true}),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(Card, OfAHeadsetIsFollowedThroughItsProfiles) {
    const auto switchTo = [this](const char* profile) {
        card->switchProfile(profile);
        ASSERT_TRUE(
            PrivateSession::waitFor([&] { return !scene.session().volume(kSink).empty(); }));
        if (player) listen();
    };
    // Two equal channels become one: 3 dB louder with PipeWire 0.3, as loud with 1.4.
    const std::vector<double> call{decibels(0.0625F) + 3.0103, decibels(0.0625F)};
    insert({{"music", {{"headphone-output"}}}, {"call", {{"headset-output"}}, 16000, 1}});
    setOwn("headphone-output", 0.125F);
    switchTo("call");
    setOwn("headset-output", 0.0625F);
    switchTo("music");
    ASSERT_TRUE(isAt("headphone-output", 0.125F));
    scene.startBoth();
    player = scene.play(sine(kFrequency, 0.1F, 100));
    ASSERT_TRUE(isAt("headphone-output", 1));
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        switchTo("call");
        EXPECT_TRUE(isAt("headset-output", 1));
        EXPECT_TRUE(settlesAtOneOf(*recorder, call));
        EXPECT_NEAR(frequencyOf(*recorder), kFrequency, kFrequency / 200);
        EXPECT_LE(loudest(*recorder), decibels(0.125F) + kMargin);
        EXPECT_EQ(scene.session().defaultSink(), kVirtualSink);
        switchTo("music");
        EXPECT_TRUE(isAt("headphone-output", 1));
        EXPECT_TRUE(settlesAt(*recorder, decibels(0.125F)));
        EXPECT_NEAR(frequencyOf(*recorder), kFrequency, kFrequency / 200);
        EXPECT_LE(loudest(*recorder), decibels(0.125F) + kMargin);
        EXPECT_EQ(scene.session().defaultSink(), kVirtualSink);
    }
    EXPECT_EQ(scene.quit(), 0);
    EXPECT_TRUE(isAt("headphone-output", 0.125F));
    expectUntouchedDefault();
    switchTo("call");
    EXPECT_TRUE(isAt("headset-output", 0.0625F));
}
