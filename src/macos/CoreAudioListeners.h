#pragma once

#include "macos/CoreAudioListener.h"
#include "platform/AudioHardware.h"

#include <memory>
#include <optional>
#include <vector>

namespace halvo {

/// Listeners on the main queue that can all be silenced at once. When the audio server restarts,
/// each is registered again and called once. Main thread, unless said otherwise.
class CoreAudioListeners {
  public:
    using Listener = AudioHardware::Listener;

    CoreAudioListeners();
    /// No listener runs again.
    ~CoreAudioListeners();
    CoreAudioListeners(const CoreAudioListeners&) = delete;
    CoreAudioListeners& operator=(const CoreAudioListeners&) = delete;

    /// Listens as long as this lives. False when the server refuses.
    bool add(AudioObjectID object, const CoreAudio::Address& address, Listener listener);

    /// The same for an object that may go; the caller keeps the result, and asks anew when
    /// `restarts` has changed.
    std::optional<CoreAudioListener> make(AudioObjectID object, const CoreAudio::Address& address,
                                          Listener listener) const;
    /// How often the server has restarted.
    unsigned restarts() const { return restarts_; }

    /// Once this returns, no listener runs again; waits for one that runs. Any thread.
    void silence();

  private:
    struct Gate;
    struct Entry {
        CoreAudioListener registration;
        std::shared_ptr<const Listener> listener;
    };

    void serverRestarted();

    std::shared_ptr<Gate> gate_; ///< shared with calls under way
    std::vector<Entry> entries_;
    std::optional<CoreAudioListener> restart_;
    unsigned restarts_ = 0;
};

} // namespace halvo
