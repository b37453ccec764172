#include "unit/loudness/LoudnessMachine.h"
#include "platform/VirtualOutput.h"

#include <gtest/gtest.h>

#include <thread>

namespace halvo::test {

using namespace std::chrono_literals;

namespace {

constexpr float kOneDecibel = 1.122F;
constexpr float kInaudible = 0.001F;

} // namespace

DeviceLevel stereo(float left, float right) {
    return {{left, right}, false};
}

DeviceLevel stereo(float both) {
    return stereo(both, both);
}

DeviceLevel muted(float both) {
    return {{both, both}, true};
}

LoudnessMachine::LoudnessMachine() {
    server.last = {kVirtualDeviceUID};
    server.changed = [this] { listen(); };
}

LoudnessMachine::~LoudnessMachine() {
    server.changed = nullptr;
}

void LoudnessMachine::plugDriver() {
    server.plug(kVirtualDeviceUID, "Halvo Virtual Output", stereo(1));
    fake.sharedMemory.createRing(48000, 2, 8192);
}

void LoudnessMachine::launch() {
    start();
    settle();
}

void LoudnessMachine::start() {
    guard.emplace(server, gate, fake.mainQueue, fake.systemLog, record());
    delegate = AppDelegate::create(fake.platform(*guard));
    delegate->applicationDidFinishLaunching();
}

void LoudnessMachine::quit() {
    delegate->applicationWillTerminate();
    die();
    settle();
    keep();
}

void LoudnessMachine::keep() {
    auto ended = record();
    ended.confirm();
    std::erase_if(ended.devices, [](const auto& entry) { return !entry.second.isMoved; });
    (void)ended.save(); // in memory
}

void LoudnessMachine::terminate() {
    std::thread([this] { guard->silenceListeners(); }).join();
    const auto hardware = LoudnessGuard::forRestore(server, record());
    fake.terminationSignal.handler(*hardware, fake.userDefaults);
    pass(100ms); // the main thread is still running
    die();
    settle();
}

void LoudnessMachine::crash() {
    die();
    settle();
}

bool LoudnessMachine::crashUnderGuard() {
    die();
    listen();
    const auto hardware = LoudnessGuard::forRestore(server, record());
    AppDelegate::handleTermination(*hardware, fake.userDefaults);
    const bool isDone = hardware->releaseDefaultOutput();
    settle();
    return isDone;
}

void LoudnessMachine::die() {
    server.disconnect();
    delegate.reset();
    guard.reset();
    gate.open();
}

void LoudnessMachine::pass(std::chrono::milliseconds time) {
    listen();
    for (auto left = time; left > 0ms; left -= 1ms) {
        fake.mainQueue.advance(1ms);
        listen();
    }
}

void LoudnessMachine::settle() {
    pass(6s); // longer than anything waits
    for (const auto& stream : server.streams())
        limits_[stream.name] = heard(stream);
}

LoudnessMachine::Heard LoudnessMachine::heard(const std::string& stream) const {
    for (const auto& playing : server.streams()) {
        if (playing.name == stream) return heard(playing);
    }
    return {0, 0};
}

LoudnessMachine::Heard LoudnessMachine::heard(const FakeAudioServer::Stream& stream) const {
    float gain = 1;
    const auto* sink = server.sink(stream.target);
    if (stream.target == kVirtualDeviceUID) {
        const auto* unit = fake.outputUnits.current;
        const bool plays = unit != nullptr && unit->isStarted && delegate && gate.isOpen();
        gain = plays ? delegate->audioEngine().outputVolume() : 0;
        sink = plays && unit->device ? server.sink(*unit->device) : nullptr;
    }
    if (sink == nullptr || sink->level.muted) return {0, 0};
    const auto& volumes = sink->level.channelVolumes;
    return {gain * volumes.front(), gain * volumes.back()};
}

void LoudnessMachine::listen() {
    for (const auto& stream : server.streams()) {
        const auto limit = limits_.find(stream.name);
        if (limit == limits_.end()) continue;
        const auto now = heard(stream);
        for (std::size_t channel = 0; channel < now.size(); ++channel) {
            const float most = limit->second[channel] * kOneDecibel + kInaudible;
            if (now[channel] <= most) continue;
            ADD_FAILURE() << stream.name << " jumped up in channel " << channel << " from "
                          << limit->second[channel] << " to " << now[channel] << " after "
                          << fake.mainQueue.now().count() / 1000 << " ms, in " << stream.target;
            limit->second = now; // once is enough
        }
    }
}

} // namespace halvo::test
