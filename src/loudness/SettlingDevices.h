#pragma once

#include "base/Lifetime.h"
#include "loudness/AudioServer.h"
#include "loudness/LoudnessSession.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace halvo {

/// Devices that have just appeared or play through another port. The session manager gives them
/// their own level a little later; what they show until then means nothing. One thread.
class SettlingDevices {
  public:
    /// By then that level is there, on a busy machine too.
    static constexpr MainQueue::Duration kTime = std::chrono::milliseconds(500);

    /// Devices that are there now count as settled. `settled` is called on the main queue, without
    /// a lock, each time that one has. `session` is null where `update` is never called. What is
    /// passed in must outlive the object.
    SettlingDevices(AudioServer& server, LoudnessSession* session, std::function<void()> settled);

    bool contains(AudioDeviceID id) const { return settling_.contains(id); }
    /// Looks at what is there; returns the devices that were not there before.
    std::vector<AudioDeviceID> update();

  private:
    std::map<AudioDeviceID, std::string> presentPorts();
    void wait(AudioDeviceID id);

    AudioServer& server_;
    LoudnessSession* session_;
    std::function<void()> settled_;
    std::map<AudioDeviceID, std::string> ports_;      ///< of all devices; empty without ports
    std::map<AudioDeviceID, std::uint64_t> settling_; ///< with the latest reason's number
    std::uint64_t generation_ = 0;
    Lifetime lifetime_;
};

} // namespace halvo
