#include "nowplaying/AutoGenreController.h"
#include "fake/FakeUnicodeText.h"
#include "fake/FakeUserDefaults.h"
#include "nowplaying/GenrePresetMapper.h"
#include "nowplaying/LastFMClient.h"
#include "nowplaying/SpotifyClient.h"
#include "presets/PresetManager.h"
#include "unit/nowplaying/NowPlayingFixture.h"

#include <algorithm>
#include <functional>

using namespace halvo;

namespace {

class AutoGenre : public NowPlayingTest {
  protected:
    FakeUserDefaults defaults;
    FakeUnicodeText unicode;
    SpotifyClient spotify{defaults, log};
    LastFMClient lastFM{session, queue, unicode, log};
    GenrePresetMapper mapper{unicode};
    std::shared_ptr<PresetManager> presets = std::make_shared<PresetManager>(files, defaults, log);
    std::unique_ptr<AutoGenreController> controller;

    void open(bool enabled = true) {
        if (enabled) defaults.setBool("autoGenreEnabled", true);
        controller = std::make_unique<AutoGenreController>(
            AutoGenreServices{*monitor, spotify, lastFM, mapper, presets, defaults, queue, log});
        takeLog();
    }
    void play(const std::string& artist, const std::string& title = "T") {
        monitor->currentTrack.set(NowPlayingTrack{title, artist, {}, {}, {}});
    }
    void stop() { monitor->currentTrack.set(std::nullopt); }
    void playSettled(const std::string& artist, const std::string& title = "T") {
        play(artist, title);
        queue.advance(500ms);
    }
    void answer(const std::string& tag) {
        session.answer(
            HTTPResponse{200, R"({"toptags":{"tag":[{"name":")" + tag + R"(","count":99}]}})"});
    }
    void choose(const std::string& name) { presets->activate(*presets->presetNamed(name)); }
    std::string active() {
        const auto preset = presets->activePreset();
        return preset ? preset->name : "none";
    }
    std::string genre() { return controller->currentGenre.get().value_or("none"); }
    std::size_t handled() {
        return static_cast<std::size_t>(std::ranges::count_if(log.lines, [](const auto& text) {
            return text.starts_with("Halvo: AutoGenre handling track: ");
        }));
    }
};

} // namespace

TEST_F(AutoGenre, ATrackGetsItsPreset) {
    open();
    play("Yes");
    queue.advance(499ms);
    EXPECT_EQ(handled(), 0U);
    queue.advance(1ms);
    EXPECT_EQ(controller->currentTrackDisplay.get(), "Yes — T");
    EXPECT_TRUE(controller->isLookingUp.get());
    EXPECT_EQ(genre(), "none");
    answer("Prog Rock");
    EXPECT_FALSE(controller->isLookingUp.get());
    EXPECT_EQ(active(), "Rock");
    EXPECT_EQ(genre(), "Rock");
    EXPECT_EQ(presets->preamp.get(), presets->presetNamed("Rock")->preamp);
    EXPECT_EQ(takeLog(), (Lines{"Halvo: AutoGenre handling track: Yes — T",
                                "Halvo: Last.fm tags for 'Yes': prog rock",
                                "Halvo: AutoGenre mapped tags → preset 'Rock'",
                                "Halvo: AutoGenre activated preset 'Rock'"}));
}

TEST_F(AutoGenre, FallbacksAreClarity) {
    open();
    playSettled("Yes");
    session.answer(std::nullopt);
    EXPECT_EQ(active(), "Clarity");
    EXPECT_EQ(takeLog(), (Lines{"Halvo: AutoGenre handling track: Yes — T",
                                "Halvo: Last.fm request failed for 'Yes'",
                                "Halvo: AutoGenre — no tags found for 'Yes', using Clarity preset",
                                "Halvo: AutoGenre activated fallback preset 'Clarity'"}));
    choose("Rock");
    playSettled("", "Alone");
    EXPECT_EQ(controller->currentTrackDisplay.get(), "Alone");
    EXPECT_EQ(active(), "Clarity");
    EXPECT_EQ(genre(), "Clarity");
    EXPECT_EQ(takeLog(), (Lines{"Halvo: AutoGenre handling track: Alone",
                                "Halvo: AutoGenre — no artist, using Clarity preset"}));
    EXPECT_EQ(session.requests.size(), 1U);
}

TEST_F(AutoGenre, WhichChangesAreHandled) {
    struct Row {
        const char* name;
        std::function<void()> change;
        std::size_t handled;
    };
    const Row rows[] = {
        {"same again", [this] { playSettled("A"), playSettled("A"); }, 1},
        {"nothing in between", [this] { playSettled("A"), stop(), playSettled("A"); }, 2},
        {"stopped soon", [this] { play("A"), queue.advance(200ms), stop(); }, 1},
        {"skips",
         [this] { play("A"), queue.advance(400ms), play("B"), queue.advance(400ms), play("C"); },
         1},
        {"off at delivery", [this] { play("A"), controller->isEnabled.set(false); }, 0},
        {"on at delivery",
         [this] {
             controller->isEnabled.set(false);
             play("A");
             queue.advance(200ms);
             controller->isEnabled.set(true);
         },
         2},
        {"on, off, on",
         [this] {
             playSettled("A");
             controller->isEnabled.set(false);
             controller->isEnabled.set(true);
             controller->isEnabled.set(true);
         },
         2},
        {"on without a track",
         [this] { controller->isEnabled.set(false), controller->isEnabled.set(true); }, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        stop();
        open();
        row.change();
        queue.advance(500ms);
        EXPECT_EQ(handled(), row.handled);
        EXPECT_EQ(defaults.boolForKey("autoGenreEnabled"), controller->isEnabled.get());
    }
}

TEST_F(AutoGenre, OffItAsksNobody) {
    open(false);
    EXPECT_FALSE(controller->isEnabled.get());
    playSettled("A");
    queue.advance(10s);
    EXPECT_TRUE(session.requests.empty());
    controller->isEnabled.set(true);
    queue.flush();
    EXPECT_EQ(session.requests.size(), 1U) << "without waiting";
    controller->isEnabled.set(false);
    answer("jazz");
    EXPECT_EQ(active(), "Jazz") << "a look-up under way still ends";
}

TEST_F(AutoGenre, AtConstructionACurrentTrackIsHandledAtOnce) {
    play("A");
    open();
    queue.flush();
    EXPECT_EQ(session.requests.size(), 1U);
}

TEST_F(AutoGenre, AManualChoiceHoldsUntilTheNextTrack) {
    struct Row {
        const char* name;
        std::function<void()> meanwhile; ///< while the second look-up runs
        const char* active;
    };
    const Row rows[] = {
        {"none", [] {}, "Pop"},
        {"another", [this] { choose("Deep"); }, "Deep"},
        {"the controller's own last", [this] { choose("Jazz"); }, "Pop"},
        {"another, then its own", [this] { choose("Deep"), choose("Jazz"); }, "Jazz"},
        {"none at all", [this] { presets->activePresetID.set(std::nullopt); }, "Pop"}};
    open();
    int number = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto name = std::to_string(++number);
        choose("Flat"); // a choice before the track does not count
        queue.advance(1s);
        playSettled("jazz" + name);
        answer("jazz");
        ASSERT_EQ(active(), "Jazz");
        queue.advance(1s);
        playSettled("pop" + name);
        row.meanwhile();
        takeLog();
        answer("pop");
        EXPECT_EQ(active(), row.active);
        EXPECT_EQ(genre(), "Pop");
        EXPECT_EQ(takeLog().at(1), "Halvo: AutoGenre mapped tags → preset 'Pop'");
    }
}

TEST_F(AutoGenre, ANewArtistCancelsTheLookupButNoArtistDoesNot) {
    open();
    playSettled("X");
    queue.advance(600ms);
    playSettled("Y");
    answer("rock");
    EXPECT_TRUE(controller->isLookingUp.get()) << "the newer look-up's";
    EXPECT_EQ(active(), "none");
    answer("pop");
    EXPECT_FALSE(controller->isLookingUp.get());
    EXPECT_EQ(active(), "Pop");
    queue.advance(1s);
    playSettled("Z");
    playSettled("");
    EXPECT_EQ(active(), "Clarity");
    answer("jazz");
    EXPECT_EQ(active(), "Jazz");
    playSettled("X", "from the cache");
    EXPECT_EQ(active(), "Rock") << "what was asked for in vain is known";
}

TEST_F(AutoGenre, OfManySkippedTracksTheOneThatStaysIsAskedAboutInFull) {
    open();
    std::vector<MainQueue::Duration> starts;
    const auto pass = [&](MainQueue::Duration time) {
        for (const auto end = queue.now() + time; queue.now() < end; queue.advance(10ms))
            if (session.requests.size() > starts.size()) starts.push_back(queue.now());
    };
    for (int i = 1; i <= 15; ++i) { // of a service that does not answer
        play("artist" + std::to_string(i));
        pass(600ms);
    }
    pass(1s);
    ASSERT_TRUE(session.requests.back().url.contains("&artist=artist15&"));
    for (std::size_t i = 1; i < starts.size(); ++i)
        EXPECT_GE(starts[i] - starts[i - 1], 1s);
    for (const auto& request : session.requests)
        EXPECT_EQ(request.timeout, 5s);
    EXPECT_LT(starts.size(), 15U);
    const auto logged = takeLog();
    EXPECT_EQ(
        std::ranges::count_if(logged, [](const auto& text) { return text.contains("failed"); }), 0)
        << "what never went out cannot fail";
    for (std::size_t i = 1; i < session.requests.size(); ++i)
        session.answer(std::nullopt);
    EXPECT_TRUE(controller->isLookingUp.get());
    EXPECT_EQ(active(), "none");
    answer("jazz");
    EXPECT_EQ(active(), "Jazz");
}

TEST_F(AutoGenre, WithoutAPresetOrAManagerNothingIsActivated) {
    open();
    presets->presets.set({});
    playSettled("A");
    answer("rock");
    EXPECT_EQ(genre(), "Rock");
    EXPECT_EQ(takeLog().back(), "Halvo: AutoGenre mapped tags → preset 'Rock'");
    presets.reset();
    playSettled("");
    EXPECT_EQ(genre(), "Clarity");
    playSettled("B");
    controller.reset();
    session.answer(std::nullopt);
    queue.advance(1s);
}

TEST_F(AutoGenre, ViewsHearOfEverythingThatItShows) {
    open();
    int notices = 0;
    const auto subscription = controller->didChange([&] { ++notices; });
    const std::pair<const char*, std::function<void()>> foreign[] = {
        {"track", [this] { stop(); }},
        {"playing", [this] { monitor->isPlaying.set(true); }},
        {"artwork", [this] { monitor->artworkImage.set(std::nullopt); }},
        {"account", [this] { spotify.isConnected.set(true); }},
        {"result", [this] { spotify.lastLookupResult.set(std::nullopt); }}};
    for (const auto& [name, change] : foreign) {
        SCOPED_TRACE(name);
        notices = 0;
        change();
        EXPECT_EQ(notices, 0);
        queue.flush();
        EXPECT_EQ(notices, 1);
    }
    const std::pair<const char*, std::function<void()>> own[] = {
        {"switch", [this] { controller->isEnabled.set(false); }},
        {"genre", [this] { controller->currentGenre.set("Rock"); }},
        {"display", [this] { controller->currentTrackDisplay.set("A — T"); }},
        {"looking up", [this] { controller->isLookingUp.set(true); }}};
    for (const auto& [name, change] : own) {
        SCOPED_TRACE(name);
        notices = 0;
        change();
        EXPECT_EQ(notices, 1);
    }
}

TEST(Spotify, OnlyTheRefreshTokenConnects) {
    using Value = FakeUserDefaults::Value;
    struct Row {
        const char* name;
        std::map<std::string, Value> values;
        const char* log;
        std::optional<SpotifyClient::Date> expiry;
    };
    constexpr const char* kNo = "isConnected=false, hasRefreshToken=false";
    constexpr const char* kYes = "isConnected=true, hasRefreshToken=true";
    const std::string text = "2";
    const Row rows[] = {
        {"access alone", {{"spotify_access_token", text}, {"spotify_token_expiry", text}}, kNo, {}},
        {"all",
         {{"spotify_refresh_token", text}, {"spotify_token_expiry", 2.5}},
         kYes,
         SpotifyClient::Date(std::chrono::duration<double>(2.5))},
        {"a number for a token", {{"spotify_refresh_token", 2.0}}, kNo, {}},
        {"a yes for a date", {{"spotify_token_expiry", true}}, kNo, {}},
        {"bytes for a date", {{"spotify_token_expiry", FakeUserDefaults::Data{"2"}}}, kNo, {}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FakeUserDefaults defaults;
        FakeSystemLog log;
        defaults.values = row.values;
        const SpotifyClient client(defaults, log);
        EXPECT_EQ(log.lines, std::vector{std::string("Halvo: SpotifyClient init — ") + row.log});
        EXPECT_EQ(client.tokenExpiry(), row.expiry);
    }
}
