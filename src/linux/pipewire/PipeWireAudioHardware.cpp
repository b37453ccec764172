#include "linux/pipewire/PipeWireAudioHardware.h"

#include "linux/pipewire/PipeWireConnection.h"
#include "linux/pipewire/PipeWireGraph.h"
#include "linux/pipewire/PipeWireWakeUp.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace halvo {

namespace {

using Lock = PipeWireConnection::Lock;
using Topic = PipeWireListeners::Topic;

constexpr std::chrono::milliseconds kLongestWrite{200};
/// Until the session manager has linked a stream and the sink has run a cycle.
constexpr std::chrono::milliseconds kLongestWakeUp{250};

std::optional<std::size_t> channelIndex(VolumeElement element) {
    switch (element) {
    case VolumeElement::left:
        return 0;
    case VolumeElement::right:
        return 1;
    case VolumeElement::main:
        break;
    }
    return std::nullopt;
}

float clampVolume(float volume) {
    return std::clamp(volume, 0.0F, 1.0F);
}

float loudest(const std::vector<float>& volumes) {
    return std::ranges::max(volumes);
}

/// Adapts a level to another number of channels: extra channels get the loudest one's.
std::vector<float> fitted(std::vector<float> volumes, std::size_t channels) {
    const float rest = volumes.empty() ? 0 : loudest(volumes);
    volumes.resize(channels, rest);
    std::ranges::transform(volumes, volumes.begin(), clampVolume);
    return volumes;
}

/// A card rounds volumes to its own steps.
bool isNear(float wanted, float found) {
    return std::abs(wanted - found) <= 1e-4F + 1e-3F * std::abs(wanted);
}

bool shows(const LevelUpdate& found, const LevelUpdate& wanted) {
    if (wanted.muted && found.muted != wanted.muted) return false;
    if (!wanted.channelVolumes) return true;
    return found.channelVolumes &&
           std::ranges::equal(*wanted.channelVolumes, *found.channelVolumes, isNear);
}

bool isValid(const std::vector<float>& volumes) {
    return !volumes.empty() &&
           std::ranges::all_of(volumes, [](float v) { return std::isfinite(v); });
}

/// Writing the level of another port would make the card play through that one.
bool isForPort(const std::string& wanted, const std::string& port) {
    return wanted.empty() || wanted == port;
}

} // namespace

PipeWireAudioHardware::PipeWireAudioHardware(PipeWireConnection& connection, MainQueue& mainQueue)
    : connection_(connection), listeners_(mainQueue) {
    const Lock lock(connection_);
    connection_.add(*this);
    if (connection_.isReady()) serverConnected();
}

PipeWireAudioHardware::~PipeWireAudioHardware() {
    const Lock lock(connection_);
    connection_.remove(*this);
}

const PipeWireNode* PipeWireAudioHardware::device(AudioDeviceID device) const {
    return connection_.isReady() ? connection_.graph().sink(device) : nullptr;
}

std::optional<std::vector<AudioDeviceID>> PipeWireAudioHardware::deviceIDs() {
    const Lock lock(connection_);
    if (!connection_.isReady()) return std::nullopt;
    return connection_.graph().sinks();
}

bool PipeWireAudioHardware::hasOutputStreams(AudioDeviceID device) {
    const Lock lock(connection_);
    return this->device(device) != nullptr;
}

std::optional<std::string> PipeWireAudioHardware::name(AudioDeviceID device) {
    const Lock lock(connection_);
    const auto* sink = this->device(device);
    return sink ? std::optional(sink->description()) : std::nullopt;
}

std::optional<std::string> PipeWireAudioHardware::uid(AudioDeviceID device) {
    const Lock lock(connection_);
    const auto* sink = this->device(device);
    return sink ? std::optional(sink->name()) : std::nullopt;
}

std::optional<AudioDeviceID> PipeWireAudioHardware::deviceForUID(const std::string& uid) {
    const Lock lock(connection_);
    const auto* sink = connection_.isReady() ? connection_.graph().sinkNamed(uid) : nullptr;
    return sink ? std::optional(sink->deviceID()) : std::nullopt;
}

std::optional<AudioDeviceID> PipeWireAudioHardware::defaultOutput() {
    const Lock lock(connection_);
    const auto* defaults = connection_.isReady() ? connection_.graph().defaults() : nullptr;
    const auto uid = defaults ? defaults->current() : std::nullopt;
    const auto* sink = uid ? connection_.graph().sinkNamed(*uid) : nullptr;
    return sink ? std::optional(sink->deviceID()) : std::nullopt;
}

bool PipeWireAudioHardware::setDefaultOutput(AudioDeviceID device) {
    Lock lock(connection_);
    const auto* sink = this->device(device);
    auto* defaults = connection_.graph().defaults();
    if (!sink || !defaults) return false;
    const auto uid = sink->name();
    if (!defaults->configure(uid)) return false;
    return lock.waitFor(
        [this, &uid] {
            const auto* now = connection_.graph().defaults();
            return now && now->configured() == uid && now->current() == uid;
        },
        kLongestWrite);
}

bool PipeWireAudioHardware::setDefaultSystemOutput(AudioDeviceID device) {
    return hasOutputStreams(device);
}

std::optional<float> PipeWireAudioHardware::volume(AudioDeviceID device, VolumeElement element) {
    const auto found = level(device);
    if (!found) return std::nullopt;
    const auto channel = channelIndex(element);
    if (!channel) return loudest(found->channelVolumes);
    if (*channel >= found->channelVolumes.size()) return std::nullopt;
    return found->channelVolumes[*channel];
}

bool PipeWireAudioHardware::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    auto wanted = level(device);
    if (!wanted || !std::isfinite(volume)) return false;
    const auto channel = channelIndex(element);
    if (!channel) {
        std::ranges::fill(wanted->channelVolumes, volume);
    } else if (*channel < wanted->channelVolumes.size()) {
        wanted->channelVolumes[*channel] = volume;
    } else {
        return false;
    }
    return writeLevel(device, {std::move(wanted->channelVolumes), std::nullopt},
                      LevelPersistence::temporary);
}

std::optional<bool> PipeWireAudioHardware::mute(AudioDeviceID device) {
    const Lock lock(connection_);
    const auto* sink = this->device(device);
    return sink ? connection_.graph().level(*sink).muted : std::nullopt;
}

bool PipeWireAudioHardware::setMute(AudioDeviceID device, bool muted) {
    return writeLevel(device, {std::nullopt, muted}, LevelPersistence::temporary);
}

std::optional<DeviceLevel> PipeWireAudioHardware::level(AudioDeviceID device) {
    const Lock lock(connection_);
    const auto* sink = this->device(device);
    if (!sink) return std::nullopt;
    auto found = connection_.graph().level(*sink);
    if (!found.channelVolumes) return std::nullopt;
    std::ranges::transform(*found.channelVolumes, found.channelVolumes->begin(), clampVolume);
    return DeviceLevel{std::move(*found.channelVolumes), found.muted.value_or(false),
                       connection_.graph().port(*sink)};
}

bool PipeWireAudioHardware::setLevel(AudioDeviceID device, const DeviceLevel& level,
                                     LevelPersistence persistence) {
    if (!isValid(level.channelVolumes)) return false;
    return writeLevel(device, {level.channelVolumes, level.muted}, persistence, level.port);
}

bool PipeWireAudioHardware::writeLevel(AudioDeviceID device, LevelUpdate update,
                                       LevelPersistence persistence, const std::string& port) {
    Lock lock(connection_);
    const auto* sink = this->device(device);
    if (!sink) return false;
    auto& graph = connection_.graph();
    if (!isForPort(port, graph.port(*sink))) return false;
    const auto before = graph.level(*sink);
    if (update.channelVolumes) {
        if (!before.channelVolumes) return false;
        update.channelVolumes =
            fitted(std::move(*update.channelVolumes), before.channelVolumes->size());
    }
    if (!graph.setLevel(*sink, update, persistence)) return false;
    // A card first reports that something changed and then, on request, what: two round trips.
    if (!lock.roundTrip(kLongestWrite) || !lock.roundTrip(kLongestWrite)) return false;
    const auto isShown = [this, &graph, &update, device] {
        const auto* now = this->device(device);
        return now && shows(graph.level(*now), update);
    };
    if (isShown()) return true;
    sink = this->device(device);
    if (!sink || graph.hasRoute(*sink)) return lock.waitFor(isShown, kLongestWrite);
    const PipeWireWakeUp wakeUp(connection_, sink->name());
    return lock.waitFor(isShown, kLongestWakeUp);
}

bool PipeWireAudioHardware::listenToDeviceList(Listener listener) {
    listeners_.add(Topic::deviceList, 0, std::move(listener));
    return true;
}

bool PipeWireAudioHardware::listenToDefaultOutput(Listener listener) {
    listeners_.add(Topic::defaultOutput, 0, std::move(listener));
    return true;
}

bool PipeWireAudioHardware::listenToVolume(AudioDeviceID device, VolumeElement element,
                                           Listener listener) {
    if (!volume(device, element)) return false;
    listeners_.add(Topic::volume, device, std::move(listener));
    return true;
}

bool PipeWireAudioHardware::listenToMute(AudioDeviceID device, Listener listener) {
    if (!mute(device)) return false;
    listeners_.add(Topic::mute, device, std::move(listener));
    return true;
}

bool PipeWireAudioHardware::listenToPorts(Listener listener) {
    listeners_.add(Topic::ports, 0, std::move(listener));
    return true;
}

bool PipeWireAudioHardware::listenToStreams(Listener listener) {
    listeners_.add(Topic::streams, 0, std::move(listener));
    return true;
}

void PipeWireAudioHardware::silenceListeners() {
    listeners_.silence();
}

bool PipeWireAudioHardware::hasForeignStreams(AudioDeviceID device) {
    const Lock lock(connection_);
    const auto* sink = this->device(device);
    return sink && connection_.graph().hasForeignStreams(*sink);
}

std::optional<std::string> PipeWireAudioHardware::configuredDefault() {
    const Lock lock(connection_);
    const auto* defaults = connection_.isReady() ? connection_.graph().defaults() : nullptr;
    return defaults ? defaults->configured() : std::nullopt;
}

bool PipeWireAudioHardware::releaseDefaultOutput() {
    if (!configureDefault(std::nullopt)) return false;
    Lock lock(connection_);
    // Some session managers stay with what was asked for before.
    (void)lock.waitFor(
        [this] {
            const auto* now = connection_.graph().defaults();
            return !now || now->current() != kVirtualDeviceUID;
        },
        kLongestWrite);
    return true;
}

bool PipeWireAudioHardware::setConfiguredDefault(const std::string& uid) {
    return configureDefault(uid);
}

bool PipeWireAudioHardware::configureDefault(const std::optional<std::string>& uid) {
    Lock lock(connection_);
    auto* defaults = connection_.isReady() ? connection_.graph().defaults() : nullptr;
    if (!defaults || !defaults->configure(uid)) return false;
    return lock.waitFor(
        [this, &uid] {
            const auto* now = connection_.graph().defaults();
            return now && now->configured() == uid;
        },
        kLongestWrite);
}

void PipeWireAudioHardware::protect(const std::string& uid, const DeviceLevel& level) {
    if (!isValid(level.channelVolumes)) return;
    const Lock lock(connection_);
    protectedLevels_[uid] = level;
}

void PipeWireAudioHardware::unprotect(const std::string& uid) {
    const Lock lock(connection_);
    protectedLevels_.erase(uid);
}

void PipeWireAudioHardware::applyProtection(const std::string& uid) {
    const auto found = protectedLevels_.find(uid);
    if (found == protectedLevels_.end()) return;
    auto& graph = connection_.graph();
    const auto* sink = graph.sinkNamed(uid);
    const auto now = sink ? graph.level(*sink) : LevelUpdate{};
    const auto& level = found->second;
    if (!now.channelVolumes || !isForPort(level.port, graph.port(*sink))) return;
    // There is no one to report a failure to.
    (void)graph.setLevel(*sink,
                         {fitted(level.channelVolumes, now.channelVolumes->size()), level.muted},
                         LevelPersistence::temporary);
}

void PipeWireAudioHardware::serverConnected() {
    defaultsChanged();
    seenDevices_ = connection_.graph().sinks();
    listeners_.post(Topic::deviceList);
    listeners_.post(Topic::defaultOutput);
}

void PipeWireAudioHardware::serverDisconnected() {
    seenCurrent_.reset();
    seenConfigured_.reset();
    seenDevices_.clear();
}

void PipeWireAudioHardware::devicesChanged() {
    auto& graph = connection_.graph();
    const auto before = std::exchange(seenDevices_, graph.sinks());
    for (const auto device : seenDevices_) {
        if (std::ranges::find(before, device) != before.end()) continue;
        // A device that returns as the default needs the same protection as one that becomes it.
        const auto& uid = graph.sink(device)->name();
        if (uid == seenConfigured_ || uid == seenCurrent_) applyProtection(uid);
    }
    listeners_.post(Topic::deviceList);
}

void PipeWireAudioHardware::defaultsChanged() {
    const auto* defaults = connection_.graph().defaults();
    const auto configured = defaults ? defaults->configured() : std::nullopt;
    const auto current = defaults ? defaults->current() : std::nullopt;
    // The request arrives first, milliseconds before streams move.
    if (configured && configured != seenConfigured_) applyProtection(*configured);
    if (current && current != seenCurrent_) applyProtection(*current);
    if (current != seenCurrent_) listeners_.post(Topic::defaultOutput);
    seenConfigured_ = configured;
    seenCurrent_ = current;
}

void PipeWireAudioHardware::volumeChanged(AudioDeviceID device) {
    listeners_.post(Topic::volume, device);
}

void PipeWireAudioHardware::muteChanged(AudioDeviceID device) {
    listeners_.post(Topic::mute, device);
}

void PipeWireAudioHardware::portChanged() {
    listeners_.post(Topic::ports);
}

void PipeWireAudioHardware::streamsChanged() {
    listeners_.post(Topic::streams);
}

} // namespace halvo
