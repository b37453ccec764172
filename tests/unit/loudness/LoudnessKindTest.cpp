#include "unit/loudness/LoudnessWorld.h"

#include <algorithm>
#include <functional>

namespace halvo::test {

namespace {

using World = LoudnessWorld;

/// Everything that belongs to one kind of server.
class LoudnessKindTest : public testing::TestWithParam<ServerKind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, LoudnessKindTest, testing::ValuesIn(allServerKinds()),
                         [](const auto& test) { return std::string(test.param.name); });

/// The session's volume, whoever moves it.
struct Session {
    float volume;
    bool muted;
};

struct Turn {
    const char* name;
    std::function<void(World&)> act;
    std::function<void(Session&)> expected;
};

const std::vector<Turn>& turns() {
    static const std::vector<Turn> kTurns = {
        {"panel", [](World& w) { w.turnInPanel(0.3F); },
         [](Session& session) { session = {0.3F, false}; }},
        {"desktop",
         [](World& w) {
             const bool muted = w.machine.level(kVirtualDeviceUID).muted;
             w.turn({{0.2F, 0.2F}, muted});
         },
         [](Session& session) { session.volume = 0.2F; }},
        {"muteKey",
         [](World& w) {
             auto level = w.machine.level(kVirtualDeviceUID);
             level.muted = !level.muted;
             w.turn(level);
         },
         [](Session& session) { session.muted = !session.muted; }},
        {"panelToNothing", [](World& w) { w.turnInPanel(0); },
         [](Session& session) { session.volume = 0; }},
    };
    return kTurns;
}

TEST_P(LoudnessKindTest, TheLastOfPanelDesktopAndKeysCounts) {
    std::vector<std::size_t> order{0, 1, 2, 3};
    do {
        World world(GetParam());
        world.start();
        Session session{0.5F, false};
        std::string names;
        for (const auto index : order) {
            const auto& turn = turns()[index];
            names += std::string(" ") + turn.name;
            SCOPED_TRACE("after" + names);
            turn.act(world);
            turn.expected(session);
            const auto now = world.machine.level(kVirtualDeviceUID);
            EXPECT_EQ(now.channelVolumes, stereo(session.volume).channelVolumes);
            EXPECT_EQ(now.muted, session.muted);
            const float heard = session.muted ? 0 : session.volume;
            EXPECT_NEAR(std::ranges::max(world.machine.heard(kMusic)), heard, 0.002F);
            EXPECT_NEAR(world.machine.delegate->presetManager().outputVolume.get(), heard, 0.002F);
        }
        SCOPED_TRACE("after" + names);
        world.end(End::quit);
        world.expectGivenBack(kSpeakers);
    } while (std::ranges::next_permutation(order).found);
}

/// When folders are full, in a session that ends this way.
struct Full {
    const char* name;
    std::set<std::filesystem::path> folders;
    enum class When { always, running, ending } when;
    bool isRaised; ///< nothing is raised that stands in no record
};

const std::vector<Full>& fullFolders() {
    using enum Full::When;
    static const std::vector<Full> kFull = {
        {"settings", {"/state"}, always, true},
        {"settingsWhileRunning", {"/state"}, running, true},
        {"settingsAtTheEnd", {"/state"}, ending, true},
        {"both", {"/state", "/run"}, always, false},
        {"bothWhileRunning", {"/state", "/run"}, running, true},
        {"bothAtTheEnd", {"/state", "/run"}, ending, true},
    };
    return kFull;
}

/// Every device is given back by the end, or at the latest by the next start.
void runFull(const ServerKind& kind, const Full& full, End end) {
    using enum Full::When;
    World world(kind);
    if (full.when == always) world.machine.fill(full.folders);
    world.start();
    EXPECT_EQ(world.machine.level(kSpeakers).channelVolumes.front(), full.isRaised ? 1 : 0.5F);
    if (full.when == running) world.machine.fill(full.folders);
    world.pick(kHeadphones);
    world.pick(kSpeakers); // both are raised by now
    world.turn(stereo(0.2F));
    if (full.when == ending) world.machine.fill(full.folders);
    world.end(end);
    if (end != End::kill) world.expectGivenBack(kSpeakers);
    world.machine.fill({});
    world.start();
    world.end(End::quit);
    world.expectGivenBack(kSpeakers);
}

TEST_P(LoudnessKindTest, FullFoldersLeaveNothingRaised) {
    for (const auto& full : fullFolders()) {
        SCOPED_TRACE(full.name);
        for (const End end : {End::quit, End::signal, End::killUnderGuard, End::kill}) {
            SCOPED_TRACE("end " + std::to_string(static_cast<int>(end)));
            runFull(GetParam(), full, end);
        }
    }
}

TEST_P(LoudnessKindTest, EveryDeviceComesBackFromALogOutAtItsOwnLevel) {
    for (const End end : {End::quit, End::signal, End::killUnderGuard, End::kill}) {
        for (const auto first : {World::First::application, World::First::server}) {
            for (const int delay : {0, 1, 50, 300, 990, 1010, 1500, 2000}) {
                SCOPED_TRACE("end " + std::to_string(static_cast<int>(end)) +
                             (first == World::First::application ? ", then the server by "
                                                                 : " after the server by ") +
                             std::to_string(delay) + " ms");
                World world(GetParam());
                world.start();
                world.pick(kHeadphones);
                world.pick(kSpeakers); // both are raised by now
                world.turn(stereo(0.2F));
                world.logOut(end, first, std::chrono::milliseconds(delay));
                world.logIn();
                if (world.isRunning())
                    EXPECT_EQ(world.server.defaultUID(), kVirtualDeviceUID);
                else
                    world.expectGivenBack(kSpeakers);
                if (!world.isRunning()) world.start();
                world.end(End::quit);
                world.expectGivenBack(kSpeakers);
            }
        }
    }
}

TEST_P(LoudnessKindTest, AKillLeavesTheDefaultThatReplacedAVanishedOne) {
    World world(GetParam());
    world.start();
    world.unplug(kSpeakers);
    world.restartServer({kHeadphones, kVirtualDeviceUID});
    world.plugIn(kAmplifier, 1);
    world.end(End::killUnderGuard);
    world.expectGivenBack(kHeadphones);
}

TEST_P(LoudnessKindTest, ALogOutWithNothingRaisedLeavesNoVirtualDefault) {
    for (const End end : {End::quit, End::signal, End::killUnderGuard, End::kill}) {
        SCOPED_TRACE("end " + std::to_string(static_cast<int>(end)));
        World world(GetParam());
        world.start();
        world.setLevel(kSpeakers, 0.2F); // their own from here on
        world.logOut(end, World::First::application, std::chrono::milliseconds(100));
        world.logIn();
        if (!world.isRunning()) world.expectGivenBack(kSpeakers);
        if (!world.isRunning()) world.start();
        world.end(End::quit);
        world.expectGivenBack(kSpeakers);
    }
}

} // namespace

} // namespace halvo::test
