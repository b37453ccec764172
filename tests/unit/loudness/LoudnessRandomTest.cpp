#include "unit/loudness/LoudnessWorld.h"

#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>

namespace halvo::test {

namespace {

using World = LoudnessWorld;

constexpr unsigned kSequences = 200;
constexpr int kLongest = 10; // events

/// One sequence of events for one seed, written down as it goes.
class RandomSequence {
  public:
    RandomSequence(const ServerKind& kind, unsigned seed) : world_(kind), random_(seed) {}

    void run();
    const std::string& events() const { return events_; }

  private:
    unsigned any(unsigned count) {
        return std::uniform_int_distribution<unsigned>(0, count - 1)(random_);
    }
    template <class Value, std::size_t count> Value oneOf(const std::array<Value, count>& values) {
        return values[any(count)];
    }
    std::string anyDevice() {
        return oneOf(std::array<std::string, 3>{kSpeakers, kHeadphones, kAmplifier});
    }
    float anyVolume() { return oneOf(std::array{0.0F, 0.05F, 0.2F, 0.5F, 0.8F, 1.0F}); }
    End anyEnd() {
        return oneOf(std::array{End::quit, End::signal, End::killUnderGuard, End::kill});
    }
    void note(const std::string& event) { events_ += (events_.empty() ? "" : ", ") + event; }

    void happen();
    void happenWhileRunning();
    void happenToDevice();
    void end(End end);
    void logOut();

    World world_;
    std::mt19937 random_;
    std::string events_;
};

void RandomSequence::run() {
    note("start");
    world_.start();
    for (int left = kLongest; left > 0 && !testing::Test::HasFailure(); --left)
        happen();
    if (testing::Test::HasFailure()) return;
    if (world_.isRunning()) return end(End::quit);
    if (!world_.isLeftRaised()) return;
    note("start");
    world_.start();
    end(End::quit);
}

void RandomSequence::happen() {
    // What a kill has left is for the next start to put right.
    if (!world_.isRunning() && (world_.isLeftRaised() || any(2) == 0)) {
        note("start");
        return world_.start();
    }
    if (world_.isRunning() && any(2) == 0) return happenWhileRunning();
    happenToDevice();
}

void RandomSequence::happenWhileRunning() {
    const auto uid = anyDevice();
    const float volume = anyVolume();
    switch (any(9)) {
    case 0:
        if (!world_.isPresent(uid)) return;
        note("pick " + uid);
        return world_.pick(uid);
    case 1:
        note("panel " + std::to_string(volume));
        return world_.turnInPanel(volume);
    case 2:
        note("desktop " + std::to_string(volume));
        return world_.turn(stereo(volume));
    case 3:
        note("mute key at " + std::to_string(volume));
        return world_.turn(muted(volume));
    case 4:
        note("rate");
        return world_.changeRate(World::Return::asBefore);
    case 5:
        note("ring");
        return world_.rebuildRing();
    case 6:
        note("driver");
        world_.killDriver();
        return world_.restartDriver();
    case 7:
        return end(anyEnd());
    default:
        return logOut();
    }
}

void RandomSequence::happenToDevice() {
    const auto uid = anyDevice();
    const float volume = anyVolume();
    if (!world_.isPresent(uid)) {
        // One that was raised when it went is given back by the next start, not before.
        if (!world_.isRunning() && world_.machine.record().devices[uid].isMoved) return;
        note((world_.isKnown(uid) ? "plug again " : "plug in ") + uid);
        return world_.isKnown(uid) ? world_.plugAgain(uid) : world_.plugIn(uid, volume);
    }
    switch (any(6)) {
    case 0:
        note("unplug " + uid);
        return world_.unplug(uid);
    case 1:
    case 2:
        note("choose " + uid);
        return world_.choose(uid);
    case 3:
        note("level of " + uid + " " + std::to_string(volume));
        return world_.setLevel(uid, volume);
    case 4:
        note("mute of " + uid);
        return world_.setMute(uid, !world_.own(uid).muted);
    default:
        if (!world_.isRunning()) return;
        note("server, first " + uid);
        return world_.restartServer({uid, kVirtualDeviceUID});
    }
}

void RandomSequence::end(End end) {
    note("end " + std::to_string(static_cast<int>(end)));
    world_.end(end);
    if (end != End::kill) world_.expectGivenBack();
}

void RandomSequence::logOut() {
    const auto end = anyEnd();
    const auto first = any(2) == 0 ? World::First::application : World::First::server;
    const auto delay = std::chrono::milliseconds(any(2000));
    note("log out by " + std::to_string(static_cast<int>(end)) +
         (first == World::First::application ? ", then the server by " : " after the server by ") +
         std::to_string(delay.count()) + " ms");
    world_.logOut(end, first, delay);
    world_.logIn();
    if (!world_.isRunning()) world_.expectGivenBack();
}

/// HALVO_LOUDNESS_SEED chooses others; with HALVO_LOUDNESS_SEQUENCES=1 one alone.
unsigned firstSeed() {
    const char* seed = std::getenv("HALVO_LOUDNESS_SEED");
    return seed != nullptr ? static_cast<unsigned>(std::strtoul(seed, nullptr, 10)) : 1;
}

unsigned sequences() {
    const char* count = std::getenv("HALVO_LOUDNESS_SEQUENCES");
    return count != nullptr ? static_cast<unsigned>(std::strtoul(count, nullptr, 10)) : kSequences;
}

class LoudnessRandomTest : public testing::TestWithParam<ServerKind> {};

TEST_P(LoudnessRandomTest, NoSequenceOfEventsBreaksARule) {
    const unsigned first = firstSeed();
    std::cout << "HALVO_LOUDNESS_SEED=" << first << "\n";
    for (unsigned seed = first; seed != first + sequences() && !HasFailure(); ++seed) {
        RandomSequence sequence(GetParam(), seed);
        sequence.run();
        if (HasFailure())
            ADD_FAILURE() << "HALVO_LOUDNESS_SEED=" << seed << ": " << sequence.events();
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, LoudnessRandomTest, testing::ValuesIn(allServerKinds()),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace

} // namespace halvo::test
