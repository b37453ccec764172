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

/// Carries the sound server's news to the main queue, one hop each. News that come before the
/// listener has run for the last ones are told once.
class PipeWireListeners {
  public:
    enum class Topic { deviceList, defaultOutput, volume, mute, streams };

    explicit PipeWireListeners(MainQueue& mainQueue);
    ~PipeWireListeners() { gate_->silenced = true; }

    /// `device` narrows `volume` and `mute`; 0 for the others. Any thread.
    void add(Topic topic, AudioDeviceID device, AudioHardware::Listener listener);
    /// Any thread.
    void post(Topic topic, AudioDeviceID device = 0);
    /// Once this returns no listener starts. Waits for a running one, 0.7 s at most. Any thread.
    void silence();

  private:
    /// Shared with the work in the main queue, which may outlive this object.
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
