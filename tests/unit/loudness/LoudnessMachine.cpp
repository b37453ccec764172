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
    server.isPlaying = [this](AudioDeviceID device) {
        const auto* unit = fake.outputUnits.current;
        return unit != nullptr && unit->isStarted && unit->device == device;
    };
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
    endNow(End::quit);
    settle();
    keep();
}

void LoudnessMachine::keep() {
    auto ended = record();
    ended.confirm();
    if (!SavedSession::load(fake.userDefaults)) {
        ended.origin.reset();
        std::erase_if(ended.devices, [](const auto& entry) { return !entry.second.isMoved; });
    }
    (void)ended.save(); // in memory
}

void LoudnessMachine::terminate() {
    handleSignal();
    pass(100ms); // the main thread is still running
    die();
    settle();
}

void LoudnessMachine::crash() {
    endNow(End::kill);
    settle();
}

bool LoudnessMachine::crashUnderGuard() {
    die();
    const bool isDone = restoreAfterKill();
    settle();
    return isDone;
}

void LoudnessMachine::endNow(End end) {
    if (end == End::quit) delegate->applicationWillTerminate();
    if (end == End::signal) handleSignal();
    die();
    if (end == End::killUnderGuard) (void)restoreAfterKill();
}

void LoudnessMachine::handleSignal() {
    std::thread([this] { guard->silenceListeners(); }).join();
    const auto hardware = LoudnessGuard::forRestore(server, record());
    fake.terminationSignal.handler(*hardware, settingsOnDisk());
}

bool LoudnessMachine::restoreAfterKill() {
    listen();
    const auto hardware = LoudnessGuard::forRestore(server, record());
    AppDelegate::handleTermination(*hardware, settingsOnDisk());
    return hardware->releaseDefaultOutput();
}

void LoudnessMachine::restoreAtLogin() {
    if (!record().isOpen()) return;
    const auto hardware = LoudnessGuard::forRestore(server, record());
    (void)hardware->releaseDefaultOutput();
}

void LoudnessMachine::die() {
    server.disconnect();
    delegate.reset();
    guard.reset();
    gate.open();
    fake.userDefaults = settingsOnDisk();
}

void LoudnessMachine::fill(std::set<std::filesystem::path> folders) {
    if (!folders.contains(kSettings))
        oldSettings_.reset(); // the next write replaces the file
    else if (!oldSettings_)
        oldSettings_ = fake.userDefaults;
    fake.fileSystem.full = std::move(folders);
}

FakeUserDefaults LoudnessMachine::settingsOnDisk() const {
    return oldSettings_.value_or(fake.userDefaults);
}

void LoudnessMachine::pass(std::chrono::milliseconds time) {
    listen();
    const MainQueue::Duration end = fake.mainQueue.now() + time;
    while (fake.mainQueue.advanceToNext(end - fake.mainQueue.now()))
        listen();
    listen();
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
