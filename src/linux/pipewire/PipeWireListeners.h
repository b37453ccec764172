#pragma once

#include "platform/AudioHardware.h"
#include "platform/MainQueue.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace halvo {

/// Posts the sound server's events to the main queue. Events that arrive before the listener has
/// run are merged into one call.
class PipeWireListeners {
  public:
    enum class Topic { deviceList, defaultOutput, volume, mute, ports, streams };

    explicit PipeWireListeners(MainQueue& mainQueue);
    ~PipeWireListeners() { gate_->silenced = true; }

    /// `device` applies to `volume` and `mute`; 0 for the others. Any thread.
    void add(Topic topic, AudioDeviceID device, AudioHardware::Listener listener);
    /// Any thread.
    void post(Topic topic, AudioDeviceID device = 0);
    /// Once this returns no listener starts. Waits for a running one, 0.7 s at most. Any thread.
    void silence();

  private:
    /// Shared with work in the main queue, which may outlive this object.
    struct Gate {
        std::recursive_timed_mutex running;
        std::atomic<bool> silenced{false};
    };
    struct Entry {
        explicit Entry(AudioHardware::Listener call) : listener(std::move(call)) {}
        AudioHardware::Listener listener;
        std::atomic<bool> pending{false};
    };

    MainQueue& mainQueue_;
    std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
    std::mutex mutex_;
    std::map<std::pair<Topic, AudioDeviceID>, std::vector<std::shared_ptr<Entry>>> entries_;
};

} // namespace halvo
