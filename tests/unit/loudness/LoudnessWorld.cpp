#include "unit/loudness/LoudnessWorld.h"

#include "app/SavedSession.h"
#include "loudness/LevelScale.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace halvo::test {

using namespace std::chrono_literals;
using Streams = FakeServerBehaviour::Streams;

namespace {

constexpr float kNear = 0.002F;

bool isNear(const DeviceLevel& level, const DeviceLevel& wanted) {
    return level.muted == wanted.muted && level.port == wanted.port &&
           std::ranges::equal(level.channelVolumes, wanted.channelVolumes,
                              [](float a, float b) { return std::abs(a - b) <= kNear; });
}

float loudest(const LoudnessMachine::Heard& heard) {
    return std::ranges::max(heard);
}

} // namespace

void PrintTo(const ServerKind& kind, std::ostream* stream) {
    *stream << kind.name;
}

std::vector<ServerKind> allServerKinds() {
    using Server = FakeServerBehaviour;
    return {{"pipeWireCards", Server::pipeWire(), true, true},
            {"pipeWirePortless", Server::pipeWire(), false, true},
            {"coreAudioProcesses", Server::coreAudio(Streams::known), false, false},
            {"coreAudioRunning", Server::coreAudio(Streams::runsSomewhere), false, false},
            {"coreAudioBlind", Server::coreAudio(Streams::unknown), false, false}};
}

LoudnessWorld::LoudnessWorld(const ServerKind& kind) : kind_(kind) {
    server.behaviour = kind.behaviour;
    own_ = {{kSpeakers, level(kSpeakers, 0.5F, 0.25F)},
            {kHeadphones, level(kHeadphones, 0.3F, 0.6F)}};
    server.plug(kSpeakers, "Speakers", own(kSpeakers));
    server.plug(kHeadphones, "Headphones", own(kHeadphones));
    machine.plugDriver();
    server.play(kMusic);
    original_ = kSpeakers;
    rest();
}

DeviceLevel LoudnessWorld::level(const std::string& uid, float left, float right) const {
    return {{left, right}, false, kind_.hasPorts ? uid + ".port" : ""};
}

void LoudnessWorld::start() {
    // Silent while a killed application's virtual device is still the default.
    limitAnyChannel(isLeftRaised_ ? endLoudness() : 0);
    isLeftRaised_ = false;
    const auto present = server.defaultUID();
    if (own_.contains(present)) original_ = present;
    // A start repeats the last restore: what was turned up since then is turned down again.
    if (const auto session = SavedSession::load(machine.fake.userDefaults)) {
        const auto recorded = machine.record().devices;
        const auto found = recorded.find(session->uid);
        if (found != recorded.end() && isAbove(own_[session->uid], found->second.found))
            own_[session->uid] = lowerOf(found->second.found, own_[session->uid]);
    }
    machine.start();
    rest();
}

void LoudnessWorld::end(End end) {
    rememberUse();
    limitAnyChannel(end == End::kill ? 0 : endLoudness());
    if (end == End::signal)
        machine.terminate();
    else
        machine.endNow(end);
    rest();
    machine.keep();
    isLeftRaised_ = end == End::kill;
}

void LoudnessWorld::pick(const std::string& uid) {
    limitAnyChannel();
    machine.delegate->deviceManager().selectedDeviceID.set(uid);
    rest();
}

void LoudnessWorld::turnInPanel(float volume) {
    limitAnyChannel(volume);
    machine.delegate->presetManager().setOutputVolume(volume);
    restAsked(volume);
}

void LoudnessWorld::turn(const DeviceLevel& level) {
    limitAnyChannel(loudestVolume(level));
    server.changeLevel(kVirtualDeviceUID, level);
    restAsked(loudestVolume(level));
}

void LoudnessWorld::choose(const std::string& uid) {
    original_ = uid;
    limitAnyChannel(ownLoudness(uid));
    server.choose(uid);
    rest();
}

void LoudnessWorld::setLevel(const std::string& uid, float both) {
    auto wanted = level(uid, both, both);
    wanted.muted = machine.level(uid).muted;
    if (isNear(machine.level(uid), wanted)) return; // nobody can notice
    own_[uid] = wanted;
    limitAnyChannel(both);
    server.changeLevel(uid, wanted);
    rest();
}

void LoudnessWorld::setMute(const std::string& uid, bool muted) {
    auto wanted = machine.level(uid);
    if (wanted.muted == muted) return; // nobody can notice
    wanted.muted = own_[uid].muted = muted;
    limitAnyChannel(ownLoudness(uid));
    server.changeLevel(uid, wanted);
    rest();
}

void LoudnessWorld::plugIn(const std::string& uid, float both) {
    own_[uid] = level(uid, both, both);
    limitAnyChannel(isRunning() ? 0 : ownLoudness(uid));
    server.plug(uid, "USB Amplifier", own(uid));
    rest();
}

void LoudnessWorld::unplug(const std::string& uid) {
    limitAnyChannel(fallbackLoudness(uid));
    server.unplug(uid);
    rest();
}

void LoudnessWorld::plugAgain(const std::string& uid) {
    limitAnyChannel(isRunning() ? 0 : ownLoudness(uid));
    server.plugAgain(uid);
    rest();
}

void LoudnessWorld::changeRate(Return level) {
    limitAnyChannel(fallbackLoudness(kVirtualDeviceUID));
    server.unplug(kVirtualDeviceUID);
    machine.pass(200ms);
    if (level == Return::asBefore)
        server.plugAgain(kVirtualDeviceUID);
    else
        server.plug(kVirtualDeviceUID, "Halvo Virtual Output", stereo(1));
    machine.fake.sharedMemory.createRing(44100, 2, 8192);
    rest();
}

void LoudnessWorld::rebuildRing() {
    limitAnyChannel(); // where the device is gone, on another one
    machine.fake.sharedMemory.createRing(96000, 2, 16384);
    rest();
}

void LoudnessWorld::killDriver() {
    limitAnyChannel(); // where the device is gone, on another one
    machine.fake.sharedMemory.removeObject();
    rest();
}

void LoudnessWorld::restartDriver() {
    limitAnyChannel(); // where the device is gone, on another one
    machine.fake.sharedMemory.createRing(48000, 2, 8192);
    rest();
}

void LoudnessWorld::restartServer(const std::vector<std::string>& order) {
    std::vector<std::string> present;
    for (const auto id : server.deviceIDs().value_or(std::vector<AudioDeviceID>{}))
        present.push_back(*server.uid(id));
    // One that is no longer in use may be the default until the rest is there.
    float asked = 0;
    for (const auto& uid : present)
        asked = std::max(asked, ownLoudness(uid));
    limitAnyChannel(asked);
    server.stop();
    machine.pass(300ms);
    server.start();
    const auto rank = [&order](const std::string& uid) { return std::ranges::find(order, uid); };
    // Core Audio brings them all at once, with its default.
    if (server.behaviour.remembersRequests) std::ranges::stable_sort(present, {}, rank);
    for (const auto& uid : present) {
        server.plugAgain(uid);
        machine.pass(100ms);
    }
    rest();
}

void LoudnessWorld::logOut(End end, First first, std::chrono::milliseconds delay) {
    rememberUse();
    plugged_.clear();
    for (const auto id : server.deviceIDs().value_or(std::vector<AudioDeviceID>{}))
        plugged_.push_back(*server.uid(id));
    limitAnyChannel(end == End::kill ? 0 : endLoudness());
    if (first == First::server) server.stop();
    if (first == First::server) machine.pass(delay);
    if (isRunning()) machine.endNow(end);
    if (first == First::application) machine.pass(delay);
    if (first == First::application) server.stop();
    server.stopStream(kMusic);
    machine.fake.sharedMemory.removeObject();
    machine.settle();
    isLeftRaised_ = true;
}

void LoudnessWorld::logIn() {
    server.start();
    for (const auto& uid : plugged_) {
        server.plugAgain(uid);
        machine.pass(50ms);
    }
    machine.fake.sharedMemory.createRing(48000, 2, 8192);
    machine.pass(100ms);
    if (kind_.isRestoredAtLogin)
        machine.restoreAtLogin();
    else
        machine.start();
    machine.settle();
    if (!isRunning()) used_.clear(); // nothing tells of it any more
    if (!isRunning()) machine.keep();
    isLeftRaised_ = false;
    if (isRunning()) original_ = machine.delegate->originalOutputUID().value_or("");
    limitAnyChannel(ownLoudness(isRunning() ? original_ : server.defaultUID()));
    server.play(kMusic);
    rest();
}

void LoudnessWorld::expectGivenBack(const std::string& defaultUID) {
    for (const auto& [uid, level] : own_) {
        if (!isPresent(uid)) continue;
        const auto now = machine.level(uid);
        EXPECT_TRUE(isNear(now, level))
            << uid << " is at " << testing::PrintToString(now.channelVolumes)
            << (now.muted ? " muted" : "") << " in place of "
            << testing::PrintToString(level.channelVolumes) << (level.muted ? " muted" : "");
    }
    EXPECT_EQ(server.defaultUID(), defaultUID);
    if (!own_.contains(defaultUID) || !isPresent(defaultUID)) return;
    const auto& volumes = own(defaultUID).channelVolumes;
    const float gain = own(defaultUID).muted ? 0.0F : 1.0F;
    EXPECT_THAT(machine.heard(kMusic),
                testing::ElementsAre(testing::FloatNear(gain * volumes.front(), kNear),
                                     testing::FloatNear(gain * volumes.back(), kNear)));
}

void LoudnessWorld::expectGivenBack() {
    const auto wanted = expectedDefault();
    const auto now = server.defaultUID();
    // After a change of the default that nobody asked for, the application may take it for one.
    const bool isAsGood = now == followed_ || (wanted != original_ && now == used_);
    const bool isAnyRight = wanted != original_ && wanted != followed_ && wanted != used_;
    expectGivenBack(wanted.empty() || isAsGood || isAnyRight ? now : wanted);
    EXPECT_TRUE(wanted.empty() || now != kVirtualDeviceUID);
}

/// The music may be as loud as it was, or as loud as somebody asked for.
void LoudnessWorld::limit(float asked) {
    const bool isMuted =
        isPresent(kVirtualDeviceUID) && isRunning() && machine.level(kVirtualDeviceUID).muted;
    const auto before = isMuted ? LoudnessMachine::Heard{} : loudness_;
    machine.allow(kMusic, {std::max(before[0], asked), std::max(before[1], asked)});
}

/// The same where the music moves to a device with another balance.
void LoudnessWorld::limitAnyChannel(float asked) {
    const bool isMuted =
        isPresent(kVirtualDeviceUID) && isRunning() && machine.level(kVirtualDeviceUID).muted;
    limit(std::max(asked, isMuted ? 0 : loudest(loudness_)));
}

void LoudnessWorld::rest() {
    machine.settle();
    const auto heard = machine.heard(kMusic);
    if (loudest(heard) > 0) loudness_ = heard;
}

/// What was asked for counts also while nothing is heard.
void LoudnessWorld::restAsked(float asked) {
    rest();
    if (loudest(machine.heard(kMusic)) == 0) loudness_ = {asked, asked};
}

void LoudnessWorld::rememberUse() {
    if (!isRunning()) return;
    followed_ = machine.delegate->originalOutputUID().value_or("");
    const auto* unit = machine.fake.outputUnits.current;
    used_ = unit != nullptr && unit->device ? server.uid(*unit->device).value_or("") : "";
}

float LoudnessWorld::ownLoudness(const std::string& uid) const {
    const auto found = own_.find(uid);
    return found == own_.end() || found->second.muted ? 0 : loudestVolume(found->second);
}

std::string LoudnessWorld::firstReal(const std::string& without) {
    for (const auto id : server.deviceIDs().value_or(std::vector<AudioDeviceID>{})) {
        const auto uid = server.uid(id).value_or("");
        if (uid != without && own_.contains(uid)) return uid;
    }
    return "";
}

/// Of the device that becomes the default without that one, where it is at its own level: that is
/// its user's affair.
float LoudnessWorld::fallbackLoudness(const std::string& without) {
    const auto uid = firstReal(without);
    return isAtOwnLevel(uid) ? ownLoudness(uid) : 0;
}

/// Of the device that is the default after an end.
float LoudnessWorld::endLoudness() {
    const float followed = isPresent(followed_) ? ownLoudness(followed_) : 0;
    return std::max(ownLoudness(expectedDefault()), followed);
}

/// After an end.
std::string LoudnessWorld::expectedDefault() {
    for (const auto& uid : {original_, followed_, used_}) {
        if (own_.contains(uid) && isPresent(uid)) return uid;
    }
    return firstReal();
}

bool LoudnessWorld::isAtOwnLevel(const std::string& uid) const {
    return isPresent(uid) && own_.contains(uid) && isNear(machine.level(uid), own(uid));
}

} // namespace halvo::test
