#pragma once

#include "loudness/AudioServer.h"
#include "macos/CoreAudioLevels.h"
#include "macos/CoreAudioListener.h"

#include <memory>
#include <optional>
#include <string>

namespace halvo {

/// Gives a device its registered level as soon as it is the default output, alone or as a part of
/// it, on a queue of its own: the main thread may be busy. Any thread.
class CoreAudioProtection {
  public:
    /// Writes through `levels`.
    explicit CoreAudioProtection(std::shared_ptr<CoreAudioLevels> levels);
    ~CoreAudioProtection();
    CoreAudioProtection(const CoreAudioProtection&) = delete;
    CoreAudioProtection& operator=(const CoreAudioProtection&) = delete;

    void protect(const std::string& uid, const DeviceLevel& level);
    /// Once this returns, the level is not given any more.
    void unprotect(const std::string& uid);

  private:
    struct State;

    void listen();

    dispatch_queue_t queue_;
    std::shared_ptr<State> state_; ///< shared with calls under way
};

} // namespace halvo
