#include "unit/loudness/LoudnessWorld.h"

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace halvo::test {

using namespace std::chrono_literals;

namespace {

using World = LoudnessWorld;

/// What happens between start and end. Speakers are at 0.5 and 0.25, headphones at 0.3 and 0.6; an
/// end gives each its own level back, so a row says just what is heard before it, and the default.
struct Row {
    const char* name;
    std::function<void(World&)> events;
    float heard; ///< in the louder channel, once things have come to rest
    const char* defaultAfter = kSpeakers;
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.name;
}

const std::vector<Row>& rows() {
    static const std::vector<Row> kRows = {
        {"nothing", [](World&) {}, 0.5F},

        // The default changed elsewhere.
        {"defaultToQuieter",
         [](World& w) {
             w.setLevel(kHeadphones, 0.1F);
             w.choose(kHeadphones);
         },
         0.1F, kHeadphones},
        {"defaultToLouder", [](World& w) { w.choose(kHeadphones); }, 0.6F, kHeadphones},
        {"defaultToTheOneInUse",
         [](World& w) {
             w.turn(stereo(0.1F));
             w.choose(kSpeakers);
         },
         0.1F},
        {"defaultThereAndBack",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.choose(kHeadphones);
             w.choose(kSpeakers);
         },
         0.2F},

        // Picked in the panel.
        {"picked", [](World& w) { w.pick(kHeadphones); }, 0.5F},
        {"pickedAndBack",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.pick(kHeadphones);
             w.pick(kSpeakers);
         },
         0.2F},
        {"pickedAndChosen",
         [](World& w) {
             w.pick(kHeadphones);
             w.choose(kHeadphones);
         },
         0.5F, kHeadphones},
        {"pickedTheVirtualOne", [](World& w) { w.pick(kVirtualDeviceUID); }, 0.5F},

        // Plugged in and out.
        {"pluggedInLoud", [](World& w) { w.plugIn(kAmplifier, 1); }, 0.5F},
        {"pluggedInQuiet", [](World& w) { w.plugIn(kAmplifier, 0.1F); }, 0.1F},
        {"pluggedInAndOut",
         [](World& w) {
             w.plugIn(kAmplifier, 1);
             w.unplug(kAmplifier);
         },
         0},
        {"pluggedInOutAndIn",
         [](World& w) {
             w.plugIn(kAmplifier, 0.8F);
             w.turn(stereo(0.3F));
             w.unplug(kAmplifier);
             w.plugAgain(kAmplifier);
         },
         0.3F},
        {"unpluggedInUse", [](World& w) { w.unplug(kSpeakers); }, 0, kHeadphones},
        {"unpluggedInUseThenPicked",
         [](World& w) {
             w.unplug(kSpeakers);
             w.pick(kHeadphones);
         },
         0.5F, kHeadphones},
        {"unpluggedOriginal",
         [](World& w) {
             w.plugIn(kAmplifier, 0.3F);
             w.unplug(kSpeakers);
         },
         0.3F, kAmplifier},
        {"unpluggedOriginalAndBack",
         [](World& w) {
             w.pick(kHeadphones);
             w.unplug(kSpeakers);
             w.plugAgain(kSpeakers);
         },
         0.5F},
        {"unpluggedAnother", [](World& w) { w.unplug(kHeadphones); }, 0.5F},
        {"unpluggedAnotherThatWasRaised",
         [](World& w) {
             w.pick(kHeadphones);
             w.pick(kSpeakers);
             w.unplug(kHeadphones);
             w.plugAgain(kHeadphones);
         },
         0.5F},
        {"unpluggedInUseAndBack",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.unplug(kSpeakers);
             w.plugAgain(kSpeakers);
         },
         0.2F},

        // Another rate, and the driver.
        {"rateChanged",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.changeRate(World::Return::asBefore);
         },
         0.2F},
        {"rateChangedToFullScale",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.changeRate(World::Return::atFullScale);
         },
         0.2F},
        {"rateChangedOnAnother",
         [](World& w) {
             w.pick(kHeadphones);
             w.turn(stereo(0.2F));
             w.changeRate(World::Return::asBefore);
         },
         0.2F},
        {"streamRebuilt",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.rebuildRing();
         },
         0.2F},
        {"driverKilled", [](World& w) { w.killDriver(); }, 0},
        {"driverKilledAndBack",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.killDriver();
             w.restartDriver();
         },
         0.2F},

        // The server killed.
        {"serverRestarted",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.restartServer({kSpeakers, kHeadphones, kVirtualDeviceUID});
         },
         0.2F},
        {"serverRestartedVirtualFirst",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.restartServer({kVirtualDeviceUID, kHeadphones, kSpeakers});
         },
         0.2F},
        {"serverRestartedAnotherFirst",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.restartServer({kHeadphones, kVirtualDeviceUID, kSpeakers});
         },
         0.2F},
        {"serverRestartedOnAnother",
         [](World& w) {
             w.pick(kHeadphones);
             w.turn(stereo(0.2F));
             w.restartServer({kSpeakers, kHeadphones, kVirtualDeviceUID});
         },
         0.2F},

        // Somebody else sets the level of a raised device: it is the device's own from then on.
        {"levelSetByOthers", [](World& w) { w.setLevel(kSpeakers, 0.2F); }, 0.1F},
        {"muteSetByOthers", [](World& w) { w.setMute(kSpeakers, true); }, 0},
        {"muteSetAndLiftedByOthers",
         [](World& w) {
             w.setMute(kSpeakers, true);
             w.setMute(kSpeakers, false);
         },
         0.5F},
        {"levelOfAnotherSetByOthers",
         [](World& w) {
             w.pick(kHeadphones);
             w.pick(kSpeakers);
             w.setLevel(kHeadphones, 0.2F);
         },
         0.5F},

        {"levelSetByOthersThenPicked",
         [](World& w) {
             w.setLevel(kSpeakers, 0.2F);
             w.pick(kHeadphones);
         },
         0.1F},
        {"levelSetToTheSessionsByOthers",
         [](World& w) {
             w.turn(stereo(0));
             w.setLevel(kSpeakers, 0);
         },
         0},
        {"muteSetByOthersThenDriverRestarted",
         [](World& w) {
             w.setMute(kSpeakers, true);
             w.killDriver();
             w.restartDriver();
         },
         0},

        // Once more.
        {"secondStart",
         [](World& w) {
             w.end(End::signal);
             w.start();
         },
         0.5F},
        {"secondStartOnAnother",
         [](World& w) {
             w.pick(kHeadphones);
             w.end(End::signal);
             w.start();
         },
         0.5F},
        {"secondStartAfterAnotherChoice",
         [](World& w) {
             w.end(End::signal);
             w.choose(kHeadphones);
             w.start();
         },
         0.6F, kHeadphones},
        {"startAfterKill",
         [](World& w) {
             w.turn(stereo(0.2F));
             w.end(End::kill);
             w.start();
         },
         0.5F},
        {"startAfterKillOnAnother",
         [](World& w) {
             w.pick(kHeadphones);
             w.end(End::kill);
             w.start();
         },
         0.5F},
    };
    return kRows;
}

class LoudnessTableTest : public testing::TestWithParam<std::tuple<ServerKind, Row>> {};

TEST_P(LoudnessTableTest, Row) {
    const auto& [kind, row] = GetParam();
    for (const End end : {End::quit, End::signal, End::killUnderGuard, End::kill}) {
        SCOPED_TRACE("end " + std::to_string(static_cast<int>(end)));
        World world(kind);
        world.start();
        EXPECT_EQ(world.server.defaultUID(), kVirtualDeviceUID);
        row.events(world);
        EXPECT_NEAR(std::ranges::max(world.machine.heard(kMusic)), row.heard, 0.002F);
        world.end(end);
        if (end == End::kill) {
            world.start();
            world.end(End::quit);
        }
        world.expectGivenBack(row.defaultAfter);
    }
}

INSTANTIATE_TEST_SUITE_P(Rules, LoudnessTableTest,
                         testing::Combine(testing::ValuesIn(allServerKinds()),
                                          testing::ValuesIn(rows())),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + "_" +
                                    std::get<1>(test.param).name;
                         });

} // namespace

} // namespace halvo::test
