#pragma once

#include "macos/CoreAudioListeners.h"

#include <map>
#include <vector>

namespace halvo {

/// Listens to properties of every object in one of the server's lists, of those that appear later,
/// too. Main thread.
class CoreAudioListWatch {
  public:
    /// Calls `changed` when one of the properties or the list changes. `listeners` must outlive
    /// this.
    CoreAudioListWatch(CoreAudioListeners& listeners, const CoreAudio::Address& list,
                       std::vector<CoreAudio::Address> properties,
                       CoreAudioListeners::Listener changed);
    CoreAudioListWatch(const CoreAudioListWatch&) = delete;
    CoreAudioListWatch& operator=(const CoreAudioListWatch&) = delete;

    /// False where the server has no such list.
    bool isListening() const { return isListening_; }

  private:
    void update();

    CoreAudioListeners& listeners_;
    const CoreAudio::Address list_;
    const std::vector<CoreAudio::Address> properties_;
    const CoreAudioListeners::Listener changed_;
    std::map<AudioObjectID, std::vector<CoreAudioListener>> objects_;
    unsigned restarts_ = 0;
    bool isListening_ = false;
};

} // namespace halvo
