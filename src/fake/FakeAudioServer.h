#pragma once

#include "fake/FakeServerBehaviour.h"
#include "loudness/AudioServer.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace halvo {

/// A sound server in memory: sinks with levels, streams that follow the default or are pinned to a
/// sink, and a default that is the requested sink or, without a request, the first of its list.
/// Listeners hear of a change after `newsDelay`, streams follow a new default after `moveDelay`.
class FakeAudioServer final : public AudioServer {
  public:
    struct Sink {
        std::string uid;
        std::string name;
        DeviceLevel level; ///< now
        DeviceLevel saved; ///< the level it returns with while the server runs
    };
    struct Stream {
        std::string name;
        std::optional<std::string> pinned; ///< by UID; absent: follows the default
        std::string target;                ///< UID of the sink it plays into, empty: none
    };

    explicit FakeAudioServer(MainQueue& queue) : queue_(queue) {}

    // Actions of the system and other programs.
    AudioDeviceID plug(const std::string& uid, const std::string& name, DeviceLevel level);
    void unplug(const std::string& uid);
    /// The device returns with the level that was saved last.
    AudioDeviceID plugAgain(const std::string& uid);
    /// The server ends with its session manager: no device is left, and what was not stored is
    /// lost. Nothing can be read or set until `start`, after which devices are plugged again.
    void stop();
    void start();
    void choose(const std::string& uid); ///< the user selects the default
    void changeLevel(const std::string& uid, const DeviceLevel& level);
    /// The device plays through another port, which is still at the present level: its own comes
    /// after `portDelay`.
    void switchPort(const std::string& uid, const DeviceLevel& own);
    void play(const std::string& stream, std::optional<std::string> pinned = std::nullopt);
    void stopStream(const std::string& stream);
    /// The program's connection ends, and with it its listeners and protections.
    void disconnect();

    FakeServerBehaviour behaviour;
    /// Whether this program plays into the device.
    std::function<bool(AudioDeviceID)> isPlaying;
    std::chrono::milliseconds moveDelay{5};
    std::chrono::milliseconds portDelay{50}; ///< the session manager is slower than any news
    std::chrono::milliseconds newsDelay{10}; ///< slower than the streams
    std::set<std::string> last;    ///< UIDs that are the default only if there is no other sink
    std::function<void()> changed; ///< called after everything that may be heard

    /// Requests for a default have no effect until it is released.
    void hold() { held_ = defaultUID(); }
    void release();

    bool isProtected(const std::string& uid) const { return protected_.contains(uid); }
    const std::vector<Stream>& streams() const { return streams_; }
    const Sink* sink(const std::string& uid) const;
    const Sink* sink(AudioDeviceID device) const;
    std::string defaultUID() const;
    const std::vector<std::string>& calls() const { return calls_; } ///< writes, in order

    std::optional<std::vector<AudioDeviceID>> deviceIDs() override;
    bool hasOutputStreams(AudioDeviceID device) override { return sink(device) != nullptr; }
    std::optional<std::string> name(AudioDeviceID device) override;
    std::optional<std::string> uid(AudioDeviceID device) override;
    std::optional<AudioDeviceID> deviceForUID(const std::string& uid) override;
    std::optional<AudioDeviceID> defaultOutput() override { return deviceForUID(defaultUID()); }
    bool setDefaultOutput(AudioDeviceID device) override;
    bool setDefaultSystemOutput(AudioDeviceID device) override { return hasOutputStreams(device); }
    bool releaseDefaultOutput() override;
    std::optional<float> volume(AudioDeviceID device, VolumeElement element) override;
    bool setVolume(AudioDeviceID device, VolumeElement element, float volume) override;
    std::optional<bool> mute(AudioDeviceID device) override;
    bool setMute(AudioDeviceID device, bool muted) override;
    bool listenToDeviceList(Listener listener) override;
    bool listenToDefaultOutput(Listener listener) override;
    bool listenToVolume(AudioDeviceID device, VolumeElement element, Listener listener) override;
    bool listenToMute(AudioDeviceID device, Listener listener) override;
    void silenceListeners() override { listeners_.clear(); }

    std::optional<DeviceLevel> level(AudioDeviceID device) override;
    bool setLevel(AudioDeviceID device, const DeviceLevel& level,
                  LevelPersistence persistence) override;
    bool hasForeignStreams(AudioDeviceID device) override;
    bool listenToPorts(Listener listener) override;
    bool listenToStreams(Listener listener) override;
    std::optional<std::string> configuredDefault() override;
    bool setConfiguredDefault(const std::string& uid) override;
    void protect(const std::string& uid, const DeviceLevel& level) override;
    void unprotect(const std::string& uid) override { protected_.erase(uid); }

  private:
    void configure(std::optional<std::string> uid);
    void move(Sink& sink, const DeviceLevel& level, LevelPersistence persistence);
    void storeLater();
    void store();
    void followDefault();
    void moveStreams();
    void notify(const std::string& topic);
    void listen(const std::string& topic, Listener listener);
    void announce() const {
        if (changed) changed();
    }

    MainQueue& queue_;
    std::map<AudioDeviceID, Sink> sinks_; // in the order of their appearance
    std::map<std::string, Sink> gone_;
    std::vector<Stream> streams_;
    std::optional<std::string> configured_;
    std::map<std::string, DeviceLevel> stored_; ///< what outlives the server, by UID
    std::optional<std::string> storedDefault_;
    std::uint64_t storing_ = 0; ///< the latest change that waits
    bool isStopped_ = false;
    std::string seenDefault_;
    std::optional<std::string> held_; ///< the default, whatever is requested
    std::map<std::string, DeviceLevel> protected_;
    std::multimap<std::string, Listener> listeners_; ///< by topic
    std::vector<std::string> calls_;
    AudioDeviceID nextID_ = 71;
};

} // namespace halvo
