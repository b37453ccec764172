#include "fake/FakeAudioServer.h"

#include "base/NumberText.h"
#include "platform/VirtualOutput.h"

#include <algorithm>

namespace halvo {

namespace {

std::string text(const DeviceLevel& level) {
    std::string result;
    for (const float volume : level.channelVolumes)
        result += " " + numberText(volume);
    return result + (level.muted ? " muted" : "");
}

std::string topicOf(const char* what, const std::string& uid) {
    return what + (" " + uid);
}

} // namespace

AudioDeviceID FakeAudioServer::plug(const std::string& uid, const std::string& name,
                                    DeviceLevel level) {
    const auto id = nextID_++;
    sinks_[id] = {uid, name, level, level};
    stored_.try_emplace(uid, level);
    notify("devices");
    followDefault();
    return id;
}

void FakeAudioServer::unplug(const std::string& uid) {
    const auto id = deviceForUID(uid);
    if (!id) return;
    gone_[uid] = sinks_.at(*id);
    sinks_.erase(*id);
    for (auto& stream : streams_) {
        if (stream.target == uid) stream.target.clear();
    }
    notify("devices");
    notify("streams");
    followDefault();
}

AudioDeviceID FakeAudioServer::plugAgain(const std::string& uid) {
    const auto sink = gone_.at(uid);
    return plug(uid, sink.name, sink.saved);
}

void FakeAudioServer::stop() {
    ++storing_; // comes too late
    isStopped_ = true;
    configured_ = storedDefault_;
    for (auto& [id, sink] : sinks_)
        gone_[sink.uid] = sink;
    sinks_.clear();
    for (auto& [uid, sink] : gone_)
        sink.saved = stored_.at(uid);
    for (auto& stream : streams_)
        stream.target.clear();
    notify("devices");
    notify("streams");
    followDefault();
}

void FakeAudioServer::start() {
    isStopped_ = false;
    notify("devices");
    notify("default");
}

void FakeAudioServer::choose(const std::string& uid) {
    configure(uid);
}

void FakeAudioServer::changeLevel(const std::string& uid, const DeviceLevel& level) {
    move(sinks_.at(*deviceForUID(uid)), level, LevelPersistence::saved);
    notify(topicOf("volume", uid));
    notify(topicOf("mute", uid));
    announce();
}

void FakeAudioServer::switchPort(const std::string& uid, const DeviceLevel& own) {
    sinks_.at(*deviceForUID(uid)).level.port = own.port;
    notify("ports");
    announce();
    queue_.after(portDelay, [this, uid, own] { changeLevel(uid, own); });
}

void FakeAudioServer::play(const std::string& stream, std::optional<std::string> pinned) {
    const auto target = pinned.value_or(defaultUID());
    streams_.push_back({stream, std::move(pinned), target});
    notify("streams");
    announce();
}

void FakeAudioServer::stopStream(const std::string& stream) {
    std::erase_if(streams_, [&](const Stream& playing) { return playing.name == stream; });
    notify("streams");
}

void FakeAudioServer::disconnect() {
    listeners_.clear();
    protected_.clear();
}

const FakeAudioServer::Sink* FakeAudioServer::sink(const std::string& uid) const {
    for (const auto& [id, sink] : sinks_) {
        if (sink.uid == uid) return &sink;
    }
    return nullptr;
}

const FakeAudioServer::Sink* FakeAudioServer::sink(AudioDeviceID device) const {
    const auto found = sinks_.find(device);
    return found == sinks_.end() ? nullptr : &found->second;
}

void FakeAudioServer::release() {
    held_.reset();
    followDefault();
}

std::string FakeAudioServer::defaultUID() const {
    if (held_) return *held_;
    if (configured_ && sink(*configured_) != nullptr) return *configured_;
    std::string result;
    for (const auto& [id, sink] : sinks_) {
        if (result.empty() || last.contains(result)) result = sink.uid;
    }
    return result;
}

std::optional<std::vector<AudioDeviceID>> FakeAudioServer::deviceIDs() {
    std::vector<AudioDeviceID> result;
    if (isStopped_) return std::nullopt;
    for (const auto& [id, sink] : sinks_)
        result.push_back(id);
    return result;
}

std::optional<std::string> FakeAudioServer::name(AudioDeviceID device) {
    const auto* found = sink(device);
    return found ? std::optional(found->name) : std::nullopt;
}

std::optional<std::string> FakeAudioServer::uid(AudioDeviceID device) {
    const auto* found = sink(device);
    return found ? std::optional(found->uid) : std::nullopt;
}

std::optional<AudioDeviceID> FakeAudioServer::deviceForUID(const std::string& uid) {
    for (const auto& [id, sink] : sinks_) {
        if (sink.uid == uid) return id;
    }
    return std::nullopt;
}

bool FakeAudioServer::setDefaultOutput(AudioDeviceID device) {
    const auto* found = sink(device);
    if (found == nullptr) return false;
    calls_.push_back("default " + found->uid);
    configure(found->uid);
    if (behaviour.awaitsMoves) moveStreams();
    return true;
}

std::optional<float> FakeAudioServer::volume(AudioDeviceID device, VolumeElement element) {
    const auto* found = sink(device);
    if (found == nullptr) return std::nullopt;
    const auto& volumes = found->level.channelVolumes;
    if (element == VolumeElement::main) return std::ranges::max(volumes);
    const std::size_t channel = element == VolumeElement::left ? 0 : 1;
    return channel < volumes.size() ? std::optional(volumes[channel]) : std::nullopt;
}

bool FakeAudioServer::setVolume(AudioDeviceID device, VolumeElement element, float volume) {
    auto wanted = level(device);
    if (!wanted) return false;
    auto& volumes = wanted->channelVolumes;
    const std::size_t channel = element == VolumeElement::right ? 1 : 0;
    if (element == VolumeElement::main)
        std::ranges::fill(volumes, volume);
    else if (channel < volumes.size())
        volumes[channel] = volume;
    return setLevel(device, *wanted, LevelPersistence::saved);
}

std::optional<bool> FakeAudioServer::mute(AudioDeviceID device) {
    const auto* found = sink(device);
    return found ? std::optional(found->level.muted) : std::nullopt;
}

bool FakeAudioServer::setMute(AudioDeviceID device, bool muted) {
    auto wanted = level(device);
    if (!wanted) return false;
    wanted->muted = muted;
    return setLevel(device, *wanted, LevelPersistence::saved);
}

bool FakeAudioServer::listenToDeviceList(Listener listener) {
    listen("devices", std::move(listener));
    return true;
}

bool FakeAudioServer::listenToDefaultOutput(Listener listener) {
    listen("default", std::move(listener));
    return true;
}

bool FakeAudioServer::listenToVolume(AudioDeviceID device, VolumeElement /*element*/,
                                     Listener listener) {
    const auto* found = sink(device);
    if (found != nullptr) listen(topicOf("volume", found->uid), std::move(listener));
    return found != nullptr;
}

bool FakeAudioServer::listenToMute(AudioDeviceID device, Listener listener) {
    const auto* found = sink(device);
    if (found != nullptr) listen(topicOf("mute", found->uid), std::move(listener));
    return found != nullptr;
}

std::optional<DeviceLevel> FakeAudioServer::level(AudioDeviceID device) {
    const auto* found = sink(device);
    return found ? std::optional(found->level) : std::nullopt;
}

bool FakeAudioServer::setLevel(AudioDeviceID device, const DeviceLevel& level,
                               LevelPersistence persistence) {
    const auto found = sinks_.find(device);
    if (found == sinks_.end()) return false;
    auto& sink = found->second;
    if (!level.port.empty() && level.port != sink.level.port) return false;
    calls_.push_back("level " + sink.uid + text(level));
    const auto port = sink.level.port;
    auto wanted = level;
    wanted.port = port;
    move(sink, wanted, persistence);
    notify(topicOf("volume", sink.uid));
    notify(topicOf("mute", sink.uid));
    announce();
    return true;
}

bool FakeAudioServer::hasForeignStreams(AudioDeviceID device) {
    using Streams = FakeServerBehaviour::Streams;
    const auto* found = sink(device);
    if (found == nullptr || behaviour.streams == Streams::unknown) return false;
    if (behaviour.streams == Streams::runsSomewhere && isPlaying && isPlaying(device)) return false;
    return std::ranges::any_of(streams_,
                               [&](const Stream& stream) { return stream.target == found->uid; });
}

bool FakeAudioServer::listenToPorts(Listener listener) {
    listen("ports", std::move(listener));
    return true;
}

bool FakeAudioServer::listenToStreams(Listener listener) {
    listen("streams", std::move(listener));
    return true;
}

bool FakeAudioServer::releaseDefaultOutput() {
    if (isStopped_) return false;
    if (!behaviour.remembersRequests) {
        const auto real = std::ranges::find_if(
            sinks_, [](const auto& entry) { return entry.second.uid != kVirtualDeviceUID; });
        return real == sinks_.end() || setDefaultOutput(real->first);
    }
    calls_.push_back("configured nothing");
    configure(std::nullopt);
    return true;
}

std::optional<std::string> FakeAudioServer::configuredDefault() {
    if (isStopped_) return std::nullopt;
    if (behaviour.remembersRequests) return configured_;
    const auto now = defaultUID();
    return now.empty() ? std::nullopt : std::optional(now);
}

bool FakeAudioServer::setConfiguredDefault(const std::string& uid) {
    if (isStopped_) return false;
    if (!behaviour.remembersRequests) {
        const auto id = deviceForUID(uid);
        return id && setDefaultOutput(*id); // what is away cannot be asked for
    }
    calls_.push_back("configured " + uid);
    configure(uid);
    return true;
}

void FakeAudioServer::protect(const std::string& uid, const DeviceLevel& level) {
    protected_[uid] = level;
}

void FakeAudioServer::configure(std::optional<std::string> uid) {
    configured_ = std::move(uid);
    storeLater();
    followDefault();
}

void FakeAudioServer::move(Sink& sink, const DeviceLevel& level, LevelPersistence persistence) {
    using Keeps = FakeServerBehaviour::Keeps;
    sink.level = level;
    const bool isPortless = level.port.empty();
    const bool isKeptAnyway = behaviour.keeps == Keeps::all ||
                              (behaviour.keeps == Keeps::allOfPortlessDevices && isPortless);
    if (persistence != LevelPersistence::saved && !isKeptAnyway) return;
    sink.saved = level;
    storeLater();
}

void FakeAudioServer::storeLater() {
    if (behaviour.storeDelay == std::chrono::milliseconds{}) return store();
    queue_.after(behaviour.storeDelay, [this, storing = ++storing_] {
        if (storing == storing_) store();
    });
}

void FakeAudioServer::store() {
    for (const auto& [uid, sink] : gone_)
        stored_[uid] = sink.saved;
    for (const auto& [id, sink] : sinks_)
        stored_[sink.uid] = sink.saved;
    storedDefault_ = configured_;
}

void FakeAudioServer::followDefault() {
    const auto now = defaultUID();
    if (now == seenDefault_) return;
    seenDefault_ = now;
    if (!behaviour.remembersRequests && !now.empty()) {
        configured_ = now;
        storeLater();
    }
    // The server's own thread is faster than any stream.
    if (const auto found = protected_.find(now); found != protected_.end()) {
        move(sinks_.at(*deviceForUID(now)), found->second, LevelPersistence::temporary);
    }
    notify("default");
    queue_.after(moveDelay, [this] { moveStreams(); });
    announce();
}

void FakeAudioServer::moveStreams() {
    for (auto& stream : streams_) {
        if (!stream.pinned)
            stream.target = defaultUID();
        else
            stream.target = sink(*stream.pinned) ? *stream.pinned : "";
    }
    notify("streams");
    announce();
}

void FakeAudioServer::notify(const std::string& topic) {
    const auto [first, end] = listeners_.equal_range(topic);
    for (auto entry = first; entry != end; ++entry) {
        queue_.after(newsDelay, [this, topic, listener = entry->second] {
            if (listeners_.contains(topic)) listener(); // not silenced meanwhile
        });
    }
}

void FakeAudioServer::listen(const std::string& topic, Listener listener) {
    listeners_.emplace(topic, std::move(listener));
}

} // namespace halvo
