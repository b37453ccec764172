#include "application/ApplicationScene.h"
#include "media/ScriptedPlayer.h"
#include "media/TagServer.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

// From a player on the session bus to the audible preset, with the shipped application.

using namespace halvo::test;
using halvo::media::ScriptedPlayer;
using halvo::session::PrivateSession;

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

/// A session in which a player announces tracks and a tag service answers.
class ListeningScene {
    int argc_ = 1;
    char name_[6] = "tests";
    char* argv_[2] = {name_, nullptr};
    QCoreApplication application_{argc_, argv_}; // before the service's thread

  public:
    ApplicationScene scene;
    halvo::media::TagServer tags;
    std::unique_ptr<ScriptedPlayer> player;

    ListeningScene() {
        player = ScriptedPlayer::start("unix:path=" + scene.session().directory() + "/run/bus",
                                       "scripted");
        tags.setTags("Miles", {{"Jazz", 100}});
        tags.setTags("Kylie", {{"Pop", 100}});
        scene.startDriver();
    }

    void start(bool autoGenre, const std::vector<std::string>& extra = {}) {
        if (autoGenre) {
            const auto folder = scene.session().directory() + "/config/halvo";
            std::filesystem::create_directories(folder);
            std::ofstream(folder + "/defaults.json") << R"({"autoGenreEnabled": true})";
        }
        std::vector<std::string> environment{"HALVO_TAG_SERVICE=" + tags.address()};
        environment.insert(environment.end(), extra.begin(), extra.end());
        scene.startApplication(environment);
        ASSERT_TRUE(scene.isReady()) << scene.debugLog();
    }

    void announce(const std::string& artist, const std::string& title) const {
        player->setMetadata({{"xesam:title", title},
                             {"xesam:artist", std::vector<std::string>{artist}},
                             {"mpris:artUrl", "data:image/png;base64,AAEC"}});
        player->setStatus("Playing");
    }

    /// Whether a program on the bus replies with this text.
    bool says(const std::string& text, const std::vector<std::string>& question) {
        std::vector<std::string> words{"dbus-send", "--session", "--print-reply=literal"};
        words.insert(words.end(), question.begin(), question.end());
        return PrivateSession::waitFor(
            [&] { return scene.session().run(words).output.contains(text); });
    }
    bool presetIs(const std::string& name) {
        return says("   " + name, {"--dest=org.halvo.Halvo", "/org/halvo/Halvo/Status",
                                   "org.halvo.Status.ActivePreset"});
    }
    bool helperShowsThePlayer() {
        return says("MediaPlayer2.scripted",
                    {"--dest=org.halvo.MediaHelper", "/org/halvo/MediaHelper",
                     "org.freedesktop.DBus.Properties.Get", "string:org.halvo.MediaHelper",
                     "string:ShownPlayer"});
    }
    /// The PID of a helper other than `former`; 0 when none starts.
    int helper(int former = 0) {
        const auto pid = std::to_string(scene.application().pid());
        int child = 0;
        const auto isThere = [&] {
            std::ifstream children("/proc/" + pid + "/task/" + pid + "/children");
            while (children >> child) {
                std::ifstream name("/proc/" + std::to_string(child) + "/comm");
                std::string text;
                if (child != former && name >> text && text == "halvo-media-hel") return true;
            }
            return false;
        };
        return PrivateSession::waitFor(isThere) ? child : 0;
    }
};

} // namespace

TEST(NowPlaying, AnotherTrackSoundsAsItsGenreDoes) {
    ListeningScene listening;
    auto& scene = listening.scene;
    listening.start(true);
    const auto recorder = scene.record(kSpeakers);
    const auto tone = scene.play(sine(1000, 0.02F, 60));
    const auto level = [&] {
        const auto sound = recorder->recording().samples;
        const std::size_t frames = 4800;
        const auto count = sound.size() / 2;
        return count < frames ? -200.0 : levelDb(sound, count - frames, frames);
    };
    const double flat = -36.99; // dB: the tone's own

    listening.announce("Miles", "So What");
    ASSERT_TRUE(listening.presetIs("Jazz"));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return std::abs(level() - (flat - 3.5)) < 1.5; }))
        << level();
    listening.announce("Kylie", "Padam");
    ASSERT_TRUE(listening.presetIs("Pop"));
    EXPECT_TRUE(PrivateSession::waitFor([&] { return level() > flat + 7; })) << level();

    ASSERT_EQ(listening.tags.requests().size(), 2U);
    EXPECT_TRUE(listening.tags.requests()[1].target.contains("&artist=Kylie&"));
    EXPECT_EQ(scene.quit(), 0);
}

TEST(NowPlaying, WithoutAHelperThePlayersAreAsked) {
    for (const auto* helper : {"", "/etc/passwd"}) { // does not exist, so it cannot be launched
        ListeningScene listening;
        listening.announce("Kylie", "Padam");
        listening.start(true, {std::string("HALVO_MEDIA_HELPER=") + helper});
        EXPECT_TRUE(listening.presetIs("Pop")) << helper;
        listening.announce("Miles", "So What");
        EXPECT_TRUE(listening.presetIs("Jazz")) << helper;
    }
}

TEST(NowPlaying, WhileTheFeatureIsOffNobodyIsAsked) {
    ListeningScene listening;
    listening.start(false);
    listening.announce("Miles", "So What");
    ASSERT_TRUE(listening.helperShowsThePlayer());
    std::this_thread::sleep_for(1500ms); // until its line is out, and a track counts
    EXPECT_TRUE(listening.tags.requests().empty());
}

TEST(NowPlaying, TheHelperComesBackAndGoesWithTheApplication) {
    ListeningScene listening;
    listening.start(false);
    const int first = listening.helper();
    ASSERT_NE(first, 0);
    ASSERT_EQ(::kill(first, SIGKILL), 0);
    const int second = listening.helper(first);
    ASSERT_NE(second, 0);
    listening.announce("Miles", "So What");
    EXPECT_TRUE(listening.helperShowsThePlayer());

    const auto isGone = [&] {
        std::ifstream file("/proc/" + std::to_string(second) + "/stat");
        std::string state;
        file >> state >> state >> state; // number, name, state
        return !file || state == "Z";    // its new parent has not reaped it yet
    };
    ASSERT_FALSE(isGone());
    ASSERT_TRUE(listening.scene.application().signal(SIGKILL));
    EXPECT_TRUE(PrivateSession::waitFor(isGone, 1s));
}
